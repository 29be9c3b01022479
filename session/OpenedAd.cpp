#include "session/OpenedAd.h"

#include "session/Session.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

/// No step asks for anything here.
struct NoControls final : SessionControls {
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange&) override {}
    void leave_app() override {}
};

/// What a witnessed event says under a name; empty when it says no text there.
std::string_view text_in(std::initializer_list<Field> fields, std::string_view key)
{
    for (const Field& field : fields)
        if (field.key == key)
            if (const auto* text = std::get_if<std::string_view>(&field.content))
                return *text;
    return "";
}

HostSetup with_delegate(HostSetup host)
{
    host.delegate = true;
    return host;
}

bool leads_elsewhere(std::string_view what, std::string_view does)
{
    return what == "openURL" || (what == "super" && does == "createCalendarEvent") ||
           (what == "kit" && (does == "browser.expand" || does == "sendSms" || does == "openStore"));
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
    return "failed";
}

/// Hears what the ad's collaborators hear, and draws the outcome from it.
class OpenedAd::Watch final : public Object, public Witness
{
public:
    Watch(Platform& platform, OnEnd on_end) : platform_(platform), on_end_(std::move(on_end)) {}

    void open(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host);
    void close();
    void leave();
    bool has_ended() const { return ended_; }

private:
    void tell(std::string_view what, std::initializer_list<Field> fields) override;
    void hear(std::string_view what, std::initializer_list<Field> fields);
    void hear_player(std::string_view does, std::initializer_list<Field> fields);
    void hear_opening(const NSDictionary& result);
    void hear_elsewhere();

    void video_changed(const NSNotification& notification);
    void video_finished(const NSNotification& notification);
    MPMoviePlayerController player() const;
    /// What the player has run since the last look is counted.
    void count_played();

    void close_ad();
    void end(AdEnd how);

    Platform& platform_;
    OnEnd on_end_;
    Witness* const before_ = platform_.witness();
    NoControls controls_;
    std::unique_ptr<Session> session_;

    AdOutcome outcome_;
    double opened_ = 0;
    bool shows_ = false;
    bool ended_ = false;

    /// Who closes, as of the last close that began; it may stop at hiding the video.
    AdEnd closer_ = AdEnd::Viewer;
    bool host_closes_ = false;
    /// The page's script has just asked for the close.
    bool page_closes_ = false;
    /// The player's report of its end is being heard.
    bool video_ends_ = false;
    /// A touch has led elsewhere in this event.
    bool led_elsewhere_ = false;
    /// Seconds of the video at which what is not counted yet began; absent while nothing runs.
    std::optional<double> runs_from_;
};

void OpenedAd::Watch::open(const std::shared_ptr<QoroVideoAd>& ad, const HostSetup& host)
{
    if (dynamic_cast<Watch*>(before_))
        throw std::logic_error("the platform has an opened ad already");
    platform_.set_witness(this);
    // Before the controller's own: what it does with a piece of news finds it heard here.
    platform_.dispatch([this] {
        NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
        notifications.addObserver(action<&Watch::video_changed>(this, "video_changed"),
                                  MPMoviePlayerPlaybackStateDidChangeNotification);
        notifications.addObserver(action<&Watch::video_finished>(this, "video_finished"),
                                  MPMoviePlayerPlaybackDidFinishNotification);
    });
    session_ = std::make_unique<Session>(platform_, controls_, host, ad);
    opened_ = platform_.loop().now();
    platform_.dispatch([this] { session_->open(0); });
    if (!shows_)
        end(AdEnd::Failed);
}

void OpenedAd::Watch::close()
{
    if (ended_)
        return;
    host_closes_ = true;
    close_ad();
    host_closes_ = false;
}

/// From here on nobody is told.
void OpenedAd::Watch::leave()
{
    on_end_ = nullptr;
    close();
    platform_.dispatch([this] { NSNotificationCenter::defaultCenter().removeObserver(this); });
    session_.reset();
    if (platform_.witness() == this)
        platform_.set_witness(before_);
}

// ------------------------------------------------------------------------------------------------------ what is heard

void OpenedAd::Watch::tell(std::string_view what, std::initializer_list<Field> fields)
{
    if (before_)
        before_->tell(what, fields);
    if (!ended_)
        hear(what, fields);
}

void OpenedAd::Watch::hear(std::string_view what, std::initializer_list<Field> fields)
{
    const std::string_view does = text_in(fields, "do");
    const bool page_asked = std::exchange(page_closes_, what == "super" && does == "MRAIDClose");
    if (what == "js" && text_in(fields, "event") == "onhide") {
        // Every close begins with this event. The viewer is left when it is none of the others: the ad's own controls
        // are the only further way to close it.
        closer_ = host_closes_ ? AdEnd::Host : page_asked ? AdEnd::Page : video_ends_ ? AdEnd::Video : AdEnd::Viewer;
    } else if (what == "super" && does == "updateStatusbar") {
        // The host gets its status bar back: the close went beyond hiding the video, and the player is still there.
        count_played();
        end(closer_);
    } else if (what == "super" && does == "sendImpression") {
        outcome_.impression_sent = true;
    } else if (what == "super" && does == "qoroLeaveApplication") {
        ++outcome_.departures;
    } else if (what == "kit" && does == "adFailed") {
        outcome_.page_error = text_in(fields, "error");
    } else if (what == "web" && does == "died") {
        outcome_.page_error = text_in(fields, "reason");
    } else if (what == "notification" && text_in(fields, "name") == "NotifyOpenVideoExResult") {
        for (const Field& field : fields)
            if (const auto* info = std::get_if<const Value*>(&field.content); info && field.key == "info")
                hear_opening((*info)->dictionary());
    } else if (what == "player") {
        hear_player(does, fields);
    } else if (leads_elsewhere(what, does)) {
        hear_elsewhere();
    }
}

void OpenedAd::Watch::hear_player(std::string_view does, std::initializer_list<Field> fields)
{
    if (does == "create") {
        count_played();
        runs_from_.reset();
        outcome_.videos.emplace_back().address = text_in(fields, "url");
    } else if (does == "drop") {
        count_played();
        runs_from_.reset();
    } else if (does == "seek") {
        // Told before the player jumps.
        count_played();
        for (const Field& field : fields)
            if (const auto* to = std::get_if<double>(&field.content); to && field.key == "to" && runs_from_)
                runs_from_ = std::clamp(*to, 0.0, player().duration());
    } else if (does == "failed" && !outcome_.videos.empty()) {
        outcome_.videos.back().error = text_in(fields, "reason");
    }
}

void OpenedAd::Watch::hear_opening(const NSDictionary& result)
{
    shows_ = result["Result"].string().isEqualToString("1");
    if (!shows_ && result["e"])
        outcome_.error = result["e"].string().text();
}

/// One touch may do two things, such as a message and a page.
void OpenedAd::Watch::hear_elsewhere()
{
    if (std::exchange(led_elsewhere_, true))
        return;
    ++outcome_.click_throughs;
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
    else if (!runs_from_)
        runs_from_ = video.currentPlaybackTime();
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
        if (const auto controller = session_->living(); !controller || !controller->ad().bIsAutoClose)
            break;
        video_ends_ = true;
        platform_.loop().post([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                static_cast<Watch&>(*self).video_ends_ = false;
        });
        break;
    case MPMovieFinishReasonPlaybackError:
        if (!video.error)
            video.error.emplace();
        break;
    default:
        break;
    }
}

// ------------------------------------------------------------------------------------------------------------- the end

void OpenedAd::Watch::close_ad()
{
    platform_.dispatch([this] {
        // The first call may hide a video that lies over the page; the next one closes.
        for (int calls = 0; calls < 2 && !ended_; ++calls)
            if (const auto controller = session_->living())
                controller->closeAction();
    });
}

void OpenedAd::Watch::end(AdEnd how)
{
    ended_ = true;
    outcome_.end = how;
    outcome_.lasted = platform_.loop().now() - opened_;
    if (how == AdEnd::Failed && !outcome_.error)
        outcome_.error = "the ad names no video";
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<Watch>(weak.lock());
        if (const OnEnd on_end = self ? std::exchange(self->on_end_, nullptr) : nullptr)
            on_end(self->outcome_);
    });
}

// ----------------------------------------------------------------------------------------------------------- OpenedAd

OpenedAd::OpenedAd(Platform& platform, std::shared_ptr<QoroVideoAd> ad, OnEnd on_end, HostSetup host)
    : watch_(std::make_shared<Watch>(platform, std::move(on_end)))
{
    watch_->open(ad, with_delegate(std::move(host)));
}

OpenedAd::~OpenedAd()
{
    watch_->leave();
}

void OpenedAd::close()
{
    watch_->close();
}

bool OpenedAd::has_ended() const
{
    return watch_->has_ended();
}

} // namespace qoro
