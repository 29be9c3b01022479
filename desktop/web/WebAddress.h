#pragma once

#include <glib.h>

namespace qoro
{

/// Whether an address is an http or https address; false for null.
inline bool is_web_address(const char* address)
{
    return address &&
           (g_ascii_strncasecmp(address, "http://", 7) == 0 || g_ascii_strncasecmp(address, "https://", 8) == 0);
}

/// Whether an address belongs to a document without a server: empty frames and frames with generated content
/// ("about:"). False for null.
inline bool is_blank_address(const char* address)
{
    return address && g_ascii_strncasecmp(address, "about:", 6) == 0;
}

} // namespace qoro
