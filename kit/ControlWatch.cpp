#include "kit/ControlWatch.h"

#include "platform/QoroPhoneGapViewController.h"

#include <utility>

namespace qoro
{

namespace
{
/// Least time between two calls of the listeners, in seconds.
constexpr double Interval = 0.1;
/// Seconds: rounding tolerance for differences of loop times.
constexpr double Rounding = 1e-6;
} // namespace

ControlWatch::ControlWatch(QoroPhoneGapViewController& ad, Platform& platform, std::function<NSArray()> rects)
    : ad_(ad), platform_(platform), rects_(std::move(rects))
{
}

ControlWatch::~ControlWatch()
{
    platform_.loop().stop_timer(timer_);
}

void ControlWatch::begin()
{
    sent_ = nullptr;
    if (!watch_)
        watch_ = std::make_unique<ViewWatch>(platform_, [this] { look_later(); });
    look_later();
}

/// Looks after the current event, when the change to the views is complete.
void ControlWatch::look_later()
{
    if (!watch_ || timer_ != 0 || std::exchange(looks_, true))
        return;
    platform_.loop().post([weak = weak_from_this()] {
        if (const auto self = std::static_pointer_cast<ControlWatch>(weak.lock())) {
            self->looks_ = false;
            self->look();
        }
    });
}

void ControlWatch::look()
{
    if (!watch_ || timer_ != 0)
        return;
    if (!ad_.dicEventListener[Event]) {
        watch_.reset();
        return;
    }
    const double now = platform_.loop().now();
    if (const double wait = sent_at_ ? *sent_at_ + Interval - now : 0; wait > Rounding) {
        timer_ = platform_.loop().start_timer(wait, false, [this] {
            const auto self = shared_from_this();
            timer_ = 0;
            look();
        });
        return;
    }
    const Value rects(rects_());
    if (sent_ == rects)
        return;
    sent_ = rects;
    sent_at_ = now;
    ad_.listenerCallbackToJS(Event, NSDictionary{{"e", NSDictionary{{"controls", rects}}}});
}

} // namespace qoro
