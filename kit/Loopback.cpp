#include "kit/Loopback.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
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

/// Where the authority of an address stands, user and port included.
struct Span {
    std::size_t begin;
    std::size_t end;
};

/// As a browser reads it: any number of slashes, of either kind, stands before the host. Absent for what is no web
/// address.
std::optional<Span> authority_in(std::string_view address)
{
    const std::size_t colon = address.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    if (std::ranges::find(WebSchemes, in_lower_case(address.substr(0, colon))) == WebSchemes.end())
        return std::nullopt;
    const std::size_t begin = std::min(address.find_first_not_of("/\\", colon + 1), address.size());
    return Span{begin, std::min(address.find_first_of("/\\?#", begin), address.size())};
}

std::string host_of(std::string_view address)
{
    const auto authority = authority_in(address);
    if (!authority)
        return "";
    address = address.substr(authority->begin, authority->end - authority->begin);
    if (const std::size_t user = address.rfind('@'); user != std::string_view::npos)
        address.remove_prefix(user + 1);
    if (address.starts_with('['))
        return in_lower_case(address.substr(0, std::min(address.find(']'), address.size() - 1) + 1));
    address = address.substr(0, address.find(':'));
    if (address.ends_with('.'))
        address.remove_suffix(1);
    return in_lower_case(address);
}

/// A text in which no placeholder has a value.
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

/// A number as it may stand in an IPv4 address: decimal, or with a leading 0 octal, or with 0x hexadecimal.
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

/// The first byte of an IPv4 address: of four parts, or of fewer, whose last one stands for the bytes that are missing.
std::optional<std::uint64_t> first_byte(std::string_view host)
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
    return count == 1 ? parts[0] >> 24 : parts[0];
}

bool is_loopback_6(std::string_view host)
{
    in6_addr bytes{};
    if (host.size() < 2 || inet_pton(AF_INET6, std::string(host.substr(1, host.size() - 2)).c_str(), &bytes) != 1)
        return false;
    const auto zeros = [&](std::size_t count) {
        return std::all_of(bytes.s6_addr, bytes.s6_addr + count, [](unsigned char byte) { return byte == 0; });
    };
    if (zeros(15))
        return bytes.s6_addr[15] <= 1;
    const bool mapped = zeros(10) && bytes.s6_addr[10] == 0xFF && bytes.s6_addr[11] == 0xFF;
    return (mapped && bytes.s6_addr[12] == 0) || ((mapped || zeros(12)) && bytes.s6_addr[12] == 127);
}

/// Whether a host can be read in more than one way, or only by who fills the placeholders.
/// @param address as it stands
/// @param empty the same without its placeholders
bool is_unreadable(std::string_view address, std::string_view empty)
{
    const auto authority = authority_in(empty);
    if (!authority) {
        // A placeholder may still make a scheme of it.
        const std::size_t slashes = address.find("//");
        return slashes != std::string_view::npos && address.find('{') < slashes;
    }
    if (address.find('{') <= authority->end)
        return true;
    const std::string host = host_of(empty);
    if (host.starts_with('[')) {
        in6_addr bytes{};
        if (inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &bytes) != 1)
            return true;
    }
    // Some end the host at a backslash, others (RFC 3986) take what stands before it for a part of the user's name.
    const std::string_view until_path = empty.substr(0, empty.find_first_of("/?#", authority->begin));
    const std::string_view beginning = empty.substr(0, authority->end);
    return until_path.find('\\') != std::string_view::npos || std::ranges::count(beginning, '@') > 1 ||
           std::ranges::any_of(beginning, [](unsigned char c) { return c <= ' ' || c == 0x7F; }) ||
           std::ranges::any_of(host, [](unsigned char c) { return c >= 0x7F || c == '%'; });
}

} // namespace

bool is_loopback_address(std::string_view address)
{
    const std::string host = host_of(address);
    if (host.empty())
        return false;
    if (host.starts_with('['))
        return is_loopback_6(host);
    if (host == "localhost" || host.ends_with(".localhost"))
        return true;
    const auto byte = first_byte(host);
    return byte == 127U || byte == 0U;
}

bool leads_to_this_machine(std::string_view from, std::string_view to)
{
    const std::string empty = without_placeholders(to);
    return (is_loopback_address(empty) || is_unreadable(to, empty)) && !is_loopback_address(from);
}

} // namespace qoro
