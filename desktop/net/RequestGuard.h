#pragma once

#include "desktop/glib/Owned.h"
#include "desktop/net/AddedHeaders.h"
#include "desktop/net/HttpAddress.h"
#include "kit/NetworkZone.h"

#include <string>

typedef struct _GCancellable GCancellable;
typedef struct _GParamSpec GParamSpec;
typedef struct _GIOStream GIOStream;
typedef struct _SoupMessage SoupMessage;

namespace qoro
{

/// Checks one request while it is pending, and adds the host's headers to it.
///
/// The request may not go further inside than allowed, nor may its redirects, because servers there trust every client
/// that reaches them. The address of a connection is checked before the connection is made; if some addresses of a host
/// lie further inside, the others are used. Behind a proxy, which resolves names in its own network, only the address
/// itself is checked.
///
/// An answer with an invalid Content-Length ("-1", more than 2⁶³ bytes) is refused before libsoup uses it.
class RequestGuard
{
public:
    /// @param asked the address that the request is made for
    /// @param request cancels the request when it is refused
    /// @param reach the innermost zone that the request may reach; a redirect may go no further inside than the server
    ///        that sent it
    RequestGuard(SoupMessage* message, const HttpAddress& asked, GCancellable* request, NetworkZone reach);
    RequestGuard(const RequestGuard&) = delete;
    RequestGuard& operator=(const RequestGuard&) = delete;

    /// Why the failed request was refused, in words; null if it was not refused.
    const char* reason() const { return reason_; }
    /// The zone of the server that the request was last sent to.
    NetworkZone zone() const { return zone_; }

private:
    static void network_event(SoupMessage* message, int event, GIOStream* connection, RequestGuard* guard);
    static void starting(SoupMessage* message, RequestGuard* guard);
    static void got_head(SoupMessage* message, GParamSpec* property, RequestGuard* guard);
    static void restarted(SoupMessage* message, RequestGuard* guard);
    void refuse(const char* reason);

    const std::string asked_;
    GCancellable* const request_;
    NetworkZone reach_;
    NetworkZone zone_ = NetworkZone::Public;
    bool redirected_ = false;
    const char* reason_ = nullptr;
    const HeadersOfRequest added_;
    Connections connections_;
};

} // namespace qoro
