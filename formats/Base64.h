#pragma once

#include <optional>
#include <string>
#include <string_view>

// Bytes as text (RFC 4648, section 4).

namespace qoro
{

/// With padding; empty for no bytes.
std::string to_base64(std::string_view bytes);
/// Absent for malformed text.
std::optional<std::string> from_base64(std::string_view text);

} // namespace qoro
