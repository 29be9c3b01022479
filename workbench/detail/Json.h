#pragma once

// Only for .cpp files of this library: its public headers do not expose the JSON library.

#include <nlohmann/json.hpp>

namespace qoro::detail
{

/// Preserves the order of keys.
using Json = nlohmann::ordered_json;

} // namespace qoro::detail
