#pragma once

#include "workbench/explore/Search.h"
#include "workbench/explore/Setup.h"

#include <span>
#include <string>
#include <vector>

namespace qoro
{

/// A search of an ad on one device, and what it has found.
struct Explored {
    SearchSetup setup;
    SearchResult result = {};
    /// As the user named it; empty: the scenario's own.
    std::string device = {};
    /// Number of the ad among those of a tag, from 1; 0 if there is only one.
    std::size_t ad = 0;
    /// Files of the findings' scenarios, in their order; empty if none were written.
    std::vector<std::string> files = {};
};

/// For people, without a line break at the end.
/// @param of_several whether the text says which ad and device it is about
std::string text_of(const Explored& explored, bool of_several);

/// One JSON object in one line, without a line break.
/// @param id identifies the ad in a catalogue
std::string json_of(const std::string& id, std::span<const Explored> searches);

/// The line of an ad that could not be explored.
std::string json_of_failure(const std::string& id, const std::string& why);

/// Whether something was found.
bool has_findings(const Explored& explored);

} // namespace qoro
