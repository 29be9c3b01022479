#include "desktop/net/HttpAddress.h"

#include "desktop/glib/Owned.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

std::string spelling_of(GUri* uri)
{
    return take_text(g_uri_to_string(uri));
}

} // namespace

HttpAddress::HttpAddress(std::string written, std::shared_ptr<GUri> uri)
    : written_(std::move(written)), uri_(std::move(uri))
{
}

HttpAddress::HttpAddress(GUri* uri) : HttpAddress(spelling_of(uri), {g_uri_ref(uri), g_uri_unref})
{
}

std::optional<HttpAddress> HttpAddress::parse(std::string address)
{
    // GLib would stop at a null byte, whereas comparisons of addresses include what follows it.
    if (address.find('\0') != std::string::npos)
        return std::nullopt;
    // Parsers disagree whether the part before a backslash is a host or user information.
    if (address.find('\\') < address.find_first_of("?#"))
        return std::nullopt;
    GUri* parsed = g_uri_parse(address.c_str(), static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS), nullptr);
    if (!parsed)
        return std::nullopt;
    std::shared_ptr<GUri> uri(parsed, g_uri_unref);
    const std::string_view scheme = g_uri_get_scheme(parsed);
    const char* host = g_uri_get_host(parsed);
    if ((scheme != "http" && scheme != "https") || !host || !*host)
        return std::nullopt;
    // GLib tolerates both in a host. For browsers, and for AddressParts, the host begins after the last "@".
    if (std::strpbrk(host, "@]"))
        return std::nullopt;
    return HttpAddress(std::move(address), std::move(uri));
}

std::string HttpAddress::spelt() const
{
    return spelling_of(uri_.get());
}

std::string HttpAddress::host_and_port() const
{
    std::string host = g_uri_get_host(uri_.get());
    std::ranges::transform(host, host.begin(), g_ascii_tolower);
    if (host.find(':') != std::string::npos)
        host = "[" + host + "]";
    return host + ":" + std::to_string(g_uri_get_port(uri_.get()));
}

std::string HttpAddress::origin() const
{
    return std::string(g_uri_get_scheme(uri_.get())) + "://" + host_and_port();
}

} // namespace qoro
