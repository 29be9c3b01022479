#pragma once

namespace qoro
{

/// How this program names itself to servers: product, version, system.
extern const char* const UserAgent;

} // namespace qoro
