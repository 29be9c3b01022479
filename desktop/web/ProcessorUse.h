#pragma once

#include <cstdint>
#include <optional>

namespace qoro
{

/// Measures how long a page's process has been starving a video: the process uses more than one processor while the
/// video drops frames.
class ProcessorUse
{
public:
    /// Adds a sample.
    /// @param load processor usage since the last sample; 1 is one processor
    /// @param dropped number of frames that the videos have dropped so far
    /// @param seconds since the last sample
    void look(double load, std::uint64_t dropped, double seconds)
    {
        since_drop_ = dropped_ && dropped != *dropped_ ? 0 : since_drop_ + seconds;
        dropped_ = dropped;
        starves_for_ = load > 1 && since_drop_ < DropLasts ? starves_for_ + seconds : 0;
    }
    /// Seconds of uninterrupted starvation.
    double starves_for() const { return starves_for_; }

private:
    /// Seconds without a dropped frame after which the video is considered to play well.
    static constexpr double DropLasts = 1;

    std::optional<std::uint64_t> dropped_;
    double since_drop_ = DropLasts;
    double starves_for_ = 0;
};

} // namespace qoro
