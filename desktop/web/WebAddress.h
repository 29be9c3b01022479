#pragma once

#include <glib.h>

namespace qoro
{

/// Whether an address is one of http or https; null is none.
inline bool is_web_address(const char* address)
{
    return address &&
           (g_ascii_strncasecmp(address, "http://", 7) == 0 || g_ascii_strncasecmp(address, "https://", 8) == 0);
}

/// Addresses that a page makes up itself, with no one behind them: empty frames and frames with written content. Null
/// is none.
inline bool is_blank_address(const char* address)
{
    return address && g_ascii_strncasecmp(address, "about:", 6) == 0;
}

} // namespace qoro
