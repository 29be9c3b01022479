#pragma once

#include "platform/Events.h"
#include "platform/Foundation.h"
#include "platform/MediaPlayer.h"
#include "platform/Object.h"
#include "platform/Platform.h"
#include "vast/Macros.h"
#include "vast/Resolver.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class QoroVideoWebViewController;

/// What the macros of every tracker have in common.
struct TagMacros {
    /// Values that the host supplies, and those of the ad.
    vast::MacroValues values = {};
    /// Seconds since 1970-01-01 UTC; null: unknown.
    std::function<double()> clock = {};
};

/// Sends the trackers of one VAST ad while the controller plays it (VAST 4.3, section 3.14): from the events that the
/// platform emits, and from the player's time. Each tracker is sent once where the standard says so, on replays as
/// well.
class TagTracking final : public Object
{
public:
    /// Called once, when the ad cannot be played, or cannot be played on; its error trackers have been sent.
    /// @param code the standard's (VAST 4.3, section 2.3.6)
    using OnFailure = std::function<void(int code, const std::string& why)>;

    TagTracking(Platform& platform, vast::ResolvedAd ad, TagMacros macros, OnFailure on_failure);
    ~TagTracking() override;

    /// Follows a controller that has not opened the ad yet. Once.
    void attach(const std::shared_ptr<QoroVideoWebViewController>& controller);
    /// Receives every event of the platform until the ad has closed.
    void receive(const Event& event);
    /// Sends the ad's error trackers, at most once for each code.
    void send_error(int code);
    /// Whether the video has played.
    bool has_started() const { return started_; }

private:
    /// Trackers that are due at a position of the video.
    struct Mark {
        /// Seconds.
        double at = 0;
        std::string_view event;
        std::vector<std::string> addresses;
        bool sent = false;
    };
    /// A tracker's fields that differ from request to request.
    struct Detail {
        vast::AddressKind kind = vast::AddressKind::Tracking;
        std::optional<int> error_code = {};
        std::optional<int> reason = {};
    };

    void note(const event::FirstPictureShown&);
    void note(const event::AdClosed& close);
    void note(const event::PlayerCreated& player);
    void note(const event::PlayerSought& seek);
    void note(const event::PlayerFailed& failure) { failure_ = failure.reason.view(); }
    void note(const event::ScriptEvent& event);
    void note(const event::PageLoaded&);
    void note(const event::PageError& error);
    void note(const event::MraidOpened&);
    void note(const event::BrowserExpanded&);
    void note(const event::AddressOpened&);
    /// Every other event is without effect.
    template <typename Other>
    void note(const Other&)
    {
    }

    void load_state_changed(const NSNotification&);
    void playback_state_changed(const NSNotification&);
    void finished(const NSNotification& notification);
    void ended();
    void playback_failed();
    void action_button_tapped();
    void icon_tapped();
    void scale_tapped();

    void begin();
    void started();
    void show_icon();
    bool is_interrupted() const;
    void set_marks(double duration);
    void run_from(double position);
    void arm();
    void disarm();
    void reach();
    void clicked();

    /// Sends the trackers of a Linear's event.
    void send(std::string_view event);
    /// Sends the trackers of a Linear's event that occurs once.
    void send_once(std::string_view event);
    void send(std::string_view event, const std::vector<std::string>& addresses) { send(event, addresses, Detail()); }
    void send(std::string_view event, const std::vector<std::string>& addresses, const Detail& detail);
    std::string expanded(const std::string& address, const Detail& detail) const;
    MPMoviePlayerController player() const;

    Platform& platform_;
    const vast::ResolvedAd ad_;
    TagMacros macros_;
    OnFailure on_failure_;
    std::weak_ptr<QoroVideoWebViewController> controller_;
    /// Addresses by event, without progress.
    std::map<std::string_view, std::vector<std::string>> trackers_;
    std::vector<std::string_view> sent_;
    /// In order of their positions.
    std::vector<Mark> marks_;
    bool has_marks_ = false;
    TimerId timer_ = 0;
    /// The part of the video, in seconds, that has been played without a gap and includes the present position.
    /// @{
    double played_from_ = 0;
    double played_to_ = 0;
    /// @}
    /// Position from which the video has been in view without a break; absent while it is not.
    std::optional<double> in_view_from_;
    bool was_viewable_ = false;
    /// Address of the ad's video, as the player received it; empty before that.
    std::string video_;
    /// The page has loaded another video in its place, which has no trackers.
    bool foreign_ = false;
    /// The first picture has been shown.
    bool shown_ = false;
    /// The video has played.
    bool started_ = false;
    /// The video has played since the last failure.
    bool recovered_ = false;
    bool paused_ = false;
    /// The video has played to its end once.
    bool completed_ = false;
    bool at_end_ = false;
    bool closed_ = false;
    bool muted_ = false;
    bool page_loaded_ = false;
    /// When the ad was opened, in seconds of the loop.
    double begun_ = 0;
    /// The viewer has tapped an action button in this event.
    bool button_tapped_ = false;
    bool icon_tapped_ = false;
    /// Last reason of a failed playback.
    std::string failure_;
    std::vector<int> errors_sent_;
};

} // namespace qoro
