#pragma once

// Only for .cpp files of this library: its public headers do not expose the JSON library.

#include "platform/json/JsonValue.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qoro
{

/// The entries of a recording.
struct RecordedEntries {
    std::vector<nlohmann::ordered_json> all;
};

namespace detail
{
/// Preserves the order of keys.
using Json = nlohmann::ordered_json;

/// The text under a key; empty if there is none.
std::string text_at(const Json& entry, const char* key);
/// The value under a key; null if there is none.
Value value_at(const Json& entry, const char* key);
/// The number under a key; 0 if there is none.
double number_at(const Json& entry, const char* key);

} // namespace detail

} // namespace qoro
