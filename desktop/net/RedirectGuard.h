#pragma once

#include <string>

typedef struct _GCancellable GCancellable;
typedef struct _GUri GUri;
typedef struct _SoupMessage SoupMessage;

namespace qoro
{

/// Breaks a request off when a server elsewhere redirects it to this machine, where the viewer's own services trust
/// whoever asks. Names are not resolved. Lives while the request is under way.
class RedirectGuard
{
public:
    /// @param asked the address that the request was made for
    /// @param request what the request is sent with
    RedirectGuard(SoupMessage* message, GUri* asked, GCancellable* request);
    ~RedirectGuard();
    RedirectGuard(const RedirectGuard&) = delete;
    RedirectGuard& operator=(const RedirectGuard&) = delete;

    /// Whether that has happened; the request ends as one that was cancelled.
    bool has_acted() const { return has_acted_; }
    /// What such a request fails with.
    static constexpr const char* Reason = "its server redirects to this machine";

private:
    static void restarted(SoupMessage* message, RedirectGuard* guard);

    SoupMessage* const message_;
    const std::string asked_;
    GCancellable* const request_;
    bool has_acted_ = false;
};

} // namespace qoro
