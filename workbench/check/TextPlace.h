#pragma once

#include "workbench/BaseScenario.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// A place in a file; both from 1.
struct TextPlace {
    std::size_t line = 0;
    /// In characters, not bytes.
    std::size_t column = 0;

    bool operator==(const TextPlace&) const = default;
};

/// Where a JSON text has a value: its key, or the value itself in a list.
/// @param path JSON path (RFC 6901); not empty
/// @return absent if the text has no such value, or is not JSON
std::optional<TextPlace> place_in_json(std::string_view text, std::string_view path);

/// Where the file of an ad, a scenario or a tag has a path of a finding; absent if the file has not, for example
/// because the element is in a document that a tag's wrapper leads to.
std::optional<TextPlace> place_in(const BaseScenario& base, const std::string& path);

} // namespace qoro
