#include "kit/NetworkZone.h"

#include "platform/AddressParts.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <optional>
#include <string>

namespace qoro
{

namespace
{

constexpr std::array<std::string_view, 4> WebSchemes{"http", "https", "ws", "wss"};

std::string in_lower_case(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/// Position of an address's authority, including user and port.
struct Span {
    std::size_t begin;
    std::size_t end;
};

/// Finds the authority as browsers do: any number of slashes and backslashes may precede it (WHATWG URL Standard,
/// special authority ignore slashes state). RFC 3986, and so AddressParts, would find none in "http:127.0.0.1", which a
/// browser would request. Absent for an address that is not a web address.
std::optional<Span> authority_in(std::string_view address)
{
    const AddressParts parts(address);
    if (std::ranges::none_of(WebSchemes, [&parts](std::string_view scheme) { return parts.has_scheme(scheme); }))
        return std::nullopt;
    const std::size_t after_scheme = address.size() - parts.after_scheme().size();
    const std::size_t begin = std::min(address.find_first_not_of("/\\", after_scheme), address.size());
    return Span{begin, std::min(address.find_first_of("/\\?#", begin), address.size())};
}

/// The host that a browser would connect to, in lower case; empty for an address that is not a web address.
std::string browsed_host(std::string_view address)
{
    const auto authority = authority_in(address);
    if (!authority)
        return "";
    std::string_view host =
        AuthorityParts::of(address.substr(authority->begin, authority->end - authority->begin)).host;
    if (!host.starts_with('[') && host.ends_with('.'))
        host.remove_suffix(1);
    return in_lower_case(host);
}

/// The text with its placeholders removed.
std::string without_placeholders(std::string_view text)
{
    std::string left;
    while (true) {
        const std::size_t begin = text.find('{');
        const std::size_t end = begin == std::string_view::npos ? begin : text.find('}', begin);
        left += text.substr(0, end == std::string_view::npos ? end : begin);
        if (end == std::string_view::npos)
            return left;
        text.remove_prefix(end + 1);
    }
}

/// Parses a number of an IPv4 address: decimal, octal with a leading 0, or hexadecimal with 0x (WHATWG URL Standard,
/// IPv4 number parser).
std::optional<std::uint64_t> number_in(std::string_view text)
{
    int base = 10;
    if (text.starts_with("0x")) {
        base = 16;
        text.remove_prefix(2);
    } else if (text.size() > 1 && text.starts_with('0')) {
        base = 8;
        text.remove_prefix(1);
    }
    if (base == 16 && text.empty())
        return 0;
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// Parses an IPv4 address of one to four parts; the last part supplies all missing bytes. A part that is too large is
/// clamped.
std::optional<std::array<std::uint8_t, 4>> ip4_in(std::string_view host)
{
    std::array<std::uint64_t, 4> parts{};
    std::size_t count = 0;
    while (true) {
        const std::size_t dot = std::min(host.find('.'), host.size());
        const auto part = number_in(host.substr(0, dot));
        if (!part || count == parts.size())
            return std::nullopt;
        parts[count++] = *part;
        if (dot == host.size())
            break;
        host.remove_prefix(dot + 1);
    }
    std::array<std::uint8_t, 4> bytes{};
    for (std::size_t n = 0; n + 1 < count; ++n)
        bytes[n] = static_cast<std::uint8_t>(std::min<std::uint64_t>(parts[n], 0xFF));
    const std::size_t missing = 5 - count;
    const std::uint64_t last = std::min(parts[count - 1], (std::uint64_t{1} << (8 * missing)) - 1);
    for (std::size_t n = 0; n < missing; ++n)
        bytes[3 - n] = static_cast<std::uint8_t>(last >> (8 * n));
    return bytes;
}

/// @param host the address in brackets
std::optional<std::array<std::uint8_t, 16>> ip6_in(std::string_view host)
{
    std::array<std::uint8_t, 16> bytes{};
    if (host.size() < 2 || inet_pton(AF_INET6, std::string(host.substr(1, host.size() - 2)).c_str(), bytes.data()) != 1)
        return std::nullopt;
    return bytes;
}

/// Whether parsers may disagree on a host, or a placeholder supplies part of it.
/// @param address the original address
/// @param empty the address with its placeholders removed
bool is_unreadable(std::string_view address, std::string_view empty)
{
    const auto authority = authority_in(empty);
    if (!authority) {
        // A placeholder before the colon may still supply the scheme.
        const std::size_t slashes = address.find("//");
        return slashes != std::string_view::npos && address.find('{') < std::min(slashes, address.find(':'));
    }
    if (address.find('{') <= authority->end)
        return true;
    const std::string host = browsed_host(empty);
    if (host.starts_with('[') && !ip6_in(host))
        return true;
    // Some parsers end the host at a backslash; others (RFC 3986) treat the part before it as user information.
    const std::string_view until_path = empty.substr(0, empty.find_first_of("/?#", authority->begin));
    const std::string_view beginning = empty.substr(0, authority->end);
    return until_path.find('\\') != std::string_view::npos || std::ranges::count(beginning, '@') > 1 ||
           std::ranges::any_of(beginning, [](unsigned char c) { return c <= ' ' || c == 0x7F; }) ||
           std::ranges::any_of(host, [](unsigned char c) { return c >= 0x7F || c == '%'; });
}

} // namespace

NetworkZone zone_of(const std::array<std::uint8_t, 4>& ip)
{
    const unsigned first = ip[0];
    const unsigned second = ip[1];
    if (first == 127 || first == 0)
        return NetworkZone::Machine;
    const bool is_private = first == 10 || (first == 100 && (second & 0xC0U) == 64) ||
                            (first == 169 && second == 254) || (first == 172 && (second & 0xF0U) == 16) ||
                            (first == 192 && second == 168) || (first == 198 && (second & 0xFEU) == 18);
    return is_private ? NetworkZone::Private : NetworkZone::Public;
}

NetworkZone zone_of(const std::array<std::uint8_t, 16>& ip)
{
    const auto begins_with = [&](std::initializer_list<std::uint8_t> bytes) {
        return std::equal(bytes.begin(), bytes.end(), ip.begin());
    };
    const auto ip4_at = [&](std::size_t at) {
        return zone_of(std::array<std::uint8_t, 4>{ip[at], ip[at + 1], ip[at + 2], ip[at + 3]});
    };
    if (begins_with({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}))
        return ip4_at(12);
    if (begins_with({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})) {
        const bool own = ip[12] == 0 && ip[13] == 0 && ip[14] == 0;
        // Of ::/120 only :: and ::1 are this machine.
        return own ? (ip[15] <= 1 ? NetworkZone::Machine : NetworkZone::Public) : ip4_at(12);
    }
    if (begins_with({0, 0x64, 0xFF, 0x9B, 0, 0, 0, 0, 0, 0, 0, 0}))
        return ip4_at(12);
    if (begins_with({0x20, 0x02}))
        return ip4_at(2);
    const bool is_private =
        (ip[0] & 0xFEU) == 0xFC || (ip[0] == 0xFE && (ip[1] & 0x80U) != 0) || begins_with({0, 0x64, 0xFF, 0x9B, 0, 1});
    return is_private ? NetworkZone::Private : NetworkZone::Public;
}

NetworkZone zone_named_by(std::string_view address)
{
    const std::string host = browsed_host(address);
    if (host.starts_with('[')) {
        const auto ip = ip6_in(host);
        return ip ? zone_of(*ip) : NetworkZone::Public;
    }
    if (host == "localhost" || host.ends_with(".localhost"))
        return NetworkZone::Machine;
    const auto ip = ip4_in(host);
    return ip ? zone_of(*ip) : NetworkZone::Public;
}

bool leads_inward(std::string_view from, std::string_view to, NetworkZone open)
{
    const std::string empty = without_placeholders(to);
    const NetworkZone zone = is_unreadable(to, empty) ? NetworkZone::Machine : zone_named_by(empty);
    return zone > std::max(zone_named_by(from), open);
}

} // namespace qoro
