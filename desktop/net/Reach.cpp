#include "desktop/net/Reach.h"

#include "desktop/net/HttpAddress.h"

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

/// "example.org:80"; empty for anything but an http or https address.
std::string host_and_port(const std::string& address)
{
    GUri* uri = http_uri(address);
    if (!uri)
        return "";
    std::string host = g_uri_get_host(uri);
    std::ranges::transform(host, host.begin(), g_ascii_tolower);
    host += ":" + std::to_string(g_uri_get_port(uri));
    g_uri_unref(uri);
    return host;
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
        if (std::string host = host_and_port(address); !host.empty()) {
            ++state().named[host];
            hosts_.push_back(std::move(host));
        }
}

NamedHosts::~NamedHosts()
{
    const std::scoped_lock lock(state().mutex);
    for (const std::string& host : hosts_)
        if (--state().named[host] == 0)
            state().named.erase(host);
}

NetworkZone reach_of(const std::string& address)
{
    const std::string host = host_and_port(address);
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

void note_page(const std::string& address, NetworkZone zone)
{
    const std::string host = host_and_port(address);
    const std::scoped_lock lock(state().mutex);
    if (zone == NetworkZone::Public)
        state().pages.erase(host);
    else
        state().pages[host] = zone;
}

NetworkZone reach_of_page(const std::string& address)
{
    const std::string host = host_and_port(address);
    const std::scoped_lock lock(state().mutex);
    if (!state().open)
        return NetworkZone::Machine;
    const auto page = state().pages.find(host);
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
    char* text = g_socket_connectable_to_string(G_SOCKET_CONNECTABLE(address));
    std::string copy = text;
    g_free(text);
    return copy;
}

} // namespace qoro
