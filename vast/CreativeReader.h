#pragma once

#include "vast/ElementReader.h"

namespace qoro::vast
{

/// Reads the creatives of an ad.
class CreativeReader final : private ElementReader
{
public:
    using ElementReader::ElementReader;

    /// Adds a Creative element to its ad.
    void read(const Node& node, Ad& ad) const;

private:
    void read_linear_of_wrapper(const Node& node, Ad& ad) const;
    void read_linear(const Node& node, Linear& linear) const;
    void read_media_files(const Node& node, Linear& linear) const;
    MediaFile read_media_file(const Node& node) const;
    void read_trackers(const Node& node, std::vector<Tracker>& trackers) const;
    Icon read_icon(const Node& node) const;
    Companion read_companion(const Node& node, const std::optional<std::string>& required) const;
};

} // namespace qoro::vast
