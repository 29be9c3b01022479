#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "session/World.h"
#include "simulator/SimulatedPlatform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// The application around the ad.
struct HostApp {
    /// UIInterfaceOrientation numbers that it allows.
    std::vector<std::int64_t> autorotates{UIInterfaceOrientationPortrait};
    /// Absent: no root view controller.
    std::optional<CGSize> root_view = CGSize{375, 812};
    /// Whether an ad controller opened this one.
    bool parent = false;
    bool delegate = false;
    bool interstitial_delegate = false;
};

/// One ad on the simulated platform, in virtual time, for tests: the verbs are the viewer's and the world's, the
/// readings nouns. The record is filled through ad() before open(); the controller's own operations and fields are
/// reached through ->. The player does nothing by itself unless the world says otherwise: its news are given.
class AdSession : private Witness
{
public:
    /// A world whose player is driven by the test.
    static World manual_world();

    explicit AdSession(World world = manual_world(), HostApp host = {});
    ~AdSession() override;

    QoroVideoAd& ad() { return *ad_; }
    QoroVideoWebViewController* operator->() const { return controller_.get(); }
    QoroVideoWebViewController& controller() const { return *controller_; }
    SimulatedPlatform& platform() { return platform_; }
    /// The ad controller that opened this one; null when the host has none.
    const std::shared_ptr<QoroPhoneGapViewController>& parent() const { return parent_; }

    // ------------------------------------------------------------------------------------ the viewer and the world

    /// Opens the ad (openInAppVideoView) at the top.
    void open();
    /// Everything due within the time runs.
    void let_pass(double seconds);
    /// A touch up inside, whether or not the button can be seen.
    void tap(const UIButton& button);
    /// A touch and release at a point of the screen.
    void touch(double x, double y);
    /// Turns the device (UIDeviceOrientation); nothing is posted.
    void rotate(int device_orientation);
    /// Turns the status bar (UIInterfaceOrientation), which posts its notification.
    void turn_status_bar(int interface_orientation);
    /// The hardware's volume buttons; reported as an event of its own, which has run on return.
    void set_volume(float volume);
    void leave_app();
    /// Will-enter-foreground, then did-become-active.
    void return_to_app();
    /// An audio interruption of a type: 1 began, 0 ended.
    void interrupt(int type);
    /// A command of the creative's script.
    ScriptAnswer script_says(const std::string& command, const NSArray& arguments = {});
    /// The host lets the controller go.
    void release();

    // -------------------------------------------------------------------------------------------- the player's news

    void player_reports_load(int state);
    void player_reports_state(int state);
    void player_reports_finish(int reason);
    void player_is_at(double time);
    void player_lasts(double duration);
    /// Loaded, then playing from the start.
    void plays(double duration = 30);
    /// Playing again where it stands.
    void plays_on();
    /// Paused at a time.
    void pauses_at(double time);
    /// At its very end: paused, then finished.
    void ends();

    // ---------------------------------------------------------------------------------------------------- readings

    /// What has left the controller since the last forget(), a line each: what it was, then its values in their order
    /// ("js video_play null 0", "request http://t/start tracking", "volume 0.6").
    const std::vector<std::string>& transcript() const { return transcript_; }
    /// The lines of one kind, without its name.
    std::vector<std::string> lines(std::string_view what) const;
    /// The trackers that were asked for.
    std::vector<std::string> fetched() const;
    /// The script's events, each with its data where it has some: "video_play", "onhide",
    /// "video_timeupdate {\"e\":{\"current_time\":\"3\"}}".
    std::vector<std::string> events() const;
    /// How often a line stands in the transcript.
    std::size_t count_of(std::string_view line) const;
    void forget() { transcript_.clear(); }
    double now();

private:
    void tell(std::string_view what, std::initializer_list<Field> fields) override;
    template <typename F>
    void as_event(F&& event);
    void bring(const PlayerNews& news);

    SimulatedPlatform platform_;
    PlatformScope scope_{platform_};
    std::vector<std::string> transcript_;
    std::shared_ptr<QoroVideoAd> ad_ = std::make_shared<QoroVideoAd>();
    UIWindow host_window_;
    std::shared_ptr<UIViewController> host_root_;
    std::shared_ptr<QoroPhoneGapViewController> parent_;
    std::shared_ptr<QoroAdDelegate> delegate_;
    std::shared_ptr<QoroAdDelegate> interstitial_delegate_;
    std::shared_ptr<QoroVideoWebViewController> controller_;
};

/// A value as compact JSON text.
std::string as_text(const Value& value);

} // namespace qoro
