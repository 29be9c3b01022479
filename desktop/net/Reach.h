#pragma once

#include "desktop/net/HttpAddress.h"
#include "kit/NetworkZone.h"

#include <string>
#include <vector>

typedef struct _GSocketAddress GSocketAddress;

namespace qoro
{

// How far inside (NetworkZone) requests may go. Addresses are checked when connections are made, so that a name that
// leads inside is detected whatever it resolved to before. Any thread may call these functions.

/// Restricts requests of the whole program while it exists; at most one exists at a time. A public ad then reaches
/// public addresses only. Without a rule every address can be reached, as suits a program that fetches what its user
/// names.
class ReachRule
{
public:
    /// @param open the innermost zone that every request may reach
    explicit ReachRule(NetworkZone open);
    ~ReachRule();
    ReachRule(const ReachRule&) = delete;
    ReachRule& operator=(const ReachRule&) = delete;
};

/// While it exists, requests to these hosts may lead to any zone, because an ad of this machine names them itself. A
/// host includes its port.
class NamedHosts
{
public:
    /// @param addresses addresses other than http and https are ignored
    explicit NamedHosts(const std::vector<std::string>& addresses);
    ~NamedHosts();
    NamedHosts(const NamedHosts&) = delete;
    NamedHosts& operator=(const NamedHosts&) = delete;

private:
    std::vector<std::string> hosts_;
};

/// The innermost zone that a request for an address may reach.
/// @param address absent for an address of another scheme, which no ad can name
NetworkZone reach_of(const std::optional<HttpAddress>& address);
/// The innermost zone that every request may reach; public without a rule.
NetworkZone open_zone();
/// Whether a ReachRule exists.
bool has_reach_rule();

/// Records the zone that a page came from.
/// @param zone of the server that sent it
void note_page(const HttpAddress& address, NetworkZone zone);
/// The innermost zone that the page of an address may reach: the zone it came from, or open_zone() if that lies further
/// inside. Without a rule, any zone. The address may have any scheme.
NetworkZone reach_of_page(const std::string& address);

/// The zone of a socket address; public for anything but an IP address.
NetworkZone zone_of(GSocketAddress* address);
/// "192.168.1.7:80"
std::string text_of(GSocketAddress* address);

} // namespace qoro
