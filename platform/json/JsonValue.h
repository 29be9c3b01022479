#pragma once

// For the .cpp files that parse JSON: no other header exposes the JSON library.

#include "platform/Value.h"

#include <nlohmann/json_fwd.hpp>

namespace qoro
{

/// Converts parsed JSON. A whole number beyond 64 signed bits becomes a double. Recursive: the parser's
/// caller limits the nesting.
Value to_value(const nlohmann::ordered_json& json);

} // namespace qoro
