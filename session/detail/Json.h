#pragma once

// For this folder's .cpp files alone: no header of the session names a library.

#include "platform/Value.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace qoro::detail
{

/// Keeps the order in which keys came.
using Json = nlohmann::ordered_json;

/// How deep lists and objects of an input file may stand in each other.
inline constexpr int DeepestNesting = 64;

/// Reads a JSON text.
/// @param file what to call it in an error
/// @throws InputError for a text that is no JSON, or nested deeper than DeepestNesting
Json parse_json(std::string_view text, const std::string& file);

/// The same value in the platform's terms. A whole number beyond 64 signed bits becomes a floating one.
Value to_value(const Json& json);

/// A short text of a value, for an error: `"five"`, `[1,2,…`.
std::string shown(const Json& json);

/// One step down a JSON path: ("/steps/3", "at") → "/steps/3/at".
std::string under(const std::string& path, std::string_view key);
std::string under(const std::string& path, std::size_t index);

} // namespace qoro::detail
