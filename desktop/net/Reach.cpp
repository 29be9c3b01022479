#include "desktop/net/Reach.h"

#include "desktop/glib/Owned.h"

#include <gio/gio.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>

namespace qoro
{

namespace
{

struct State {
    std::mutex mutex;
    std::optional<NetworkZone> open;
    /// Hosts that ads of this machine name, with a reference count.
    std::map<std::string, int> named;
    /// Zones of hosts whose pages came from a zone other than public.
    std::map<std::string, NetworkZone> pages;
};

State& state()
{
    static State the;
    return the;
}

} // namespace

ReachRule::ReachRule(NetworkZone open)
{
    const std::scoped_lock lock(state().mutex);
    state().open = open;
}

ReachRule::~ReachRule()
{
    const std::scoped_lock lock(state().mutex);
    state().open.reset();
    state().pages.clear();
}

NamedHosts::NamedHosts(const std::vector<std::string>& addresses)
{
    const std::scoped_lock lock(state().mutex);
    for (const std::string& address : addresses)
        if (const auto named = HttpAddress::parse(address)) {
            hosts_.push_back(named->host_and_port());
            ++state().named[hosts_.back()];
        }
}

NamedHosts::~NamedHosts()
{
    const std::scoped_lock lock(state().mutex);
    for (const std::string& host : hosts_)
        if (--state().named[host] == 0)
            state().named.erase(host);
}

NetworkZone reach_of(const std::optional<HttpAddress>& address)
{
    const std::string host = address ? address->host_and_port() : "";
    const std::scoped_lock lock(state().mutex);
    // A private network that is open to pages implies that the ad's own requests may go anywhere: the ad's server may
    // run on this machine.
    const bool restricted = state().open == NetworkZone::Public && !state().named.contains(host);
    return restricted ? NetworkZone::Public : NetworkZone::Machine;
}

NetworkZone open_zone()
{
    const std::scoped_lock lock(state().mutex);
    return state().open.value_or(NetworkZone::Public);
}

bool has_reach_rule()
{
    const std::scoped_lock lock(state().mutex);
    return state().open.has_value();
}

void note_page(const HttpAddress& address, NetworkZone zone)
{
    const std::string host = address.host_and_port();
    const std::scoped_lock lock(state().mutex);
    if (zone == NetworkZone::Public)
        state().pages.erase(host);
    else
        state().pages[host] = zone;
}

NetworkZone reach_of_page(const std::string& address)
{
    const auto asked = HttpAddress::parse(address);
    const std::scoped_lock lock(state().mutex);
    if (!state().open)
        return NetworkZone::Machine;
    const auto page = asked ? state().pages.find(asked->host_and_port()) : state().pages.end();
    const NetworkZone came_from = page == state().pages.end() ? zone_named_by(address) : page->second;
    return std::max(came_from, *state().open);
}

NetworkZone zone_of(GSocketAddress* address)
{
    if (!address || !G_IS_INET_SOCKET_ADDRESS(address))
        return NetworkZone::Public;
    GInetAddress* ip = g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(address));
    const auto* bytes = g_inet_address_to_bytes(ip);
    if (g_inet_address_get_family(ip) == G_SOCKET_FAMILY_IPV4) {
        std::array<std::uint8_t, 4> ip4{};
        std::memcpy(ip4.data(), bytes, ip4.size());
        return zone_of(ip4);
    }
    std::array<std::uint8_t, 16> ip6{};
    std::memcpy(ip6.data(), bytes, ip6.size());
    return zone_of(ip6);
}

std::string text_of(GSocketAddress* address)
{
    return take_text(g_socket_connectable_to_string(G_SOCKET_CONNECTABLE(address)));
}

} // namespace qoro
