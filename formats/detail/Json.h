#pragma once

// Only for this folder's .cpp files: public headers of the session do not expose the JSON library.

#include "platform/json/JsonValue.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace qoro::detail
{

/// Preserves the order of keys.
using Json = nlohmann::ordered_json;

/// Maximum nesting depth of lists and objects in an input file.
inline constexpr int DeepestNesting = 64;

/// Parses JSON.
/// @param file name for error messages
/// @throws InputError for malformed JSON, or nesting deeper than DeepestNesting
Json parse_json(std::string_view text, const std::string& file);

/// A value as text for error messages, cut after 60 bytes: `"five"`, `[1,2,…`.
std::string shown(const Json& json);

/// Appends one segment to a JSON path (RFC 6901, section 3): ("/steps/3", "at") → "/steps/3/at".
std::string under(const std::string& path, std::string_view key);
std::string under(const std::string& path, std::size_t index);

} // namespace qoro::detail
