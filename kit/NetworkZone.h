#pragma once

#include "platform/Export.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// Network zones, ordered from outside to inside (the IP address spaces of W3C Private Network Access). Servers in an
/// inner zone tend to trust every client that can reach them.
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
/// The zone of an IPv6 address, in network order. An address that embeds an IPv4 address (mapped, compatible, NAT64,
/// 6to4) has the zone of that address.
NetworkZone zone_of(const std::array<std::uint8_t, 16>& ip);

/// The zone of a web address (http, https, ws, wss) whose host is an IP address in any notation, localhost or a name
/// under it. Public for any other: names are not resolved.
NetworkZone zone_named_by(std::string_view address);

/// Whether an address must not lead to another one because the target lies in a more inward zone. Ambiguous hosts fail
/// closed: loopback as a target, remote as an origin. A host is ambiguous if parsers may disagree on it: it contains
/// percent signs, backslashes, non-ASCII characters (some map to digits) or an unfilled placeholder, "{…}".
/// @param open the innermost zone that is always permitted as a target
bool leads_inward(std::string_view from, std::string_view to, NetworkZone open = NetworkZone::Public);

/// The zones that the host has opened to pages and their commands; shared by the platform.
struct OpenNetworks {
    NetworkZone open = NetworkZone::Public;
};

} // namespace qoro
