#include "kit/OriginHeaders.h"

#include "platform/AddressParts.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qoro
{

namespace
{

/// In lower case. Headers of the connection, and those that say how a message is framed or sent on (RFC 9110, 7.6.1 and
/// 10.1.1), then those that this library sets.
constexpr std::array<std::string_view, 19> Reserved{
    "connection",
    "keep-alive",
    "proxy-authenticate",
    "proxy-authorization",
    "proxy-connection",
    "te",
    "trailer",
    "transfer-encoding",
    "upgrade",
    "expect",
    "host",
    "content-length",
    "user-agent",
    "accept-encoding",
    "range",
    "if-range",
    "cookie",
    "cookie2",
    "http2-settings",
};

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// RFC 9110, 5.6.2.
bool is_token(std::string_view text)
{
    constexpr std::string_view Marks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::ranges::all_of(text, [&](char c) {
        return is_letter_or_digit(c) || Marks.find(c) != std::string_view::npos;
    });
}

/// RFC 9110, 5.5: visible characters, bytes from 128, and blanks inside.
bool is_header_value(std::string_view text)
{
    const auto is_blank = [](char c) { return c == ' ' || c == '\t'; };
    if (!text.empty() && (is_blank(text.front()) || is_blank(text.back())))
        return false;
    return std::ranges::all_of(text, [&](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return is_blank(c) || (byte > 0x20 && byte != 0x7F);
    });
}

/// cookie-octet of RFC 6265, 4.1.1, without the optional quotes.
bool is_cookie_value(std::string_view text)
{
    return std::ranges::all_of(
        text, [](char c) { return c > 0x20 && c < 0x7F && c != '"' && c != ',' && c != ';' && c != '\\'; });
}

bool is_reserved(std::string_view name)
{
    std::string lower(name);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::ranges::find(Reserved, lower) != Reserved.end();
}

bool is_origin(std::string_view text)
{
    const AddressParts parts(text);
    const bool plain = std::ranges::all_of(text, [](char c) { return c > 0x20 && c < 0x7F && c != '\\'; });
    return plain && parts.is_web() && parts.path().empty() && !parts.query() && !parts.fragment() &&
           !parts.host().empty() && !parts.authority()->user && (!parts.authority()->port || parts.port());
}

/// A name as it may be shown in one line.
std::string shown(const std::string& name)
{
    std::string text = name.substr(0, 80);
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return "\"" + text + "\"";
}

} // namespace

std::string fault_of(const OriginHeaders& added)
{
    if (!is_origin(added.origin))
        return "expected an origin such as https://ads.example, without a path, got " + shown(added.origin);
    for (const auto& [name, value] : added.headers) {
        if (!is_token(name))
            return "the header " + shown(name) + " has a name that is none (RFC 9110, 5.1)";
        if (is_reserved(name))
            return "the header " + shown(name) + " belongs to the connection or is set by the library";
        if (!is_header_value(value))
            return "the header " + shown(name) +
                   " has a value with a line break, another control character, or a blank at its edge";
    }
    for (const auto& [name, value] : added.cookies) {
        if (!is_token(name))
            return "the cookie " + shown(name) + " has a name that is none (RFC 6265, 4.1.1)";
        if (!is_cookie_value(value))
            return "the cookie " + shown(name) + " has a value with a character that RFC 6265, 4.1.1 excludes";
    }
    return "";
}

} // namespace qoro
