#pragma once

#include "platform/Foundation.h"
#include "platform/KitEnumerations.h"
#include "platform/MediaPlayer.h"
#include "platform/QoroAdManager.h"
#include "platform/QoroCountDownView.h"
#include "platform/UIKit.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace qoro
{

class CloseGuard;
class ControlWatch;
class LineLimit;
class MessageBudget;
class RefusalLog;
class Mraid;
class QoroVideoAd;
class ScriptExtras;
class ZulixOpenInAppApplicationViewController;

/// State of a running ad that the kit queries.
struct AdFacts {
    /// The page draws its own close control (MRAIDUseCustomClose).
    bool custom_close = false;
    /// The page controls closing: it draws its own close control, receives the close button's taps, or covers the ad's
    /// controls.
    bool page_closes = false;
    /// By the ad's own rule the close button is due, wherever the page has put it.
    bool close_due = false;
    /// There is no countdown: by the ad's own rule the close button appears at the end of the video.
    bool close_at_end = false;
    /// checkVideoSize has no effect at present: a click-through is in progress, or a browser is open.
    bool layout_suspended = false;
    /// The ad has both a portrait and a landscape layout.
    bool both_arrangements = false;
};

/// Delegate of an ad or an interstitial.
class QoroAdDelegate : public Object
{
public:
    /// Whether it implements onZulixAdFailed.
    virtual bool responds_to_ad_failed() const = 0;
    /// The request for an ad failed.
    /// @param adView the ad's view; may be null
    virtual void onZulixAdFailed(const UIView& adView, const NSError& error) = 0;
};

/// The part of the kit's banner that the failure report needs.
class QoroBanner : public Object
{
public:
    virtual UIView getZulixAdView() const = 0;
};

/// The kit's web-view ad controller. It owns the web view, the script bridge with its listener table, the temporary
/// full-screen window and the ad description. Base class of a video ad's controller and of the controller that opened
/// it.
class QoroPhoneGapViewController : public UIViewController, private WebListener
{
public:
    QoroPhoneGapViewController();
    ~QoroPhoneGapViewController() override;

    /// Initialises the controller. Null on failure; the controller must not be used then.
    virtual QoroPhoneGapViewController* init();

    // -------------------------------------------------------------------------------------------- Fields: the ad

    /// The ad description; null before an ad is opened.
    std::shared_ptr<QoroVideoAd> qoroVideoAdInfo;
    AdUnitType AdType = UNKNOWN;
    SendImpPolicy instSendImpPolicy = CallShowFunc;
    /// The page's address; null before one was fetched.
    NSString strBaseUrl;
    /// Path of the kit's script library, as pages reference it.
    NSString strMRAID2Expanded;
    /// Vertical position at which the ad was opened, in points.
    float fDefaultPosY = 0;

    // ------------------------------------------------------------------------------------------ Fields: the video

    /// The movie player. Set with setQoroMoviePlayer, which emits its loss as an event.
    MPMoviePlayerController qoroMoviePlayer;
    void setQoroMoviePlayer(const MPMoviePlayerController& player);
    bool bIsFullScreen = false;
    bool bIsVideoViewController = false;

    // ---------------------------------------------------------------------------------- Fields: windows and views

    UIWindow windowDefaultWindow;
    UIWindow windowTempWindow;
    QoroCountDownView countDownView;
    UIView viewBackground;
    /// The host's controller that presents screens; may be null.
    std::shared_ptr<UIViewController> rootViewController;
    std::shared_ptr<ZulixOpenInAppApplicationViewController> openInAppApplicationViewController;
    bool bIsAddOnWindow = false;
    bool bIsTwoPartExpand = false;
    bool bIsUseCustomClose = false;
    bool bIsUseProgressbar = false;

    // ---------------------------------------------------------------------------- Fields: delegates and the script

    std::weak_ptr<QoroAdDelegate> qoroDelegate;
    std::weak_ptr<QoroAdDelegate> interstitialDelegate;
    std::weak_ptr<QoroBanner> qoroBanner;
    /// Event name → list of [listener id, callback id]; null after the ad has closed.
    NSMutableDictionary dicEventListener;
    /// The script handles the close button's taps.
    bool bIsClickCloseButton = false;

    // ---------------------------------------------------------------------------------------- Fields: orientation

    bool bCanOrientation = false;
    bool bIsLockOneSide = false;
    bool bIsLockOneSideAndIsLandscape = false;
    bool bIsLockOneSideAndIsPortrait = false;
    bool bIsMoreThaniOS8 = false;
    bool bUseAutoRotate = false;
    /// UIInterfaceOrientation values that the host allows.
    std::vector<std::int64_t> allowedInterfaceOrientations{UIInterfaceOrientationPortrait};

    // ------------------------------------------------------------------------------------------ Fields: identities

    double dSessionId = 0;
    std::int32_t iSeqNo = 0;
    /// The kit's cookie identifier; null when there is none.
    NSString strCookieGuid;

    // ------------------------------------------------------------------------------------------------- The script

    /// The web view; null until the view is loaded.
    const UIWebView& webView() const { return webView_; }
    /// Registers a listener; an existing pair of name and id is not registered again. No effect on a null table, name
    /// or id.
    virtual void addEventListener(const NSString& name, const Value& EventId, const Value& successCallBack);
    /// Removes a listener; removes the name with its last listener.
    /// @return 1 if a listener was removed, otherwise 0
    virtual std::int32_t removeEventListener(const NSString& name, const Value& EventId);
    /// Calls every listener of the event in the script, and emits the call as an event.
    /// @param withData a mapping; null for no data
    virtual void listenerCallbackToJS(const NSString& event, const NSDictionary& withData);
    /// Sets the guard that is notified of close taps handled by the page and of changes in its responsiveness; null for
    /// no guard. It must stay alive until it is replaced.
    void set_close_guard(CloseGuard* guard) { close_guard_ = guard; }
    /// Sets what the page's script may know and do beyond the controller's own commands; null for nothing.
    void set_script_extras(std::unique_ptr<ScriptExtras> extras);
    /// Handles a message from the page's script: forwards messages of the kit's `mraid` object to it, and passes any
    /// other as a command to callFromScript. A command that the ad ignores silently is passed on too, and answered with
    /// the reason; the reason is not emitted. Messages above the rate limit are refused. Unless the page came from this
    /// machine, so is a next video with an address of this machine or a private network (kit/NextVideoAddresses.h).
    /// Refusals are emitted as events.
    ScriptAnswer take_script_message(const ScriptMessage& message);
    /// Counts a refusal.
    /// @return the number of refusals that a trace line written now covers; absent when no line is due
    std::optional<std::int64_t> count_refusal();
    /// Executes a command of the page's script.
    virtual ScriptAnswer callFromScript(const ScriptMessage& message);
    /// Sets the button's action: closeAction, or, if the script handles the taps, a report to the script.
    void setCloseButtonAction(const UIButton& button);
    /// The button last passed to setCloseButtonAction; null before the first call or when it no longer exists.
    UIButton close_button() const { return UIButton(close_button_.lock()); }
    /// The page requests that the ad close. The base class only reports the call.
    virtual void MRAIDClose();
    /// The page starts or stops drawing its own close control. No effect in the base class, which has no close button.
    virtual void MRAIDUseCustomClose(bool uses);
    /// Lays the ad out in the orientation that the page requests. No effect in the base class, which has no layout.
    /// @param orientation "portrait" or "landscape"; any other text is ignored
    virtual void changeOrientation(const NSString& orientation);
    /// The state of the ad; in the base class every field is false.
    virtual AdFacts facts() const;
    /// Parses MRAID's calendar event and hands it to the device's calendar. A refusal is emitted as an event, and
    /// sent to the page as an error event.
    virtual void MRAIDCreateCalendarEvent(const Value& event);

    /// The address that a tracker's template is sent to: the template with its macros replaced; null for null. The base
    /// class has no macros.
    virtual NSString getTrackingUniqueInfo(const NSString& url) const;

    // ------------------------------------------------------------------------------------------------ The web view

    /// Decides whether a navigation may proceed. The base class permits only navigation within the ad's document.
    /// @param navigationType UIWebViewNavigationType
    virtual bool webView(const UIWebView& webView, const NSURL& shouldStartLoadWithRequest,
                         std::int64_t navigationType);
    virtual void webViewDidStartLoad(const UIWebView& webView);
    virtual void webViewDidFinishLoad(const UIWebView& webView);
    /// Fail action of the request for a page.
    void failAdRequest(const QoroAdRequest& request);
    /// Reports a failure to the ad's delegates. No effect in the base class, which has none.
    virtual void failAdRequest(const NSError& error);

    // ---------------------------------------------------------------------------------------- Device and appearance

    std::int64_t getDeviceOriengation() const;
    /// Size of the screen in its current orientation, in points: the long edge is the width while the device or the
    /// status bar is in landscape.
    CGSize getCurrnetScreenSize() const;
    /// Whether the host allows an interface orientation.
    virtual bool shouldAutorotateToInterfaceOrientation(std::int64_t orientation) const;
    /// Parses a decimal ARGB number; opaque white for any other text.
    static UIColor formatColor(const NSString& color);
    /// "tel:" followed by the text's digits and plus signs; null for null.
    static NSString formatPhoneNumber(const NSString& number);
    /// Restores the host's status bar. Called when the ad closes: emits event::AdClosed the first time, and releases an
    /// orientation forced by the page.
    virtual void updateStatusbar();
    /// Whether the ad has begun to close for good; hiding its video is no close.
    bool has_closed() const { return has_closed_; }
    /// Shows a spinner of 40 by 40 points with its top left corner at a point of a view.
    void showProgressbarPosX(int x, int showPosY, const UIView& addOn);
    /// Removes the spinner; no effect without one.
    void stopProgressbar();

    // ----------------------------------------------------------------------------------------------- Running the ad

    /// Also emits a presented store page as an event.
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion) override;
    /// Closes the ad. No effect in the base class.
    virtual void closeAction();
    /// A child ad has closed.
    /// @param close whether this controller must close too
    virtual void closeVideoAdUnit(bool close);
    /// Lays the ad out again. No effect in the base class, which has no layout.
    virtual void checkVideoSize();
    /// The viewer has returned from another application or screen: lays the ad out again if one is open.
    void checkViewSizeAfterOpenOtherApp();
    /// Stops a timer; no effect for null.
    static void stopTimerWith(const NSTimer& timer);
    virtual void stopUpdateTimer();
    /// Sends the ad's impression. The base class only reports the call.
    virtual void sendImpression();
    virtual void setBIsSendImpression(bool sent);
    virtual void clickRequester();
    /// The ad presents a screen.
    virtual void qoroPresent();
    /// The viewer leaves the application.
    void qoroLeaveApplication();
    /// The in-app browser has closed. No effect in the base class.
    virtual void closeInAppWebView();
    /// A system sheet has closed: removes and releases its controller.
    virtual void closeInAppApplication();
    /// The movie player has left the system's full-screen mode.
    void exitFullScreen(const NSNotification& notification);

protected:
    void populateView() override;
    Platform& platform() const { return platform_; }

private:
    friend class ClosingBy;
    friend class StateReader; // workbench/explore/StateHash.cpp

    void did_start_load() override;
    void did_finish_load() override;
    bool should_start_load(const NSURL& address, int navigation_type) override;
    ScriptAnswer message(const ScriptMessage& message) override;
    void refused(const std::string& what, const std::string& detail) override;
    void reported(const PageReport& report) override;
    NSString inward_address_named_by(const ScriptMessage& message) const;
    NSArray control_rects() const;
    std::size_t count_of_listeners() const;
    void died(const std::string& reason) override;
    void responsiveness_changed(bool responds) override;
    void report_close_tap();
    void take_back_from_page();
    void lay_out_when_possible();
    void layout_is_done();
    void repeat_custom_close();

    Platform& platform_;
    UIWebView webView_;
    std::weak_ptr<ViewNode> close_button_;
    /// Timer that retries a layout which is due after the page's death but suspended; 0 when stopped.
    TimerId layout_due_ = 0;
    /// The page's custom close will be reapplied by a posted event.
    bool repeats_custom_close_ = false;
    /// Created by the page's first message to it.
    std::shared_ptr<Mraid> mraid_;
    CloseGuard* close_guard_ = nullptr;
    /// Null for none.
    std::unique_ptr<ScriptExtras> extras_;
    /// Created for the page's first listener to the controls' places; null without extras.
    std::shared_ptr<ControlWatch> control_watch_;
    ClosedBy closer_ = ClosedBy::Viewer;
    bool has_closed_ = false;
    /// Rate limits: of the page's messages, of trace lines about refusals, and of the page's reports.
    std::unique_ptr<MessageBudget> messages_;
    std::unique_ptr<RefusalLog> refusals_;
    std::unique_ptr<LineLimit> reports_;
    UIView progressbar_;
};

/// Names who closes an ad, for event::AdClosed, while it exists. Outside such a scope the viewer does: the ad's own
/// controls call the close directly.
class ClosingBy
{
public:
    /// @param ad must outlive this object
    ClosingBy(QoroPhoneGapViewController& ad, ClosedBy closer);
    ~ClosingBy();
    ClosingBy(const ClosingBy&) = delete;
    ClosingBy& operator=(const ClosingBy&) = delete;

private:
    QoroPhoneGapViewController& ad_;
    const ClosedBy before_;
};

} // namespace qoro
