#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "session/Controls.h"
#include "session/Host.h"
#include "session/Steps.h"

#include <cstddef>
#include <memory>

namespace qoro
{

/// One ad in its host, on any platform. Making it sets up the host, creates the controller, loads its view and lets it
/// appear; the steps do the rest. The platform outlives it.
class Session
{
public:
    /// @param controls what the steps ask of the world around the ad; outlives the session
    /// @param ad the description that is opened; null opens an absent one
    Session(Platform& platform, SessionControls& controls, const HostSetup& host, std::shared_ptr<QoroVideoAd> ad);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Does what a step says, as an event of its own, and tells the witness of it first.
    /// @param n the step's number, from 0
    void perform(const Step& step, std::size_t n);

    /// @param y points
    void open(float y);
    /// The viewer leaves the screen that the kit shows above all: the browser, a store page.
    /// @return false when there is none
    bool leave_screen();
    /// The host lets the controller go; something else may keep it.
    void release();

    /// The host's controller; null once it was released.
    const std::shared_ptr<QoroVideoWebViewController>& controller() const { return controller_; }
    /// The host's own window.
    const UIWindow& host_window() const { return host_window_; }
    /// The controller as long as anything keeps it.
    std::shared_ptr<QoroVideoWebViewController> living() const { return living_.lock(); }

private:
    struct Performer;

    void make_host(const HostSetup& host);
    void make_controller(const HostSetup& host);

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
};

} // namespace qoro
