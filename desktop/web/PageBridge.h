#pragma once

#include "desktop/glib/Liveness.h"
#include "desktop/glib/Owned.h"
#include "platform/Platform.h"

#include <cstddef>
#include <string>
#include <vector>

typedef struct _WebKitUserMessage WebKitUserMessage;

namespace qoro
{

/// Carries a page's messages to its listener, and the listener's events to the page's script library. Main thread only.
class PageBridge
{
public:
    /// @param platform dispatches every message; must outlive the bridge
    /// @param listener must outlive the bridge
    PageBridge(Platform& platform, WebListener& listener);
    ~PageBridge();
    PageBridge(const PageBridge&) = delete;
    PageBridge& operator=(const PageBridge&) = delete;

    /// Passes a message (guard_message, with a text) to the listener and replies to the page. The listener may destroy
    /// the bridge.
    void answer(WebKitUserMessage* message);
    /// Queues a call of script callbacks. All calls of one loop event are sent in one reply.
    void call(const NSArray& callbacks, const NSDictionary& data);
    /// The page has been left: discards queued calls and ends the script's pending request.
    void leave_page();

private:
    void wait_for_events(WebKitUserMessage* question);
    void deliver();
    void dismiss_script();

    Platform& platform_;
    WebListener& listener_;
    /// Calls for the script, in JSON, to be sent with the next reply to its library.
    std::vector<std::string> pending_;
    std::size_t pending_bytes_ = 0;
    /// The library's pending request for the next events; null if there is none.
    ObjectRef<WebKitUserMessage> waiting_;
    /// For work posted to the main loop.
    Liveness<PageBridge> liveness_{*this};
};

} // namespace qoro
