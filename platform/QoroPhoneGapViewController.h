#pragma once

#include "platform/Foundation.h"
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
class MessageBudget;
class RefusalLog;
class Mraid;
class QoroVideoAd;
class ZulixOpenInAppApplicationViewController;

/// When an impression is sent.
enum SendImpPolicy : int { CallShowFunc = 0, JsSide = 1, PageFinished = 2 };

enum AdUnitType : int {
    UNKNOWN = 0,
    BANNER_AD = 1,
    INTERSTITIAL_AD = 2,
    IN_APP_WEBVIEW = 3,
    VIDEO_AD = 4,
    NATIVE_AD = 5,
    SPLASH_AD = 6,
};

/// What the kit needs to know of an ad that runs.
struct AdFacts {
    /// The page draws its own close control (MRAIDUseCustomClose).
    bool custom_close = false;
    /// The close button is the page's: it draws its own, takes the button's taps, or covers the ad's controls.
    bool page_closes = false;
    /// The ad's own rule has the close button shown by now, wherever the page has put it.
    bool close_due = false;
    /// No countdown: the ad's own rule shows the close button when the video has ended.
    bool close_at_end = false;
    /// checkVideoSize does nothing now: a click-through is under way, or a browser is open.
    bool layout_suspended = false;
    /// The ad has a portrait and a landscape arrangement.
    bool both_arrangements = false;
};

/// Told of what becomes of an ad: the ad's own delegate and the interstitial's.
class QoroAdDelegate : public Object
{
public:
    /// Whether it answers the failure message.
    virtual bool responds_to_ad_failed() const = 0;
    /// The request for an ad failed.
    /// @param adView the view of the ad; may be null
    virtual void onZulixAdFailed(const UIView& adView, const NSError& error) = 0;
};

/// The kit's banner, as far as the failure message needs it.
class QoroBanner : public Object
{
public:
    virtual UIView getZulixAdView() const = 0;
};

/// The kit's web-view ad controller: it owns the web view, the script bridge with its table of listeners, the temporary
/// full-screen window and the ad description. A video ad's controller is one of these, and so is the controller that
/// opened it.
class QoroPhoneGapViewController : public UIViewController, private WebListener
{
public:
    QoroPhoneGapViewController();
    ~QoroPhoneGapViewController() override;

    /// Makes the controller ready; null when that is impossible, and the controller is then not to be used.
    virtual QoroPhoneGapViewController* init();

    // -------------------------------------------------------------------------------------------- fields: the ad

    /// The ad description; null before an ad is opened.
    std::shared_ptr<QoroVideoAd> qoroVideoAdInfo;
    AdUnitType AdType = UNKNOWN;
    SendImpPolicy instSendImpPolicy = CallShowFunc;
    /// Where the page came from; null before one was fetched.
    NSString strBaseUrl;
    /// Path of the kit's script library, as a page names it.
    NSString strMRAID2Expanded;
    /// Vertical position that the ad was opened with, in points.
    float fDefaultPosY = 0;

    // ------------------------------------------------------------------------------------------ fields: the video

    /// The movie player; set through setQoroMoviePlayer, so that its loss is told to the witness.
    MPMoviePlayerController qoroMoviePlayer;
    void setQoroMoviePlayer(const MPMoviePlayerController& player);
    bool bIsFullScreen = false;
    bool bIsVideoViewController = false;

    // ---------------------------------------------------------------------------------- fields: windows and views

    UIWindow windowDefaultWindow;
    UIWindow windowTempWindow;
    QoroCountDownView countDownView;
    UIView viewBackground;
    /// The host's controller that screens are presented on; may be null.
    std::shared_ptr<UIViewController> rootViewController;
    std::shared_ptr<ZulixOpenInAppApplicationViewController> openInAppApplicationViewController;
    bool bIsAddOnWindow = false;
    bool bIsTwoPartExpand = false;
    bool bIsUseCustomClose = false;
    bool bIsUseProgressbar = false;

    // ---------------------------------------------------------------------------- fields: delegates and the script

    std::weak_ptr<QoroAdDelegate> qoroDelegate;
    std::weak_ptr<QoroAdDelegate> interstitialDelegate;
    std::weak_ptr<QoroBanner> qoroBanner;
    /// Event name → list of [listener id, callback id]; null once the ad has closed.
    NSMutableDictionary dicEventListener;
    /// The script wants the close button's taps.
    bool bIsClickCloseButton = false;

    // ---------------------------------------------------------------------------------------- fields: orientation

    bool bCanOrientation = false;
    bool bIsLockOneSide = false;
    bool bIsLockOneSideAndIsLandscape = false;
    bool bIsLockOneSideAndIsPortrait = false;
    bool bIsMoreThaniOS8 = false;
    bool bUseAutoRotate = false;
    /// UIInterfaceOrientation numbers that the host allows.
    std::vector<std::int64_t> allowedInterfaceOrientations{UIInterfaceOrientationPortrait};

    // ------------------------------------------------------------------------------------------ fields: identities

    double dSessionId = 0;
    std::int32_t iSeqNo = 0;
    /// The kit's cookie identifier; null for none.
    NSString strCookieGuid;

    // ------------------------------------------------------------------------------------------------- the script

    /// The web view; null until the view is loaded.
    const UIWebView& webView() const { return webView_; }
    /// Records a listener; the same name and id once. Nothing once the table is gone.
    virtual void addEventListener(const NSString& name, const Value& EventId, const Value& successCallBack);
    /// 1 when something was removed, else 0. A name without listeners leaves the table.
    virtual std::int32_t removeEventListener(const NSString& name, const Value& EventId);
    /// Calls every listener of the event in the script. Told to the witness.
    /// @param withData a mapping, or null for none
    virtual void listenerCallbackToJS(const NSString& event, const NSDictionary& withData);
    /// Hears of a tap that the page took, and of whether the page answers; null for no guard. It outlives its setting.
    void set_close_guard(CloseGuard* guard) { close_guard_ = guard; }
    /// Takes a message of the page's script: one for the kit's `mraid` object is carried out there, any other is a
    /// command for callFromScript. A page that sends too many is refused, and the refusal told to the witness.
    /// From a page that did not come from this machine, so is a command that names a file or a server of this machine.
    ScriptAnswer take_script_message(const ScriptMessage& message);
    /// One more refusal of what the page wants.
    /// @return for how many a line of the trace stands that is to be written now; absent when none is
    std::optional<std::int64_t> count_refusal();
    /// Carries out a command of the page's script.
    virtual ScriptAnswer callFromScript(const ScriptMessage& message);
    /// Gives the button its tap: closeAction, or, while the script wants the taps, a report to the script.
    void setCloseButtonAction(const UIButton& button);
    /// The button that setCloseButtonAction was last called with; null before, and for one that is gone.
    UIButton close_button() const { return UIButton(close_button_.lock()); }
    virtual void MRAIDClose();
    /// The page draws its own close control, or no longer does. The kit's own controller has no close button.
    virtual void MRAIDUseCustomClose(bool uses);
    /// Lays the ad out as the page asks; the kit's own controller has no layout.
    /// @param orientation "portrait" or "landscape"; any other text is ignored
    virtual void changeOrientation(const NSString& orientation);
    /// What the kit's own controller knows of itself: nothing of it applies.
    virtual AdFacts facts() const;
    /// Reads MRAID's calendar event and hands it to the device's calendar; what is refused is told to the witness, and
    /// to the page as an error event.
    virtual void MRAIDCreateCalendarEvent(const Value& event);

    // ------------------------------------------------------------------------------------------------ the web view

    virtual bool webView(const UIWebView& webView, const NSURL& shouldStartLoadWithRequest,
                         std::int64_t navigationType);
    virtual void webViewDidStartLoad(const UIWebView& webView);
    virtual void webViewDidFinishLoad(const UIWebView& webView);
    /// The fail action of a page's request.
    void failAdRequest(const QoroAdRequest& request);
    /// Reports a failure to the ad's delegates; the kit's own controller has none to tell.
    virtual void failAdRequest(const NSError& error);

    // ---------------------------------------------------------------------------------------- device and appearance

    std::int64_t getDeviceOriengation() const;
    /// The screen as it is turned now: the long edge is the width while the device or the status bar is landscape.
    CGSize getCurrnetScreenSize() const;
    virtual bool shouldAutorotateToInterfaceOrientation(std::int64_t orientation) const;
    /// A decimal ARGB number as text; opaque white for a text that is none.
    static UIColor formatColor(const NSString& color);
    /// "tel:" and the text's digits and plus signs; null for null.
    static NSString formatPhoneNumber(const NSString& number);
    /// Restores the host's status bar.
    virtual void updateStatusbar();
    /// Shows a spinner of 40 points with its top left corner at the given point of a view.
    void showProgressbarPosX(int x, int showPosY, const UIView& addOn);
    void stopProgressbar();

    // ----------------------------------------------------------------------------------------------- running the ad

    /// A store page that is presented is told to the witness.
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion) override;
    /// Ends the ad. The kit's own controller has nothing to end.
    virtual void closeAction();
    /// A child ad has closed.
    /// @param close whether this controller is to close too
    virtual void closeVideoAdUnit(bool close);
    /// Lays the ad out again. The kit's own controller has no layout.
    virtual void checkVideoSize();
    /// The user is back from another application or screen: lays the ad out again while one is open.
    void checkViewSizeAfterOpenOtherApp();
    /// Stops a timer; nothing for null.
    static void stopTimerWith(const NSTimer& timer);
    virtual void stopUpdateTimer();
    virtual void sendImpression();
    virtual void setBIsSendImpression(bool sent);
    virtual void clickRequester();
    /// The ad presents a screen.
    virtual void qoroPresent();
    /// The user leaves the application.
    void qoroLeaveApplication();
    virtual void closeInAppWebView();
    virtual void closeInAppApplication();
    /// The movie player has left the system's own full screen.
    void exitFullScreen(const NSNotification& notification);

protected:
    void populateView() override;
    /// A line of trace about a call to this superclass.
    void tell_super(std::string_view operation) const;
    Platform& platform() const { return platform_; }

private:
    void did_start_load() override;
    void did_finish_load() override;
    bool should_start_load(const NSURL& address, int navigation_type) override;
    ScriptAnswer message(const ScriptMessage& message) override;
    void refused(const std::string& what, const std::string& detail) override;
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
    /// Runs while a layout that the page's death asked for is suspended; 0 for none.
    TimerId layout_due_ = 0;
    /// A repetition of the page's custom close is under way.
    bool repeats_custom_close_ = false;
    /// Made with the page's first message for it.
    std::shared_ptr<Mraid> mraid_;
    CloseGuard* close_guard_ = nullptr;
    /// What the page may say, and how many refusals become a line of their own.
    std::unique_ptr<MessageBudget> messages_;
    std::unique_ptr<RefusalLog> refusals_;
    UIView progressbar_;
};

} // namespace qoro
