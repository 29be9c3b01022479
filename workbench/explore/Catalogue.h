#pragma once

#include "formats/AdInput.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// Identifies the ad of a line of a catalogue: the line's "id", or else the path; of a line without either a number
/// made of its text.
std::string catalogue_id(std::string_view line);

/// A line of a catalogue of ads: a path, {"ad": PATH, "id": …}, an ad or a scenario.
struct CatalogueEntry {
    /// What a user would name; empty if the line is the ad itself.
    std::string path = {};
    std::optional<AdInput> ad = {};
};

/// @throws InputError for a line that begins like JSON and is none
CatalogueEntry catalogue_entry(std::string_view line);

/// The results of a catalogue's ads, by id.
class CatalogueResults
{
public:
    /// @param file name for messages
    /// @throws InputError for a line that is no result, and for a second result of an ad
    void add(std::string_view text, const std::string& file);
    /// The ids of a list's ads that have no result, in the order of the list.
    std::vector<std::string> missing(std::string_view list) const;
    /// Every line, in the order of the ids.
    std::string text() const;
    bool has_findings() const { return has_findings_; }
    bool has_failures() const { return has_failures_; }

private:
    struct Result {
        std::string line;
        std::string file;
    };
    std::map<std::string, Result> results_;
    bool has_findings_ = false;
    bool has_failures_ = false;
};

} // namespace qoro
