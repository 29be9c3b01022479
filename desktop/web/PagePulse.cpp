#include "desktop/web/PagePulse.h"

#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/Owned.h"
#include "desktop/web/GuardMessages.h"

#include "desktop/web/WebKitFunctions.h"

#include <utility>

namespace qoro
{

namespace
{

constexpr double Interval = 1; // seconds
/// Seconds between two ticks above which the loop itself was blocked: the answer may still be in its queue.
constexpr double HeldUp = 1.5 * Interval;

} // namespace

PagePulse::PagePulse(MainLoop& loop, WebKitWebView* view, std::function<void(bool)> changed)
    : loop_(loop), view_(view), changed_(std::move(changed))
{
}

PagePulse::~PagePulse()
{
    watch(false);
}

void PagePulse::watch(bool watch)
{
    if (watch == (timer_ != 0))
        return;
    if (watch) {
        last_tick_ = loop_.now();
        timer_ = loop_.start_timer(Interval, true, [this] { tick(); });
        return;
    }
    loop_.stop_timer(std::exchange(timer_, 0));
    reset(present_);
}

void PagePulse::reset(bool present)
{
    present_ = present;
    responds_ = true;
    open_.reset();
}

void PagePulse::tick()
{
    const double since = loop_.now() - std::exchange(last_tick_, loop_.now());
    if (!present_ || since > HeldUp)
        return;
    if (!open_)
        ask();
    else if (std::exchange(responds_, false))
        changed_(false);
}

void PagePulse::ask()
{
    open_.emplace(*this);
    const auto answered = open_->guard([](PagePulse& self, GObject* view, GAsyncResult* result) {
        // Any reply counts; there is none if the process has ended.
        if (!adopt(
                webkit_web_view_send_message_to_page_finish(reinterpret_cast<WebKitWebView*>(view), result, nullptr)))
            return;
        self.open_.reset();
        if (!std::exchange(self.responds_, true))
            self.changed_(true);
    });
    webkit_web_view_send_message_to_page(view_, webkit_user_message_new(guard_question, nullptr), nullptr, async_done,
                                         async_data(answered));
}

} // namespace qoro
