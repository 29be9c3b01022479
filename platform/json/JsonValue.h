#pragma once

// For the .cpp files that parse JSON, and for formats/detail/Json.h. No public header exposes the JSON library.

#include "platform/Export.h"
#include "platform/Value.h"

#include <nlohmann/json_fwd.hpp>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// Converts parsed JSON. A whole number beyond 64 signed bits becomes a double; null, and what JSON text cannot
/// contain, becomes a null value. Recursive: the caller must have limited the nesting when it parsed the text.
Value to_value(const nlohmann::ordered_json& json);

} // namespace qoro
