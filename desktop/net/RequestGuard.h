#pragma once

#include "kit/NetworkZone.h"

#include <string>

typedef struct _GCancellable GCancellable;
typedef struct _GParamSpec GParamSpec;
typedef struct _GIOStream GIOStream;
typedef struct _GUri GUri;
typedef struct _SoupMessage SoupMessage;

namespace qoro
{

/// Watches one request, as long as it is under way.
///
/// It goes no further inside than it may, nor does what its server redirects it to: servers there trust every client
/// that reaches them. What a connection leads to is looked at before it is made; a host of which some addresses lie
/// further inside is reached by the others. Behind a proxy, whose network is its own, only what the address itself says
/// counts.
///
/// An answer whose length is none ("-1", more than 2⁶³ bytes) is refused before libsoup takes it for one.
class RequestGuard
{
public:
    /// @param asked the address that the request is made for
    /// @param request what the request is sent with; cancelled when it is refused
    /// @param reach the innermost zone that it may go to; a redirect may go no further than its server lies
    RequestGuard(SoupMessage* message, GUri* asked, GCancellable* request, NetworkZone reach);
    ~RequestGuard();
    RequestGuard(const RequestGuard&) = delete;
    RequestGuard& operator=(const RequestGuard&) = delete;

    /// Why the request, which has failed, was refused, in words; null when it was not.
    const char* reason() const { return reason_; }
    /// The zone of the server that the last part of the request went to.
    NetworkZone zone() const { return zone_; }

private:
    static void network_event(SoupMessage* message, int event, GIOStream* connection, RequestGuard* guard);
    static void starting(SoupMessage* message, RequestGuard* guard);
    static void got_head(SoupMessage* message, GParamSpec* property, RequestGuard* guard);
    static void restarted(SoupMessage* message, RequestGuard* guard);
    void refuse(const char* reason);

    SoupMessage* const message_;
    const std::string asked_;
    GCancellable* const request_;
    NetworkZone reach_;
    NetworkZone zone_ = NetworkZone::Public;
    bool redirected_ = false;
    const char* reason_ = nullptr;
};

} // namespace qoro
