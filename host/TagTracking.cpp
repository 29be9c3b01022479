#include "host/TagTracking.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "platform/QoroAdManager.h"
#include "vast/CreativeChoice.h"
#include "vast/Texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds by which a position may miss its mark.
constexpr double Tolerance = 1e-3;
/// Least seconds until a mark is looked for, for a player whose time is behind the clock.
constexpr double Again = 0.02;
/// Seconds of continuous playing after which the ad counts as viewed, with all of its pixels on the screen (MRC,
/// Viewable Ad Impression Measurement Guidelines: half of the pixels for two seconds of video).
constexpr double ViewableAfter = 2;

/// A video that plays from before this many seconds plays from its start.
constexpr double Beginning = 0.5;
/// Seconds without a picture after which a viewer who closes the ad has waited for it in vain.
constexpr double InVain = 15;

// The standard's codes.
constexpr int GeneralError = 400;
constexpr int FileNotFound = 401;
constexpr int FileTimedOut = 402;
constexpr int FileNotDisplayed = 405;
constexpr int InteractiveNotExecuted = 409;
constexpr int VerificationNotRun = 410;
constexpr int CompanionNotFetched = 603;
constexpr int CompanionNotSupported = 604;
/// Reason of verificationNotExecuted: the code is not supported.
constexpr int VerificationNotSupported = 2;

constexpr std::array<std::pair<std::string_view, double>, 3> Quartiles{
    {{"firstQuartile", 0.25}, {"midpoint", 0.5}, {"thirdQuartile", 0.75}}};

/// The code for a player's reason. A player without reasons cannot display the file.
int code_of(std::string_view failure)
{
    constexpr std::array<std::pair<std::string_view, int>, 5> Reasons{{{"HTTP status", FileNotFound},
                                                                       {"can't be reached", FileNotFound},
                                                                       {"does not answer", FileTimedOut},
                                                                       {"GStreamer has no element", GeneralError},
                                                                       {"there is no folder", GeneralError}}};
    const auto* const reason = std::ranges::find_if(
        Reasons, [failure](const auto& each) { return failure.find(each.first) != std::string_view::npos; });
    return reason == Reasons.end() ? FileNotDisplayed : reason->second;
}

/// Whole points.
int rounded(double points)
{
    return static_cast<int>(std::lround(points));
}

} // namespace

TagTracking::TagTracking(Platform& platform, vast::ResolvedAd ad, TagMacros macros, OnFailure on_failure)
    : platform_(platform), ad_(std::move(ad)), macros_(std::move(macros)), on_failure_(std::move(on_failure))
{
    for (const vast::Tracker& tracker : ad_.ad.linear->trackers)
        if (!tracker.address.empty() && !tracker.offset)
            trackers_[tracker.event].push_back(tracker.address);
}

TagTracking::~TagTracking()
{
    disarm();
}

void TagTracking::attach(const std::shared_ptr<QoroVideoWebViewController>& controller)
{
    controller_ = controller;
    if (!controller)
        return;
    platform_.dispatch([&] {
        NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
        notifications.addObserver(action<&TagTracking::load_state_changed>(this, "load_state_changed"),
                                  MPMoviePlayerLoadStateDidChangeNotification);
        notifications.addObserver(action<&TagTracking::playback_state_changed>(this, "playback_state_changed"),
                                  MPMoviePlayerPlaybackStateDidChangeNotification);
        notifications.addObserver(action<&TagTracking::finished>(this, "finished"),
                                  MPMoviePlayerPlaybackDidFinishNotification);
        for (const UIButton& button : {controller->btnActionOne, controller->btnActionTwo})
            button.addTarget(action<&TagTracking::action_button_tapped>(this, "action_button_tapped"));
        controller->btnScreenScale.addTarget(action<&TagTracking::scale_tapped>(this, "scale_tapped"));
        if (const vast::Icon* icon = vast::choose_icon(ad_.ad.linear->icons); icon && !icon->click_through.empty())
            controller->btnBrandIcon.addTarget(action<&TagTracking::icon_tapped>(this, "icon_tapped"));
    });
}

void TagTracking::receive(const Event& event)
{
    if (!closed_)
        std::visit([this](const auto& each) { note(each); }, event);
}

// ----------------------------------------------------------------------------------------------------------- the video

void TagTracking::note(const event::PlayerCreated& player)
{
    const std::string_view address = player.url.view();
    if (video_.empty()) {
        video_ = address;
        begin();
    }
    foreign_ = address != video_;
    disarm();
    in_view_from_.reset();
    run_from(0);
}

/// The ad is open.
void TagTracking::begin()
{
    begun_ = platform_.loop().now();
    for (const vast::Verification& verification : ad_.ad.verifications)
        send("verificationNotExecuted", verification.not_executed,
             {.kind = vast::AddressKind::VerificationNotExecuted, .reason = VerificationNotSupported});
    if (!ad_.ad.verifications.empty())
        send_error(VerificationNotRun);
    if (std::ranges::find(ad_.ad.ignored, "InteractiveCreativeFile", &vast::Ignored::element) != ad_.ad.ignored.end())
        send_error(InteractiveNotExecuted);
    if (!ad_.ad.companions.empty() && !vast::choose_companion(ad_.ad.companions).chosen)
        send_error(CompanionNotSupported);
}

void TagTracking::load_state_changed(const NSNotification&)
{
    if (!closed_ && !foreign_ && (player().loadState() & MPMovieLoadStatePlayable) != 0)
        send_once("loaded");
}

void TagTracking::note(const event::FirstPictureShown&)
{
    if (foreign_ || std::exchange(shown_, true))
        return;
    // A player may show the picture before it reports that it is ready.
    send_once("loaded");
    send("impression", ad_.ad.impressions);
    send_once("creativeView");
    show_icon();
    if (!platform_.device().facts().screen)
        send("viewUndetermined", ad_.ad.viewable.undetermined);
    if (player().playbackState() == MPMoviePlaybackStatePlaying)
        started();
}

/// The icon is in view if it could be fetched and its bar is shown.
void TagTracking::show_icon()
{
    const vast::Icon* const icon = vast::choose_icon(ad_.ad.linear->icons);
    const auto controller = controller_.lock();
    if (!icon || !controller || !controller->btnBrandIcon.backgroundImage())
        return;
    if (controller->btnBrandIcon.isHidden() || controller->viewTopBackground.isHidden())
        return;
    if (std::ranges::find(sent_, "iconView") != sent_.end())
        return;
    sent_.push_back("iconView");
    send("iconView", icon->view_tracking);
}

void TagTracking::playback_state_changed(const NSNotification&)
{
    if (closed_ || foreign_)
        return;
    const MPMoviePlayerController video = player();
    if (video.playbackState() == MPMoviePlaybackStatePlaying) {
        if (shown_)
            started();
        return;
    }
    if (started_)
        reach();
    disarm();
    in_view_from_.reset();
    // The player also pauses at the end, and may while it seeks.
    if (video.playbackState() == MPMoviePlaybackStatePaused && started_ && !paused_ && !is_interrupted() &&
        video.currentPlaybackTime() < video.duration() - Tolerance) {
        paused_ = true;
        send("pause");
    }
}

/// Whether a seek is under way, so that a pause is not the viewer's.
bool TagTracking::is_interrupted() const
{
    const auto controller = controller_.lock();
    return controller && controller->qoroMoviePlayerStatus == QoroMoviePlayerStatusSeeking;
}

/// The video plays, and is seen.
void TagTracking::started()
{
    const MPMoviePlayerController video = player();
    recovered_ = true;
    if (!std::exchange(started_, true)) {
        send_once("start");
    } else if (std::exchange(at_end_, false)) {
        run_from(video.currentPlaybackTime());
        send("rewind");
    } else if (std::exchange(paused_, false)) {
        send("resume");
    }
    paused_ = false;
    if (const double duration = video.duration() > 0 ? video.duration() : ad_.ad.linear->duration.value_or(0);
        duration > 0 && !std::exchange(has_marks_, true))
        set_marks(duration);
    if (!in_view_from_ && platform_.device().facts().screen)
        in_view_from_ = video.currentPlaybackTime();
    show_icon();
    reach();
    arm();
}

void TagTracking::set_marks(double duration)
{
    for (const auto& [event, share] : Quartiles)
        if (const auto found = trackers_.find(event); found != trackers_.end())
            marks_.push_back({duration * share, event, found->second});
    for (const vast::Tracker& tracker : ad_.ad.linear->trackers) {
        if (!tracker.offset || tracker.address.empty())
            continue;
        const double at = *tracker.offset->seconds(duration);
        if (at <= duration)
            marks_.push_back({at, "progress", {tracker.address}});
    }
    std::ranges::stable_sort(marks_, {}, &Mark::at);
}

/// A jump to a position. What it leaves out has not been played.
void TagTracking::run_from(double position)
{
    // A player reports a replay when it has begun.
    if (position < Beginning)
        position = 0;
    if (position < played_from_ - Tolerance || position > played_to_ + Tolerance)
        played_from_ = played_to_ = position;
}

/// Starts the timer for the next position that matters.
void TagTracking::arm()
{
    disarm();
    const MPMoviePlayerController video = player();
    if (closed_ || foreign_ || video.playbackState() != MPMoviePlaybackStatePlaying)
        return;
    const double position = video.currentPlaybackTime();
    double next = HUGE_VAL;
    for (const Mark& mark : marks_)
        if (!mark.sent && mark.at > position + Tolerance) {
            next = mark.at;
            break;
        }
    if (!was_viewable_ && in_view_from_)
        next = std::min(next, *in_view_from_ + ViewableAfter);
    if (next == HUGE_VAL)
        return;
    timer_ = platform_.loop().start_timer(std::max(next - position, Again), false, [this] {
        timer_ = 0;
        reach();
        arm();
    });
}

void TagTracking::disarm()
{
    platform_.loop().stop_timer(std::exchange(timer_, 0));
}

/// Sends what is due at the present position: the standard's events occur where the video has been played at normal
/// speed up to their position.
void TagTracking::reach()
{
    const double position = player().currentPlaybackTime();
    played_to_ = std::max(played_to_, position);
    for (Mark& mark : marks_) {
        if (mark.at > played_to_ + Tolerance)
            break;
        if (mark.at >= played_from_ - Tolerance && !std::exchange(mark.sent, true))
            send(mark.event, mark.addresses);
    }
    if (!was_viewable_ && in_view_from_ && position + Tolerance >= *in_view_from_ + ViewableAfter) {
        was_viewable_ = true;
        send("viewable", ad_.ad.viewable.viewable);
    }
}

void TagTracking::note(const event::PlayerSought& seek)
{
    if (foreign_)
        return;
    const double to = std::max(seek.to, 0.0);
    if (!started_)
        return run_from(to);
    if (!at_end_ && player().playbackState() == MPMoviePlaybackStatePlaying)
        reach();
    in_view_from_.reset();
    disarm();
    // A seek back after the end is reported when the video plays again. The controller's own, to where the viewer left
    // the application, is no rewind.
    const auto controller = controller_.lock();
    const bool resumes = controller && controller->qoroMoviePlayerStatus == QoroMoviePlayerStatusResuming;
    if (!resumes && !at_end_ && to < player().currentPlaybackTime() - Tolerance)
        send("rewind");
    run_from(to);
    // The player is at the new position when this event has ended.
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<TagTracking>(weak.lock());
        if (self && !self->closed_ && self->player().playbackState() == MPMoviePlaybackStatePlaying)
            self->started();
    });
}

void TagTracking::finished(const NSNotification& notification)
{
    if (closed_ || foreign_)
        return;
    const int reason = notification.userInfo[MPMoviePlayerPlaybackDidFinishReasonUserInfoKey].intValue();
    if (reason == MPMovieFinishReasonPlaybackEnded)
        ended();
    else if (reason == MPMovieFinishReasonPlaybackError)
        playback_failed();
}

void TagTracking::ended()
{
    reach();
    disarm();
    at_end_ = true;
    in_view_from_.reset();
    // Only an ad that was played from its start has been played whole.
    if (started_ && played_from_ <= Tolerance && !std::exchange(completed_, true))
        send_once("complete");
}

/// The controller plays again by itself, which helps a video that has begun.
void TagTracking::playback_failed()
{
    disarm();
    in_view_from_.reset();
    const int code = code_of(failure_);
    send_error(code);
    if (!std::exchange(recovered_, false) && on_failure_)
        std::exchange(on_failure_, nullptr)(code, failure_.empty() ? "the video cannot be played" : failure_);
}

void TagTracking::note(const event::ScriptEvent& event)
{
    if (event.event.view() != "video_volumechange")
        return;
    const bool muted = event.data->dictionary()["e"].dictionary()["volume"].string().isEqualToString("0");
    // Before the start, the report is of the volume that the ad begins with.
    if (std::exchange(muted_, muted) != muted && started_)
        send(muted ? "mute" : "unmute");
}

// ---------------------------------------------------------------------------------------------------------- the viewer

void TagTracking::note(const event::AdClosed& close)
{
    closed_ = true;
    disarm();
    if (shown_ && !was_viewable_ && platform_.device().facts().screen)
        send("notViewable", ad_.ad.viewable.not_viewable);
    const bool by_viewer = close.by == ClosedBy::Viewer || close.by == ClosedBy::Page;
    if (!shown_ && close.by == ClosedBy::Viewer && platform_.loop().now() - begun_ >= InVain)
        send_error(FileTimedOut);
    if (!shown_ || !by_viewer)
        return;
    if (!completed_ && ad_.ad.linear->skip_offset) {
        send_once("skip");
        return;
    }
    send_once("closeLinear");
    send_once("close");
}

void TagTracking::action_button_tapped()
{
    button_tapped_ = true;
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<TagTracking>(weak.lock());
        if (self && std::exchange(self->button_tapped_, false))
            self->send("customClick", self->ad_.ad.linear->custom_click);
    });
}

void TagTracking::icon_tapped()
{
    const vast::Icon* const icon = vast::choose_icon(ad_.ad.linear->icons);
    const auto controller = controller_.lock();
    if (!icon || !controller)
        return;
    icon_tapped_ = true;
    controller->openInAppAction(
        NSDictionary{{"u", expanded(icon->click_through, {})}, {"show_nav_bar", true}, {"show_prog_bar", true}});
    icon_tapped_ = false;
}

void TagTracking::scale_tapped()
{
    const auto controller = controller_.lock();
    if (!controller)
        return;
    // VAST 2 and 3 have names of their own for the two.
    send(controller->bIsFullScreen ? "playerExpand" : "playerCollapse");
    send(controller->bIsFullScreen ? "fullscreen" : "exitFullscreen");
}

void TagTracking::note(const event::BrowserExpanded&)
{
    clicked();
}

void TagTracking::note(const event::AddressOpened&)
{
    clicked();
}

/// A click-through by one of the ad's own controls.
void TagTracking::clicked()
{
    const vast::Linear& linear = *ad_.ad.linear;
    if (icon_tapped_)
        send("iconClick", vast::choose_icon(linear.icons)->click_tracking);
    else if (std::exchange(button_tapped_, false))
        send("clickTracking", linear.click_tracking, {.kind = vast::AddressKind::ClickTracking});
}

// ------------------------------------------------------------------------------------------------------------ the page

void TagTracking::note(const event::PageLoaded&)
{
    if (std::exchange(page_loaded_, true))
        return;
    const auto& companions = ad_.ad.companions;
    if (const auto choice = vast::choose_companion(companions); choice.chosen)
        send("companionView", companions[*choice.chosen].creative_view);
}

void TagTracking::note(const event::PageError& error)
{
    const auto& companions = ad_.ad.companions;
    const auto choice = vast::choose_companion(companions);
    if (error.kind.view() != "resource" || !choice.chosen)
        return;
    const vast::Companion& companion = companions[*choice.chosen];
    if (vast::requestable(companion.resources[choice.resource].text) == error.file.view())
        send_error(CompanionNotFetched);
}

void TagTracking::note(const event::MraidOpened&)
{
    const auto& companions = ad_.ad.companions;
    if (const auto choice = vast::choose_companion(companions); choice.chosen)
        send("companionClick", companions[*choice.chosen].click_tracking);
    else
        send("clickTracking", ad_.ad.linear->click_tracking, {.kind = vast::AddressKind::ClickTracking});
}

// -------------------------------------------------------------------------------------------------------- the requests

void TagTracking::send(std::string_view event)
{
    if (const auto found = trackers_.find(event); found != trackers_.end())
        send(event, found->second);
}

void TagTracking::send_once(std::string_view event)
{
    if (std::ranges::find(sent_, event) != sent_.end())
        return;
    sent_.push_back(event);
    send(event);
}

void TagTracking::send_error(int code)
{
    if (std::ranges::find(errors_sent_, code) != errors_sent_.end())
        return;
    errors_sent_.push_back(code);
    send("error", ad_.ad.errors, {.kind = vast::AddressKind::Error, .error_code = code});
}

void TagTracking::send(std::string_view event, const std::vector<std::string>& addresses, const Detail& detail)
{
    if (addresses.empty())
        return;
    platform_.dispatch([&] {
        for (const std::string& address : addresses)
            QoroAdManager::sharedInstance().send_vast_tracker(expanded(address, detail), event);
    });
}

/// The controller's own macros, then VAST's.
std::string TagTracking::expanded(const std::string& address, const Detail& detail) const
{
    const auto controller = controller_.lock();
    vast::MacroValues values = macros_.values;
    values.request.kind = detail.kind;
    values.request.error_code = detail.error_code;
    values.request.reason = detail.reason;
    if (macros_.clock)
        values.request.time = macros_.clock();
    values.player.asset = ad_.ad.linear->media_files[*ad_.media.chosen].address;
    if (const MPMoviePlayerController video = player(); video && started_)
        values.player.ad_time = video.currentPlaybackTime();
    if (controller) {
        const CGRect size = controller->qoroMoviePlayer.view().frame();
        values.player.width = rounded(size.width);
        values.player.height = rounded(size.height);
        values.player.state =
            vast::MacroValues::Player::State{.muted = muted_, .fullscreen = !controller->bIsPortraitNow};
    }
    const std::string own = controller ? controller->getTrackingUniqueInfo(address).text() : address;
    return vast::requestable(vast::expand(own, values));
}

MPMoviePlayerController TagTracking::player() const
{
    const auto controller = controller_.lock();
    return controller ? controller->qoroMoviePlayer : MPMoviePlayerController();
}

} // namespace qoro
