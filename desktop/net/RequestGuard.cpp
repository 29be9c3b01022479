#include "desktop/net/RequestGuard.h"

#include "desktop/net/Reach.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace qoro
{

namespace
{

constexpr const char* Inside = "its address is one of a private network or of this machine";
constexpr const char* FalseLength = "its server tells a length that is no number of bytes";
constexpr const char* RedirectedInside = "its server redirects to a private network or to this machine";

/// Whether a text is a valid Content-Length (RFC 9110, 8.6).
bool is_length(std::string_view text)
{
    std::int64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    return error == std::errc() && end == text.data() + text.size() && length >= 0 && text.front() != '-';
}

} // namespace

RequestGuard::RequestGuard(SoupMessage* message, const HttpAddress& asked, GCancellable* request, NetworkZone reach)
    : asked_(asked.spelt()), request_(request), reach_(reach), added_(message)
{
    connections_.add(message, "network-event", network_event, this);
    connections_.add(message, "starting", starting, this);
    // The only signal between reading the header section of an answer and using it.
    connections_.add(message, "notify::status-code", got_head, this);
    connections_.add(message, "restarted", restarted, this);
    if (zone_named_by(asked_) > reach_)
        refuse(Inside);
}

void RequestGuard::refuse(const char* reason)
{
    reason_ = reason;
    g_cancellable_cancel(request_);
}

void RequestGuard::network_event(SoupMessage*, int event, GIOStream* connection, RequestGuard* guard)
{
    if (event != G_SOCKET_CLIENT_CONNECTING)
        return;
    auto* socket = G_SOCKET_CONNECTION(connection);
    const auto address = adopt(g_socket_connection_get_remote_address(socket, nullptr));
    if (address && !G_IS_PROXY_ADDRESS(address.get()) && zone_of(address.get()) > guard->reach_) {
        // Nothing is sent to this address; the host's other addresses are tried.
        g_socket_close(g_socket_connection_get_socket(socket), nullptr);
        guard->reason_ = guard->redirected_ ? RedirectedInside : Inside;
    }
}

/// The request has a connection, possibly one that another request opened.
void RequestGuard::starting(SoupMessage* message, RequestGuard* guard)
{
    GSocketAddress* address = soup_message_get_remote_address(message);
    guard->zone_ = address && G_IS_PROXY_ADDRESS(address) ? NetworkZone::Public : zone_of(address);
    guard->reason_ = nullptr;
    if (address && !G_IS_PROXY_ADDRESS(address) && guard->zone_ > guard->reach_)
        guard->refuse(guard->redirected_ ? RedirectedInside : Inside);
}

void RequestGuard::got_head(SoupMessage* message, GParamSpec*, RequestGuard* guard)
{
    SoupMessageHeaders* headers = soup_message_get_response_headers(message);
    const char* length = soup_message_headers_get_list(headers, "Content-Length");
    if (!length || is_length(length))
        return;
    soup_message_headers_replace(headers, "Content-Length", "0");
    guard->refuse(FalseLength);
}

void RequestGuard::restarted(SoupMessage* message, RequestGuard* guard)
{
    if (soup_message_get_status(message) == SOUP_STATUS_NONE)
        return; // libsoup repeats the request to the same address
    guard->redirected_ = true;
    if (has_reach_rule())
        guard->reach_ = std::min(guard->reach_, std::max(guard->zone_, open_zone()));
    const std::string to = HttpAddress(soup_message_get_uri(message)).written();
    if (zone_named_by(to) > guard->reach_ || leads_inward(guard->asked_, to, open_zone()))
        guard->refuse(RedirectedInside);
}

} // namespace qoro
