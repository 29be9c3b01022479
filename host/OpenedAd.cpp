#include "host/OpenedAd.h"

#include "formats/LogLines.h"
#include "host/AdObserver.h"
#include "host/Rehearsal.h"
#include "host/Session.h"
#include "host/TagPresence.h"
#include "platform/HostCall.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

/// For an ad without steps.
struct NoControls final : SessionControls {
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange&) override {}
};

HostSetup with_delegate(HostSetup host)
{
    host.delegate = true;
    return host;
}

AdEnd end_by(ClosedBy closer)
{
    switch (closer) {
    case ClosedBy::Viewer:
        break;
    case ClosedBy::Page:
        return AdEnd::Page;
    case ClosedBy::Video:
        return AdEnd::Video;
    case ClosedBy::Host:
        return AdEnd::Host;
    }
    return AdEnd::Viewer;
}

} // namespace

std::string_view words_for(AdEnd end)
{
    switch (end) {
    case AdEnd::Viewer:
        return "closed by the viewer";
    case AdEnd::Page:
        return "closed by its page";
    case AdEnd::Video:
        return "closed at its video's end";
    case AdEnd::Host:
        return "closed by the host";
    case AdEnd::Failed:
        break;
    }
    return "not shown";
}

/// Derives the outcome from the events of the ad.
class OpenedAd::Watch final : public Object, public EventSink
{
public:
    Watch(Platform& platform, OnEnd on_end) : platform_(platform), on_end_(std::move(on_end)) {}
    ~Watch() override { leave(); }

    void open(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host);
    void rehearse(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host, Rehearsal rehearsal);
    void close(ClosedBy closer);
    bool leave_screen() { return session_ && session_->leave_screen(); }
    void leave();
    bool has_ended() const { return ended_; }
    /// Whether the host has been notified of the end.
    bool is_reported() const { return reported_; }

private:
    void receive(const Event& event) override;
    void note(const event::AdClosed& close);
    void note(const event::Released&);
    void note(const event::ImpressionSent&) { outcome_.impression_sent = true; }
    void note(const event::ApplicationLeft&);
    void note(const event::AdFailed& failure) { page_failed(failure.error.view()); }
    void note(const event::PageDied& death) { page_failed(death.reason.view()); }
    void note(const event::RequestRefused& refusal);
    void note(const event::PageRefused& refusal);
    void note(const event::FirstPictureShown&) { notify(&AdObserver::first_frame); }
    void note(const event::NotificationPosted& notification);
    void note(const event::PlayerCreated& player);
    void note(const event::PlayerDropped&);
    void note(const event::PlayerSought& seek);
    void note(const event::PlayerFailed& failure);
    void note(const event::AddressOpened& opening) { note_click_through(opening.url.view()); }
    void note(const event::CalendarEventPassed&) { note_click_through(""); }
    void note(const event::BrowserExpanded& browser) { note_click_through(browser.url.view()); }
    void note(const event::MessageSent& message) { note_click_through(message.number.view()); }
    void note(const event::StoreOpened& store) { note_click_through(store.url.view()); }
    /// Every other event leaves the outcome as it is.
    template <typename Other>
    void note(const Other&)
    {
    }
    void note_click_through(std::string_view address);
    void page_failed(std::string_view reason);
    void came_back(const NSNotification& notification);

    /// Calls a function of the observer, if there is one, as a separate event.
    template <typename... Parameters, typename... Arguments>
    void notify(void (AdObserver::*function)(Parameters...), Arguments... arguments);

    void prepare(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host, SessionControls& controls);
    void show();
    void perform(const Step& step, std::size_t n);
    /// Ends the ad if an attempt to open it has shown nothing.
    void fail_unless_shown();

    void video_changed(const NSNotification& notification);
    void video_finished(const NSNotification& notification);
    void video_failed(const std::string& reason);
    std::string why_video_failed() const;
    MPMoviePlayerController player() const;
    /// Adds what the player has played since the last call.
    void count_played();

    void end(AdEnd how);

    Platform& platform_;
    OnEnd on_end_;
    LogSink log_;
    /// Receives every event as well; null when the platform had no sink.
    EventSink* before_ = nullptr;
    AdObserver* observer_ = nullptr;
    bool closes_when_video_fails_ = false;
    /// Whether the ad closes because its video has failed.
    bool fails_ = false;
    /// Whether the ad has sent the viewer out of the application.
    bool is_left_ = false;
    NoControls no_controls_;
    std::unique_ptr<Session> session_;

    AdOutcome outcome_;
    double opened_ = 0;
    bool shows_ = false;
    /// Whether the platform's event sink is this object, or forwards to it.
    bool open_ = false;
    bool ended_ = false;
    /// Whether the host has been notified of the end, so that it may open the next ad.
    bool reported_ = false;
    /// Whether a click-through has been counted in this event.
    bool led_elsewhere_ = false;
    /// Position in seconds from which playback is not counted yet; absent while the video does not play.
    std::optional<double> runs_from_;
};

void OpenedAd::Watch::open(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host)
{
    const UIDeviceOrientation held = platform_.device().orientation();
    prepare(ad, host, no_controls_);
    // The controller has forced the device upright, but the viewer holds it as before.
    if (platform_.device().orientation() != held) {
        platform_.device().force_orientation(held);
        platform_.device_orientation_changed();
    }
    show();
}

void OpenedAd::Watch::rehearse(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host, Rehearsal rehearsal)
{
    prepare(ad, host, rehearsal.controls);
    if (rehearsal.prepared)
        rehearsal.prepared();
    if (rehearsal.created)
        rehearsal.created(session_->controller());
    const auto while_open = [weak = weak_from_this()](auto work) {
        return [weak, work] {
            if (const auto self = std::static_pointer_cast<Watch>(weak.lock()); self && self->session_)
                work(*self);
        };
    };
    const bool steps_open = std::ranges::any_of(
        rehearsal.steps, [](const Step& step) { return std::holds_alternative<OpenStep>(step.what); });
    if (!steps_open)
        platform_.loop().post(while_open([](Watch& self) { self.show(); }));
    const double now = platform_.loop().now();
    for (std::size_t n = 0; n < rehearsal.steps.size(); ++n) {
        const double delay = rehearsal.steps[n].at - now;
        auto perform = while_open([step = std::move(rehearsal.steps[n]), index = rehearsal.first + n](Watch& self) {
            self.perform(step, index);
        });
        if (delay > 0)
            platform_.loop().start_timer(delay, false, std::move(perform));
        else
            platform_.loop().post(std::move(perform));
    }
}

/// Registers the event sink and the observers and creates the session. The ad is not open afterwards.
void OpenedAd::Watch::prepare(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host, SessionControls& controls)
{
    leave_platform(platform_);
    if (const TagPresence& tag = platform_.shared<TagPresence>(); tag.is_open && !tag.opens_ad)
        throw std::logic_error("a tag is open on this platform");
    before_ = platform_.event_sink();
    platform_.set_event_sink(this);
    open_ = true;
    // Registered before the controller: this object counts what was played before the controller reacts.
    platform_.dispatch([this] {
        NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
        notifications.addObserver(action<&Watch::video_changed>(this, "video_changed"),
                                  MPMoviePlayerPlaybackStateDidChangeNotification);
        notifications.addObserver(action<&Watch::video_finished>(this, "video_finished"),
                                  MPMoviePlayerPlaybackDidFinishNotification);
        notifications.addObserver(action<&Watch::came_back>(this, "came_back"),
                                  UIApplicationDidBecomeActiveNotification);
    });
    log_ = host.log;
    observer_ = host.observer;
    closes_when_video_fails_ = host.close_when_video_fails;
    session_ = std::make_unique<Session>(platform_, controls, host, ad);
    opened_ = platform_.loop().now();
}

void OpenedAd::Watch::show()
{
    opened_ = platform_.loop().now();
    platform_.dispatch([this] { session_->open(0); });
    fail_unless_shown();
}

void OpenedAd::Watch::perform(const Step& step, std::size_t n)
{
    const bool opens = std::holds_alternative<OpenStep>(step.what);
    if (opens && !shows_)
        opened_ = platform_.loop().now();
    session_->perform(step, n);
    if (opens)
        fail_unless_shown();
}

void OpenedAd::Watch::fail_unless_shown()
{
    if (!shows_ && !ended_)
        end(AdEnd::Failed);
}

void OpenedAd::Watch::close(ClosedBy closer)
{
    if (!ended_ && session_)
        session_->close(closer);
}

/// Closes the ad without a report of its end, and restores the previous event sink. No effect a second time.
void OpenedAd::Watch::leave()
{
    if (!std::exchange(open_, false))
        return;
    on_end_ = nullptr;
    log_ = nullptr;
    observer_ = nullptr;
    close(ClosedBy::Host);
    platform_.dispatch([this] { NSNotificationCenter::defaultCenter().removeObserver(this); });
    session_.reset();
    if (platform_.event_sink() == this)
        platform_.set_event_sink(before_);
}

// ------------------------------------------------------------------------------------------------------------- events

void OpenedAd::Watch::receive(const Event& event)
{
    // What throws is not called again: it would also throw on the report.
    if (before_ && !call_host("EventSink", nullptr, [&] { before_->receive(event); }))
        before_ = nullptr;
    if (log_ && !call_host("HostSetup::log", nullptr, [&] { pass_log_line(log_, event); }))
        log_ = nullptr;
    if (!ended_)
        std::visit([this](const auto& each) { note(each); }, event);
}

void OpenedAd::Watch::note(const event::AdClosed& close)
{
    // The controller still has its player.
    count_played();
    const bool nothing_played = std::ranges::all_of(outcome_.videos, [](const auto& each) { return each.played == 0; });
    end(fails_ && nothing_played ? AdEnd::Failed : end_by(close.by));
}

void OpenedAd::Watch::note(const event::Released&)
{
    // The controller of an earlier ad may end late.
    if (session_ && !session_->living())
        end(AdEnd::Host);
}

void OpenedAd::Watch::note(const event::NotificationPosted& notification)
{
    if (notification.name.view() != "NotifyOpenVideoExResult")
        return;
    const NSDictionary result = notification.info->dictionary();
    shows_ = result["Result"].string().isEqualToString("1");
    if (shows_)
        notify(&AdObserver::shown);
    else if (result["e"])
        outcome_.error = result["e"].string().text();
}

void OpenedAd::Watch::note(const event::PlayerCreated& player)
{
    count_played();
    runs_from_.reset();
    outcome_.videos.emplace_back().address = player.url.view();
}

void OpenedAd::Watch::note(const event::PlayerDropped&)
{
    count_played();
    runs_from_.reset();
}

void OpenedAd::Watch::note(const event::PlayerSought& seek)
{
    count_played();
    if (runs_from_)
        runs_from_ = std::clamp(seek.to, 0.0, player().duration());
}

void OpenedAd::Watch::note(const event::PlayerFailed& failure)
{
    if (!outcome_.videos.empty())
        outcome_.videos.back().error = failure.reason.view();
}

void OpenedAd::Watch::note(const event::ApplicationLeft&)
{
    ++outcome_.departures;
    is_left_ = true;
    notify(&AdObserver::departed);
}

void OpenedAd::Watch::came_back(const NSNotification&)
{
    if (std::exchange(is_left_, false))
        notify(&AdObserver::returned);
}

void OpenedAd::Watch::note(const event::RequestRefused& refusal)
{
    notify(&AdObserver::refused, std::string("request"), std::string(refusal.url.view()));
}

void OpenedAd::Watch::note(const event::PageRefused& refusal)
{
    notify(&AdObserver::refused, std::string(refusal.kind.view()), std::string(refusal.detail.view()));
}

void OpenedAd::Watch::page_failed(std::string_view reason)
{
    outcome_.page_error = reason;
    notify(&AdObserver::page_failed, std::string(reason));
}

template <typename... Parameters, typename... Arguments>
void OpenedAd::Watch::notify(void (AdObserver::*function)(Parameters...), Arguments... arguments)
{
    if (!observer_)
        return;
    platform_.loop().post([weak = weak_from_this(), function, arguments...] {
        const auto self = std::static_pointer_cast<Watch>(weak.lock());
        if (self && self->observer_)
            call_host("AdObserver", &self->platform_, [&] { (self->observer_->*function)(arguments...); });
    });
}

/// One touch may do two things, such as a message and a page.
void OpenedAd::Watch::note_click_through(std::string_view address)
{
    if (std::exchange(led_elsewhere_, true))
        return;
    ++outcome_.click_throughs;
    notify(&AdObserver::clicked_through, std::string(address));
    platform_.loop().post([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            static_cast<Watch&>(*self).led_elsewhere_ = false;
    });
}

// ----------------------------------------------------------------------------------------------------------- the video

MPMoviePlayerController OpenedAd::Watch::player() const
{
    const auto controller = session_ ? session_->living() : nullptr;
    return controller ? controller->qoroMoviePlayer : MPMoviePlayerController();
}

void OpenedAd::Watch::count_played()
{
    const MPMoviePlayerController video = player();
    if (!video || outcome_.videos.empty())
        return;
    PlayedVideo& played = outcome_.videos.back();
    if (video.duration() > 0)
        played.duration = video.duration();
    if (!runs_from_)
        return;
    const double now = video.currentPlaybackTime();
    played.played += std::max(now - *runs_from_, 0.0);
    runs_from_ = now;
}

void OpenedAd::Watch::video_changed(const NSNotification&)
{
    if (ended_)
        return;
    count_played();
    const MPMoviePlayerController video = player();
    const bool runs = video.playbackState() == MPMoviePlaybackStatePlaying;
    if (!runs)
        runs_from_.reset();
    else if (!runs_from_) {
        runs_from_ = video.currentPlaybackTime();
        notify(&AdObserver::playing);
    }
}

void OpenedAd::Watch::video_finished(const NSNotification& notification)
{
    if (ended_ || outcome_.videos.empty())
        return;
    count_played();
    runs_from_.reset();
    PlayedVideo& video = outcome_.videos.back();
    switch (notification.userInfo[MPMoviePlayerPlaybackDidFinishReasonUserInfoKey].intValue()) {
    case MPMovieFinishReasonPlaybackEnded:
        video.reached_end = true;
        break;
    case MPMovieFinishReasonPlaybackError:
        if (!video.error)
            video.error.emplace();
        video_failed(*video.error);
        break;
    default:
        break;
    }
}

void OpenedAd::Watch::video_failed(const std::string& reason)
{
    notify(&AdObserver::video_failed, reason);
    if (!closes_when_video_fails_)
        return;
    // After the controller has received the failure.
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<Watch>(weak.lock());
        if (!self || self->ended_ || !self->session_)
            return;
        self->fails_ = true;
        self->close(ClosedBy::Host);
    });
}

std::string OpenedAd::Watch::why_video_failed() const
{
    const std::string reason = outcome_.videos.back().error.value_or("");
    return "the video cannot be played" + (reason.empty() ? "" : ": " + reason);
}

// ------------------------------------------------------------------------------------------------------------- the end

void OpenedAd::Watch::end(AdEnd how)
{
    ended_ = true;
    outcome_.end = how;
    outcome_.lasted = platform_.loop().now() - opened_;
    if (how == AdEnd::Failed && !outcome_.error)
        outcome_.error = fails_ ? why_video_failed() : "the ad names no video";
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<Watch>(weak.lock());
        if (!self)
            return;
        self->reported_ = true;
        if (AdObserver* observer = std::exchange(self->observer_, nullptr))
            call_host("AdObserver::closed", &self->platform_, [&] { observer->closed(self->outcome_); });
        if (const OnEnd on_end = std::exchange(self->on_end_, nullptr))
            call_host("OpenedAd::OnEnd", &self->platform_, [&] { on_end(self->outcome_); });
    });
}

// ----------------------------------------------------------------------------------------------------------- OpenedAd

OpenedAd::OpenedAd(Platform& platform, const std::shared_ptr<QoroVideoAd>& ad, OnEnd on_end, HostSetup host)
    : watch_(std::make_shared<Watch>(platform, std::move(on_end)))
{
    watch_->open(ad, with_delegate(std::move(host)));
}

OpenedAd::OpenedAd(Platform& platform, const std::shared_ptr<QoroVideoAd>& ad, OnEnd on_end, const HostSetup& host,
                   Rehearsal rehearsal)
    : watch_(std::make_shared<Watch>(platform, std::move(on_end)))
{
    watch_->rehearse(ad, host, std::move(rehearsal));
}

OpenedAd::~OpenedAd()
{
    watch_->leave();
}

void OpenedAd::close(ClosedBy closer)
{
    watch_->close(closer);
}

bool OpenedAd::leave_screen()
{
    return watch_->leave_screen();
}

void OpenedAd::leave_platform(Platform& platform)
{
    auto* const last = dynamic_cast<Watch*>(platform.event_sink());
    if (!last)
        return;
    if (!last->is_reported())
        throw std::logic_error("another ad is open on this platform");
    last->leave();
}

bool OpenedAd::has_ended() const
{
    return watch_->has_ended();
}

} // namespace qoro
