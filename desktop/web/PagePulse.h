#pragma once

#include "desktop/glib/Liveness.h"
#include "platform/Ports.h"

#include <functional>
#include <optional>

typedef struct _WebKitWebView WebKitWebView;

namespace qoro
{

/// Monitors whether a page's script thread responds: it is queried once a second by a message that the page's script
/// can neither see nor answer. A query without an answer after one second counts as no response. While monitoring is
/// off, no timer runs and no message is sent.
class PagePulse
{
public:
    /// @param loop must outlive the object
    /// @param view must outlive the object
    /// @param changed called within an event of the loop; may destroy the object
    PagePulse(MainLoop& loop, WebKitWebView* view, std::function<void(bool responds)> changed);
    ~PagePulse();
    PagePulse(const PagePulse&) = delete;
    PagePulse& operator=(const PagePulse&) = delete;

    /// Turns the monitoring on or off; initially off.
    void watch(bool watch);
    /// A page has begun or ended: it counts as responding, without a call of `changed`.
    /// @param present whether there is a page to query
    void reset(bool present);

private:
    void tick();
    void ask();

    MainLoop& loop_;
    WebKitWebView* const view_;
    const std::function<void(bool)> changed_;
    bool present_ = false;
    bool responds_ = true;
    /// 0 while monitoring is off.
    TimerId timer_ = 0;
    double last_tick_ = 0;
    /// The unanswered query; absent if there is none. An answer is only accepted while its query exists.
    std::optional<Liveness<PagePulse>> open_;
};

} // namespace qoro
