#pragma once

namespace qoro
{

/// Value of the User-Agent field (RFC 9110, 10.1.5): product, version, system.
extern const char* const UserAgent;

} // namespace qoro
