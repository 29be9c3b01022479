#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qoro
{

/// Where an address lies, from outside to inside (W3C, Private Network Access, "IP address space"). Servers further
/// inside trust every client that reaches them.
enum class NetworkZone {
    /// Everything else.
    Public,
    /// 10/8, 100.64/10, 169.254/16, 172.16/12, 192.168/16, 198.18/15, fc00::/7, fe80::/10, fec0::/10, 64:ff9b:1::/48.
    Private,
    /// 127/8, 0/8, ::1 and ::.
    Machine,
};

/// The zone of an IPv4 address, in network order.
NetworkZone zone_of(const std::array<std::uint8_t, 4>& ip);
/// The zone of an IPv6 address, in network order. An address that represents one of IPv4 (mapped, compatible, NAT64,
/// 6to4) lies where that one lies.
NetworkZone zone_of(const std::array<std::uint8_t, 16>& ip);

/// The zone of a web address (http, https, ws, wss) whose host is an IP address, however it is spelt, or localhost or
/// a name under it. Public for any other: names are not resolved.
NetworkZone zone_named_by(std::string_view address);

/// Whether one address must not lead to another, because that lies further inside. A host that others may read
/// otherwise (percent signs, backslashes, letters beyond ASCII, which become digits, a placeholder that is yet to be
/// filled, "{…}") lies on this machine where something leads, and outside where it comes from.
/// @param open the innermost zone that everything may lead to
bool leads_inward(std::string_view from, std::string_view to, NetworkZone open = NetworkZone::Public);

/// What a platform's host has opened to pages and their commands; shared by the platform.
struct OpenNetworks {
    NetworkZone open = NetworkZone::Public;
};

} // namespace qoro
