#pragma once

#include "formats/HostSetup.h"
#include "formats/World.h"
#include "host/Session.h"
#include "simulator/SimulatedPlatform.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// A test fixture for one ad on the simulated platform, in virtual time: verbs are actions of the viewer and the
/// surroundings, nouns are queries. Fill the ad through ad() before open(); access the controller's operations and
/// fields through ->. The player changes only on the test's news, unless the world says otherwise.
class AdSession : private EventSink
{
public:
    /// A world with a manual player.
    static World manual_world();

    explicit AdSession(World world = manual_world(), const HostSetup& host = unguarded_host());
    ~AdSession() override;

    QoroVideoAd& ad() { return *ad_; }
    QoroVideoWebViewController* operator->() const { return session_->controller().get(); }
    QoroVideoWebViewController& controller() const { return *session_->controller(); }
    SimulatedPlatform& platform() { return platform_; }

    // ------------------------------------------------------------------------------------- viewer and surroundings

    /// Opens the ad (openInAppVideoView) at the top.
    void open();
    /// Runs everything due within the time.
    void let_pass(double seconds);
    /// A touch up inside, whether or not the button is visible.
    void tap(const UIButton& button);
    /// A touch and release at a point on screen.
    void touch(double x, double y);
    /// Sets the device's orientation (UIDeviceOrientation) without posting.
    void rotate(int device_orientation);
    /// Sets the status bar's orientation (UIInterfaceOrientation), which posts its notification.
    void turn_status_bar(UIInterfaceOrientation orientation);
    /// The hardware volume buttons; reported as a separate event, which has run on return.
    void set_volume(float volume);
    void leave_app();
    /// Will-enter-foreground, then did-become-active.
    void return_to_app();
    /// An audio interruption: type 1 began, 0 ended.
    void interrupt(int type);
    /// A command of the creative's script.
    ScriptAnswer script_says(const std::string& command, const NSArray& arguments = {});
    /// The host releases the controller.
    void release();

    // -------------------------------------------------------------------------------------------------- player news

    void player_reports_load(int state);
    void player_reports_state(int state);
    void player_reports_finish(int reason);
    void player_is_at(double time);
    void player_lasts(double duration);
    /// Loaded, then playing from the start.
    void plays(double duration = 30);
    /// Playing again from the current position.
    void plays_on();
    /// Paused at a time.
    void pauses_at(double time);
    /// Paused at the end, then finished.
    void ends();

    // ----------------------------------------------------------------------------------------------------- queries

    /// The controller's output since the last forget(), one line each: the kind, then its values in order ("js
    /// video_play null 0", "request http://t/start tracking", "volume 0.6").
    const std::vector<std::string>& transcript() const { return transcript_; }
    /// The lines of one kind, without its name.
    std::vector<std::string> lines(std::string_view what) const;
    /// The trackers requested.
    std::vector<std::string> fetched() const;
    /// The events sent to the script, with their data if any: "video_play", "onhide", "video_timeupdate
    /// {\"e\":{\"current_time\":\"3\"}}".
    std::vector<std::string> events() const;
    /// How often a line occurs in the transcript.
    std::size_t count_of(std::string_view line) const;
    /// Who closed the ad, one entry for each event::AdClosed, which has no line.
    const std::vector<ClosedBy>& closes() const { return closes_; }
    void forget() { transcript_.clear(); }
    double now();

private:
    void receive(const Event& event) override;
    template <typename F>
    void as_event(F&& event);
    void bring(const PlayerNews& news);

    SimulatedPlatform platform_;
    PlatformScope scope_{platform_};
    std::vector<std::string> transcript_;
    std::vector<ClosedBy> closes_;
    std::shared_ptr<QoroVideoAd> ad_ = std::make_shared<QoroVideoAd>();
    std::unique_ptr<Session> session_;
};

/// A value as compact JSON.
std::string as_text(const Value& value);

} // namespace qoro
