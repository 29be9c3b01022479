#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>

typedef struct _WebKitWebView WebKitWebView;

namespace qoro
{

/// Knows whether a page's script thread answers: it is asked once a second, by a message that the page's script can
/// neither see nor answer itself. A question that has waited for a second counts as not answered. No timer runs and no
/// message is sent while the page is not watched.
class PagePulse
{
public:
    /// @param loop  outlives the object, as the view does
    /// @param changed  called within an event of the loop; the object may be destroyed inside
    PagePulse(MainLoop& loop, WebKitWebView* view, std::function<void(bool responds)> changed);
    ~PagePulse();
    PagePulse(const PagePulse&) = delete;
    PagePulse& operator=(const PagePulse&) = delete;

    void watch(bool watch);
    /// A page begins or has gone: it counts as answering, without a report.
    /// @param present whether there is a page to ask
    void reset(bool present);

private:
    struct Question;

    void tick();
    void ask();

    MainLoop& loop_;
    WebKitWebView* const view_;
    const std::function<void(bool)> changed_;
    bool present_ = false;
    bool responds_ = true;
    /// 0 while the page is not watched.
    TimerId timer_ = 0;
    double last_tick_ = 0;
    /// The question that has not been answered; null for none. Its answer is for this object alone while it is held.
    std::shared_ptr<Question> open_;
};

} // namespace qoro
