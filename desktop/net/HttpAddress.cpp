#include "desktop/net/HttpAddress.h"

#include <libsoup/soup.h>

#include <string_view>

namespace qoro
{

GUri* http_uri(const std::string& address)
{
    // GLib would stop at a null byte, whereas comparisons of addresses include what follows it.
    if (address.find('\0') != std::string::npos)
        return nullptr;
    // Parsers disagree whether the part before a backslash is a host or user information.
    if (address.find('\\') < address.find_first_of("?#"))
        return nullptr;
    GUri* uri = g_uri_parse(address.c_str(), static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS), nullptr);
    if (!uri)
        return nullptr;
    const std::string_view scheme = g_uri_get_scheme(uri);
    const char* host = g_uri_get_host(uri);
    if ((scheme == "http" || scheme == "https") && host && *host)
        return uri;
    g_uri_unref(uri);
    return nullptr;
}

bool is_http_address(const std::string& address)
{
    GUri* uri = http_uri(address);
    if (uri)
        g_uri_unref(uri);
    return uri != nullptr;
}

} // namespace qoro
