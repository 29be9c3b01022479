#pragma once

#include "desktop/glib/Liveness.h"
#include "desktop/glib/Owned.h"
#include "desktop/web/LaunchTrial.h"
#include "desktop/web/PageWatch.h"
#include "kit/RefusalLog.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitWebContext WebKitWebContext;

namespace qoro
{

class GuardFolder;
class PageReach;
class SocketFilter;
class WebKitEngine;

/// The address of the kit's script library for every page.
inline constexpr const char* script_library_address = "kit://script.js";

/// Creates web engines. Engines of one kind share a process family and an in-memory session. Main thread only.
class WebKitEngineFactory : public WebEngineFactory
{
public:
    /// @param inspects whether each creative opens WebKit's inspector, in a window of its own
    explicit WebKitEngineFactory(Platform& platform, const PageLimits& limits = {}, bool inspects = false);
    ~WebKitEngineFactory() override;
    WebKitEngineFactory(const WebKitEngineFactory&) = delete;
    WebKitEngineFactory& operator=(const WebKitEngineFactory&) = delete;

    /// GTK must have been started. Nothing of WebKit is loaded before the first call. If pages cannot be guarded, the
    /// engine shows none and every load fails with the reason.
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) override;
    /// Loads what WebKit needs for a creative, tens of milliseconds once per program, so that the first ad need not.
    /// Starts no process of a page. No effect after the first creative.
    /// @return false while WebKit is being loaded, or while it is not known whether its processes start here: try again
    ///     later
    bool warm_up();

    /// Whether new pages are to wait, half a second at most each, because something more urgent starts. May be empty.
    std::function<bool()> on_hold;

private:
    struct Family {
        std::shared_ptr<PageReach> reach = {};
        ObjectRef<WebKitWebContext> context = {};
        ObjectRef<WebKitNetworkSession> session = {};
    };
    /// The first load of an engine, until its view may be created.
    struct FirstLoad {
        /// Seconds of the loop's clock until which a video that starts goes first; absent until may_begin() is asked.
        std::optional<double> hold_until = {};
        /// Whether the trials of WebKit's processes have begun.
        bool is_tried = false;
        /// Of the process for the family's requests; absent if that runs.
        std::optional<LaunchTrial> network = {};
    };
    /// Whether the view may be created now. Begins what that needs.
    bool may_begin(FirstLoad& load, PageKind kind) const;
    /// @throws std::runtime_error if pages cannot be guarded
    std::unique_ptr<WebKitEngine> make_engine(WebListener& listener, PageKind kind);
    /// Sets up a family on first use.
    /// @throws std::runtime_error if pages cannot be guarded
    void found(Family& family, PageKind kind);
    std::shared_ptr<PageReach> guard_network(PageKind kind, WebKitNetworkSession* session);
    /// Reports a connection that the proxy refused. Any thread may call this.
    void report_refusal(const std::string& where);

    Platform& platform_;
    std::unique_ptr<GuardFolder> guard_;
    std::shared_ptr<SocketFilter> sockets_;
    const PageLimits limits_;
    const bool inspects_;
    const std::shared_ptr<PageWatch> watch_;
    /// For work posted to the main loop, also by the threads of the families' proxies.
    const Liveness<WebKitEngineFactory> liveness_{*this};
    Family creatives_;
    Family browsed_;
    RefusalLog refusals_;
};

} // namespace qoro
