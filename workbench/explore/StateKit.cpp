#include "workbench/explore/StateReader.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "kit/CloseGuard.h"
#include "kit/ControlWatch.h"
#include "kit/Mraid.h"
#include "kit/RefusalLog.h"
#include "kit/RequestLimit.h"
#include "platform/QoroAdManager.h"

#include <algorithm>

namespace qoro
{

namespace
{

/// Seconds after which a control watch has forgotten when it called.
constexpr double ControlWatchMemory = 1;

} // namespace

void StateReader::collaborators()
{
    // Where the controller is gone, the platform may be without a scope of its own.
    const PlatformScope scope(platform_);
    const QoroAdManager& manager = platform_.shared<QoroAdManager>();
    out_.add("screens", manager.extra_views_.size());
    for (const auto& each : manager.extra_views_)
        screen("extraView", each.get());
    if (ad_) {
        const auto& browser = ad_->qoroInAppWebViewController;
        screen("browser", browser.get());
        if (browser)
            out_.add("browser.open", browser->screen_ != nullptr);
        const auto& sheet = ad_->openInAppApplicationViewController;
        screen("sheet", sheet.get());
        if (sheet) {
            out_.add("sheet.page", sheet->screen_ != nullptr);
            out_.add("sheet.covered", sheet->covered_);
            out_.add("sheet.returned", sheet->has_returned_);
        }
        screen("store", ad_->qoroAppStoreMockViewController.get());
    }
    out_.add("limited", manager.limit_ != nullptr);
    if (manager.limit_ && whole_) {
        const RequestLimit& limit = *manager.limit_;
        budget("heartbeats", limit.heartbeats_);
        out_.add("requests", limit.others_);
        out_.add("unreported", limit.unreported_);
        if (limit.next_line_ > platform_.loop().now()) {
            out_.add("nextLine", limit.next_line_);
            out_.add("nextLine", std::string_view(limit.address_));
            time_counts();
        }
        timers_[limit.line_] = "requestLimit.line";
    }
}

void StateReader::budget(std::string_view name, const MessageBudget& budget)
{
    if (!whole_)
        return;
    const double now = platform_.loop().now();
    const double left = std::min(budget.at_once_, budget.left_ + (now - budget.last_) * budget.per_second_);
    out_.add(name, left == budget.at_once_);
    if (left == budget.at_once_)
        return;
    out_.add(name, budget.left_);
    out_.add(name, budget.last_);
    time_counts();
}

void StateReader::limit(std::string_view name, const LineLimit& limit)
{
    budget(name, limit.lines_);
    out_.add(name, limit.unreported_);
}

void StateReader::mraid(const Mraid& mraid)
{
    out_.add("mraid.callback", mraid.callback_);
    out_.add("mraid.sent", mraid.sent_);
    out_.add("mraid.watches", mraid.watch_ != nullptr);
    out_.add("mraid.looks", mraid.looks_);
    out_.add("mraid.background", mraid.in_background_);
    out_.add("mraid.customClose", mraid.wants_custom_close_);
    out_.add("mraid.forced", mraid.forced_.has_value());
    if (mraid.forced_) {
        out_.add("mraid.before", mraid.forced_->before);
        out_.add("mraid.now", mraid.forced_->now);
    }
}

void StateReader::control_watch(const ControlWatch& watch)
{
    out_.add("controlWatch.sent", watch.sent_);
    out_.add("controlWatch.looks", watch.looks_);
    out_.add("controlWatch.watches", watch.watch_ != nullptr);
    const bool recent = watch.sent_at_ && platform_.loop().now() - *watch.sent_at_ < ControlWatchMemory;
    if (whole_ && recent) {
        out_.add("controlWatch.sentAt", *watch.sent_at_);
        time_counts();
    }
    timers_[watch.timer_] = "controlWatch.timer";
}

void StateReader::guard(const CloseGuard& guard)
{
    timers_[guard.timer_] = "guard.timer";
    out_.add("guard.shown", guard.is_shown());
    out_.add("guard.background", guard.in_background_);
    out_.add("guard.pageResponds", guard.page_responds_);
    out_.add("guard.watchesPage", guard.watches_page_);
    view("guard.button", guard.button_.node().get());
    if (!whole_)
        return;
    out_.add("guard.looks", guard.looks_);
    out_.add("guard.pageSilent", guard.page_silent_);
    out_.add("guard.controlOwed", guard.control_owed_);
    out_.add("guard.tapped", guard.tapped_);
    out_.add("guard.hiddenAtTap", guard.video_hidden_at_tap_);
    out_.add("guard.endOwed", guard.end_owed_);
    out_.add("guard.turn", guard.turn_);
    const VideoMotion& motion = guard.motion_;
    out_.add("guard.motion", motion.player_ == (ad_ ? ad_->qoroMoviePlayer.identity() : nullptr));
    out_.add("guard.motion", motion.seeks_ == (ad_ ? ad_->qoroMoviePlayer.seekCount() : 0));
    for (const double part : {motion.position_, motion.looked_, motion.run_, motion.played_, motion.still_since_})
        out_.add("guard.motion", part);
    time_counts();
}

} // namespace qoro
