#pragma once

namespace qoro
{

/// How this program names itself to servers: product, version, system.
inline constexpr const char* UserAgent = "QoroVideoAd/" QORO_VERSION " (Linux)";

} // namespace qoro
