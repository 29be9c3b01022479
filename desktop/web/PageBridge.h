#pragma once

#include "platform/Platform.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

typedef struct _WebKitUserMessage WebKitUserMessage;

namespace qoro
{

/// Carries a page's messages to its listener and the listener's events to the page's script library.
class PageBridge
{
public:
    /// The platform dispatches every message, and outlives the bridge, as the listener does.
    PageBridge(Platform& platform, WebListener& listener);
    ~PageBridge();
    PageBridge(const PageBridge&) = delete;
    PageBridge& operator=(const PageBridge&) = delete;

    /// Gives the listener a message (guard_message, with a text), and the page its answer; the bridge may be gone
    /// afterwards.
    void answer(WebKitUserMessage* message);
    /// Sends callbacks what they are called with. What one event of the loop causes leaves in one answer.
    void call(const NSArray& callbacks, const NSDictionary& data);
    /// The page goes: nothing comes any more for its script.
    void leave_page();

private:
    void wait_for_events(WebKitUserMessage* question);
    void deliver();
    void dismiss_script();

    Platform& platform_;
    WebListener& listener_;
    /// Dies with the bridge; what waits for the main loop watches it.
    const std::shared_ptr<PageBridge*> self_;
    /// Calls for the script, in JSON, that leave together with the next answer to its library.
    std::vector<std::string> pending_;
    std::size_t pending_bytes_ = 0;
    /// The library's question for the events that come next; null while it asks for none.
    WebKitUserMessage* waiting_ = nullptr;
};

} // namespace qoro
