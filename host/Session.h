#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/HostSetup.h"
#include "formats/Steps.h"
#include "host/HostObjects.h"
#include "host/SessionControls.h"
#include "host/StepTouch.h"
#include "kit/CloseGuard.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <utility>

namespace qoro
{

/// One ad in its host, on any platform. Construction sets up the host, creates the controller, loads its view and makes
/// it appear; steps do the rest. The platform outlives it. Only the platform's thread may use it.
class Session
{
public:
    /// @param controls carries out the steps that affect the ad's surroundings; outlives the session
    /// @param host the ad's surroundings; not kept
    /// @param ad the description that open() passes to the controller; with null, open() shows nothing
    Session(Platform& platform, SessionControls& controls, const HostSetup& host, std::shared_ptr<QoroVideoAd> ad);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Reports a step to the event sink, then performs it, as one event. A step that touches a page waits until the
    /// page has said which element it hits, and later steps wait for it.
    /// @param n the step's index, from 0
    void perform(const Step& step, std::size_t n);

    /// Opens the ad. No effect after release().
    /// @param y vertical position, points
    void open(float y);
    /// Closes the ad, also where a first close only hides the video. No effect once the ad has closed.
    /// @param closer reported by event::AdClosed
    void close(ClosedBy closer);
    /// Closes the topmost screen of the kit, the browser or a store page, as the viewer does.
    /// @return false when no such screen is shown
    bool leave_screen();
    /// The host releases the controller; other owners may retain it.
    void release();

    /// The host's reference to the controller; null after release(), and if the controller could not be initialised.
    const std::shared_ptr<QoroVideoWebViewController>& controller() const { return controller_; }
    /// The host's own window.
    const UIWindow& host_window() const { return host_window_; }
    /// The controller while anything retains it; null once destroyed.
    std::shared_ptr<QoroVideoWebViewController> living() const { return living_.lock(); }

private:
    struct Performer;

    void make_host(const HostSetup& host);
    void make_controller(const HostSetup& host);
    void begin(const Step& step, std::size_t n);
    void begin_touch(const Step& step, std::size_t n, const TouchStep& touch);
    void aimed(const TouchAim& aim);

    Platform& platform_;
    SessionControls& controls_;
    const std::shared_ptr<QoroVideoAd> ad_;
    UIWindow host_window_;
    std::shared_ptr<UIViewController> host_root_;
    std::shared_ptr<ParentController> parent_;
    std::shared_ptr<HostDelegate> delegate_;
    std::shared_ptr<HostDelegate> interstitial_delegate_;
    std::shared_ptr<QoroVideoWebViewController> controller_;
    std::weak_ptr<QoroVideoWebViewController> living_;
    std::shared_ptr<CloseGuard> guard_;
    /// Steps with their indices; the first is a touch that is being aimed, the others wait for it.
    std::deque<std::pair<Step, std::size_t>> waiting_;
    /// Number of touches aimed so far: an answer to an earlier one is too late.
    std::uint64_t aims_ = 0;
    /// Ends the wait for a page that does not answer; 0 while none is asked.
    TimerId patience_ = 0;
    /// For answers of pages, which may come after the session's end.
    const std::shared_ptr<Session*> self_ = std::make_shared<Session*>(this);
};

} // namespace qoro
