#pragma once

#include "Base/VideoPlayer/EventData.h"
#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/MediaPlayer.h"
#include "platform/QoroAppStoreMockViewController.h"
#include "platform/QoroInAppWebViewController.h"
#include "platform/QoroPhoneGapViewController.h"
#include "platform/ZulixOpenInAppApplicationViewController.h"

#include <array>
#include <memory>
#include <string_view>

namespace qoro
{

/// Number of call-to-action buttons shown; 0 means no button.
enum ButtonPositionMode : std::int32_t { ButtonPositionMode_OneButton = 1, ButtonPositionMode_TwoButton = 2 };

/// The player state that the script's events report; an index into arrayVideoState.
enum VideoState : std::uint32_t { VideoLoading = 0, VideoLoaded = 1, VideoPlay = 2, VideoPause = 3, VideoEnded = 4 };

/// Why the playback state changes; decides which pause and resume trackers are sent. Playing and Terminating are never
/// assigned. movieStateChange still tests for Terminating.
enum QoroMoviePlayerStatus : std::int64_t {
    QoroMoviePlayerStatusNone = 0,
    QoroMoviePlayerStatusResuming = 1,
    QoroMoviePlayerStatusPlaying = 2,
    QoroMoviePlayerStatusSeeking = 3,
    QoroMoviePlayerStatusFinishedVideo = 4,
    QoroMoviePlayerStatusTerminating = 5,
};

/// The full-screen video ad. It plays the video beside, under or over the creative's page, draws its own controls,
/// follows the device's rotation, reports progress to trackers, exchanges events and commands with the creative's
/// script and carries out click-throughs. The operations are grouped by the file that implements them.
///
/// Main thread only. Construct with create() and call init(); setParentViewController and openInAppVideoView follow, in
/// this order. An operation that needs an object that is absent (no player, no ad) has no effect.
class QoroVideoWebViewController : public QoroPhoneGapViewController, public QoroAppStoreMockViewControllerDelegate
{
public:
    /// Allocates a controller for the current Platform; call init() next.
    static std::shared_ptr<QoroVideoWebViewController> create();
    /// Removes the notification observers and detaches the screens that refer to this controller as their parent.
    ~QoroVideoWebViewController() override;

    // ============================================================== QoroVideoWebViewController.cpp: lifecycle, close

    /// Sets the fields to their defaults, builds the controls, registers for application and volume notifications,
    /// forces the device to portrait and posts "zulixInAppADWillBeOpen".
    /// @return this, or null when the superclass fails
    QoroVideoWebViewController* init() override;
    /// Records whether the host entered in landscape left, and scales the page to fit.
    void viewDidLoad() override;
    /// Marks the viewer as back in the app.
    void viewDidAppear(bool animated) override;
    /// Forwards to the superclass, unchanged.
    /// @param completion called when the presentation ends; may be null
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion) override;
    /// Sets the player status to Resuming, so that the next tick seeks to where the video paused; leaves a finished
    /// video alone.
    void appWillEnterForeground();
    /// Sets the ad controller that opened this one, which the close is reported to; null for none. Held strongly until
    /// the close.
    void setParentViewController(const std::shared_ptr<QoroPhoneGapViewController>& parent);
    /// The controller set by setParentViewController; null before that and after the close.
    const std::shared_ptr<QoroPhoneGapViewController>& getParentViewController() const;
    /// Keeps the parent's window alive until the ad closes.
    void addOnParentWindow(const UIWindow& window);
    /// Closes the ad: sends "onhide" and the close trackers, stops the timers, removes observers, views and windows,
    /// and closes the ad unit in the parent. While the close button serves to hide the video, it sends "onhide" and
    /// only hides the video.
    void closeAction() override;
    /// Closes the ad at the script's request, by closeAction.
    void MRAIDClose() override;
    /// Snapshot of the closing and layout state, for the kit's close guard and its mraid object.
    AdFacts facts() const override;
    /// Restores the volume found at the start, then removes the player and the controls from the screen and sets their
    /// fields to null. Keeps btnScreenScale and btnReturnToVideo.
    void removeViewAndButton();
    /// Takes the close button off the screen but keeps the object, so that a later layout adds it again. Does nothing
    /// without a player, or while the button serves to hide a landscape video.
    void removeBtnClose();
    /// Removes the full-screen window of the ad and makes the host's window key again.
    void removeTempWindow();

    // Property accessors; each property has its own storage, the field with the leading underscore. The three flags
    // have a second storage, a field of the same name without the underscore, which only closeInAppApplication writes.
    // The two are deliberately separate.

    /// Sets the property _delegate. Failures are reported to the inherited qoroDelegate, not to this one.
    void setQoroDelegate(const std::weak_ptr<QoroAdDelegate>& delegate) { _delegate = delegate; }
    /// The property _delegate; may be expired.
    const std::weak_ptr<QoroAdDelegate>& getQoroDelegate() const { return _delegate; }
    /// Marks a click-through as under way; checkVideoSize does nothing meanwhile.
    void setBDoButtonAction(bool doing) { _bDoButtonAction = doing; }
    /// Whether a click-through is under way.
    bool getBDoButtonAction() const { return _bDoButtonAction; }
    /// Records that a message screen was opened; stays true after that screen closes.
    void setBIsOpenInAppApplication(bool open) { _bIsOpenInAppApplication = open; }
    /// Whether a message screen was opened during this ad.
    bool getBIsOpenInAppApplication() const { return _bIsOpenInAppApplication; }
    /// Records whether the status bar was landscape left when the view loaded.
    void setBIsLockLandscapeAndEnterLandscapeLeft(bool left) { _bIsLockLandscapeAndEnterLandscapeLeft = left; }
    /// Whether the status bar was landscape left when the view loaded; decides by how much a host locked to landscape
    /// turns the ad.
    bool getBIsLockLandscapeAndEnterLandscapeLeft() const { return _bIsLockLandscapeAndEnterLandscapeLeft; }

    // ================================================================================ webbridge/AdResponse.cpp

    /// The kit's entry point: stores the ad description, copies its countdowns and starts the video. An ad without a
    /// video address opens and plays nothing.
    /// @param ad kept by reference, never copied; null acts as an empty description
    /// @param DefaultPosY vertical position in points
    void openInAppVideoView(const std::shared_ptr<QoroVideoAd>& ad, float DefaultPosY);
    /// Whether the text contains "http" anywhere; false for null.
    bool verifyWebUrlWithString(const NSString& url) const;
    /// Requests the creative's page; the answer arrives at didAdRequester or failAdRequest.
    void loadWebView(const NSString& url);
    /// Loads the fetched page into the web view. A page that mentions "mraid.js" first gets the kit's script library at
    /// the start of its <head>; one without a <head> is rejected as a fault.
    void didAdRequester(const QoroAdRequest& request);
    using QoroPhoneGapViewController::failAdRequest;
    /// Reports a failed page request to both delegates that implement the failure message.
    void failAdRequest(const NSError& error) override;
    using QoroPhoneGapViewController::webView;
    /// Lets the superclass decide whether the web view may load an address.
    /// @return true to load
    bool webView(const UIWebView& webView, const NSURL& shouldStartLoadWithRequest,
                 std::int64_t navigationType) override;
    /// Forwards to the superclass, unchanged.
    void webViewDidStartLoad(const UIWebView& webView) override;
    /// Lays the ad out again once the page has loaded, unless the video is hidden to show that page.
    void webViewDidFinishLoad(const UIWebView& webView) override;
    /// Opens the page's current address in the system browser.
    void openNewWebAction();
    /// Brings the page in front of the video and removes the controls, the close button included; the page must close
    /// the ad. Keeps btnScreenScale, btnReturnToVideo and labelRemainderTime.
    void handleWebViewInFront();

    // =============================================================================== webbridge/ScriptEvents.cpp

    /// Registers a script listener and sends the current state again to every listener of that event. A listener for
    /// "onclick_closebtn" takes over the close button's taps.
    void addEventListener(const NSString& name, const Value& EventId, const Value& successCallBack) override;
    /// Removes a script listener; for "onclick_closebtn" the tap closes the ad again.
    /// @return 1 when a listener was removed, else 0
    std::int32_t removeEventListener(const NSString& name, const Value& EventId) override;
    /// Calls the script's listeners of an event.
    /// @param withResult wrapped under the key "e"; null sends no data
    void sendEventToJS(const NSString& event, const NSDictionary& withResult);
    /// Sends "video_orientation" with "landscape" or "portrait".
    void sendOrientationEvent();
    /// Sends "video_visibilitychange": 0 while the video is hidden to show the page, else 1.
    void sendVideoVisibilityEvent();

    // ============================================================================= webbridge/ScriptCommands.cpp

    /// Runs a command of the creative's script by its name; unknown names go to the superclass. Too few arguments are
    /// an error, surplus ones are ignored, and one of the wrong type counts as absent.
    ScriptAnswer callFromScript(const ScriptMessage& message) override;

    // ================================================================================== playback/PlayerSetup.cpp

    /// Creates the player for the ad's video, requests the page, starts the buffering watchdog and the "loaded" timer,
    /// builds the controls and lays the ad out. Posts "NotifyOpenVideoExResult" with the key "Result": "1", or "9" and
    /// an error under "e" without an address.
    /// @param url the video's address; null or empty means no player
    void play_video(const NSString& url);
    /// Subscribes to the current player's notifications.
    void addObserverToQoroMoviePlayer();
    /// Unsubscribes from the current player's notifications.
    void removeObserverFromQoroMoviePlayer();
    /// Handles an audio session interruption: type 1 begins it, 0 ends it.
    void interruption(const NSNotification& notification);
    /// Pauses the video and takes its view off the screen.
    void beginInterruption();
    /// Lays the ad out again and toggles playback, unless a click-through is under way.
    void endInterruption();

    // ================================================================================ playback/PlaybackState.cpp

    /// Handles a change of the playback state: updates flags, timers and controls, and sends events and trackers.
    void movieStateChange(const NSNotification& notification);
    /// Reports the video as loaded once the player's load state is exactly Playable.
    void moviePlayerLoadStateChanged(const NSNotification& notification);
    /// Handles the end of playback by its reason: an end applies the ad's end rules, an error shows the close button
    /// and plays again, and an exit by the viewer removes the player.
    void moviePlayBackDidFinish(const NSNotification& notification);
    /// Sets the state and sends its event; any state but VideoLoading stops the "loaded" timer.
    void changeVideoState(VideoState state);
    /// Reports the video as loaded, once per play_video: applies the ad's initial mute setting and sends
    /// "video_loaded".
    void changeVideoStateToLoaded();
    /// Sets qoroMoviePlayerStatus.
    void changeMoviePlayerStatus(QoroMoviePlayerStatus status);

    // ============================================================================== playback/PlayerCommands.cpp

    /// Toggles playback; after the end it replays. Ignored without a player and while the video is hidden.
    void setPlayOrPause();
    /// Toggles the sound, sends the mute or unmute trackers once playback has begun, and counts the toggle for the
    /// hidden image. Ignored before the first video and while the video is hidden.
    void setMute();
    /// Plays, unless the video plays already.
    void setVideoPlay();
    /// Pauses a playing video and shows the control bars.
    void setVideoPause();
    /// Turns the sound off, unless it is off already.
    void setVideoMute();
    /// Turns the sound on, unless it is on already.
    void setVideoUnmute();
    /// Seeks, and marks the seek so that the pause and play it causes send no trackers; after a return to the app it
    /// ends the status Resuming instead.
    /// @param seconds from the start of the video
    void setVideoSeekToTime(float seconds);
    /// Duration in whole seconds, truncated; 0 without a player or while it is unknown.
    std::int32_t getVideoTotalTime();
    /// Whether the sound is off. Inverted until the video has loaded, see bIsMute.
    bool getVideoIsMute() const;
    /// Shows the close button and the control bars when the video does not play.
    void checkVideoPlay();
    /// Adopts the system volume: updates the mute flag and button, and sends "video_volumechange" ("0" muted, "1"
    /// audible) with every change. Ignored before the first video.
    void volumeChanged();

    // ====================================================================================== playback/Replay.cpp

    /// Plays the finished video again and re-arms the pause locations and, unless the app has just resumed, the
    /// milestones. Replay trackers are sent only for a tap on the replay button.
    /// @param sender the tapped button; null for a replay by the ad's own rules
    void videoReplay(const UIButton& sender);
    /// Replaces the video, its trackers and its buttons by those of a record from the script. Reloads the player only
    /// when the address differs.
    /// @param record keys v_u, v_tracking, tracking_u, replay_tracking_urls, auto_close, btns, tracking_interval; all
    /// optional
    void playNextVideo(const NSDictionary& record);
    /// Whether the address differs from the current video's; false for null.
    bool checkCanPlayNextVideo(const NSString& address) const;
    /// Discards the player and creates one for strVideoUrl, never from the cache; does nothing without an address.
    void reloadVideo();

    // ==================================================================================== playback/PrePause.cpp

    /// Whether the video has already paused at this location in this viewing.
    /// @param location whole seconds
    bool prePauseStatusAtLocation(std::int32_t location);
    /// Records whether the video has paused at a location; ignored before prePauseStatusAtLocation has been called.
    /// @param atLocation whole seconds
    void setPrePauseStatusWithStatus(bool status, std::int32_t atLocation);
    /// Re-arms every pause location, for a replay.
    void resetPrePauseStatus();
    /// Discards the record of pauses, for another video.
    void clearPrePauseStatus();
    /// Removes all pause locations at the script's request. The tick stays at 0.1 s, because the list is empty, not
    /// absent.
    void cancelPrePauseLocations();

    // =================================================================================== layout/Orientation.cpp

    /// Selects the portrait or landscape arrangement by the ad, the device and the host, and lays the ad out. Does
    /// nothing while a click-through is under way or the in-app browser is open.
    void checkVideoSize() override;
    /// Lays the ad out again after the status bar has turned. Ads with a store page ignore this, because the page turns
    /// the status bar too.
    void checkScreenRotateEvent();
    /// Starts a 5 s timer that checks whether the device has reached the expected orientation.
    void checkDeviceOrientation();
    /// Action of checkDeviceOrientation's timer: lays the ad out again, unless the device has reached the expected
    /// orientation. Either landscape side counts for landscape left.
    void checkIsDeviceOrientationEqualVideoOrientation();
    /// Whether the ad has the arrangement the device would turn to: portrait from landscape left, landscape from
    /// portrait; false in any other orientation.
    bool checkCanOrientation() const;
    /// Lays the ad out in the arrangement that the script asks for.
    /// @param orientation "portrait" or "landscape"; anything else is ignored
    void changeOrientation(const NSString& orientation) override;
    /// Forces the device back to portrait until the video has begun to play.
    void didRotateFromInterfaceOrientation(UIInterfaceOrientation orientation) override;
    /// Whether the status bar is hidden.
    bool ckeckIsStatusbarHide() const;

    // =============================================================================== layout/LandscapeLayout.cpp

    /// Lays out the landscape arrangement: the video fills the screen and is rotated where the interface is upright.
    void setLandscapeFullScreenVideo();

    // ================================================================================ layout/PortraitLayout.cpp

    /// Lays out the portrait arrangement: the video in a band beside the page, or filling the screen with FULL.
    void setPortraitModeScreen();
    /// Places the portrait video and, on a phone, the store page below it. The position is computed once per video.
    void setVideoViewFrame();
    /// Gives the page the space that the video leaves, see webViewFrame.
    void setWebViewSize();

    // ===================================================================================== layout/ButtonBar.cpp

    /// Fills the control bars and adds them to the player. Fetches the brand icon synchronously, which blocks the main
    /// thread.
    /// @param bIsPlayNextVideo a next video keeps the close button's visibility; a first one hides the button
    void setButtonBarToScreen(bool bIsPlayNextVideo);
    /// Computes the frames of the bars and their controls for the current arrangement.
    void setButtonPosition();

    // =============================================================================== layout/VideoVisibility.cpp

    /// Whether the video can be hidden to show the page: it fills the screen, is visible, neither the page nor the
    /// hidden image covers it, and the ad has an arrangement with a page.
    bool checkVideoNeedToHide() const;
    /// Pauses and hides the video to show the page, moves the close button to the page and sends
    /// "video_visibilitychange". Ignored when checkVideoNeedToHide is false.
    void setVideoInvisible();
    /// Shows the hidden video again, moves the close button back and sends "video_visibilitychange". Ignored when
    /// checkVideoNeedToHide is true.
    void setVideoVisible();
    /// Toggles between the portrait band and the landscape full screen.
    void setScreenScale();
    /// Shows the spinner in the middle of the video, until the first play or the end.
    void showVideoProgressbar();

    // =================================================================================== overlay/CloseButton.cpp

    /// Sets the close button's picture, size and tap: close, or hide the video. With a custom close it removes the
    /// button.
    void setVideoCloseButtonImage();
    /// Adds the close button and the countdown to the player; to the page while the video is hidden or its band is not
    /// at the top; the button alone to the hidden image once that is revealed.
    void addVideoCloseButton();
    /// Moves the countdown to the close button's view; creates it hidden at first.
    void addCountDownView();
    /// Countdown tick, every 0.1 s: shows the close button at 0, else updates the countdown.
    void showCloseButton();
    /// Watchdog tick, every second: shows the close button once iBufferingSufferTime has run out. Counts from the start
    /// of the player, whether or not it buffers.
    void showCloseButtonWhenBufferingTimeOut();
    /// Sets whether the page draws its own close control; true removes the close button until the next layout, false
    /// lays the ad out again.
    void MRAIDUseCustomClose(bool uses) override;

    // ==================================================================================== overlay/ControlBar.cpp

    /// Hides or shows the control bars and the play button; after the end of the video the play button stays hidden.
    void setControlBottonInVisible(bool hidden);
    /// Shows the control bars and restarts the timer that hides them; after the end they stay visible.
    void setControlBottonToVisible();
    /// Hides the control bars while the video plays; a paused or finished video keeps them.
    void setControlButtonHide();
    /// Restarts the 3 s timer that hides the control bars.
    void addTimerToHideControlButton();
    /// Handles a tap on the video: shows the control bars, except after the end.
    void setControllerBarHiddenState();

    // ================================================================================= overlay/RemainingTime.cpp

    /// Restarts the playback tick: every 0.1 s with a list of pause locations, even an empty one, else every second.
    void addTimerUpdateRemainder();
    /// Playback tick: sends "video_timeupdate", pauses at pause locations, seeks back after a return to the app and
    /// places the remaining-time label.
    void updateRemainderTime();
    /// Stops the player's timers, but not the buffering watchdog and the "loaded" timer.
    void stopUpdateTimer() override;
    /// Gives a call-to-action button its decoded title and the style of text over the video.
    /// @param setTitleString URL-encoded, see decodedTitle
    void setButtonText(const UIButton& button, const NSString& setTitleString);

    // ==================================================================================== tracking/Progress.cpp

    /// Marks every milestone of the ad as unsent.
    void initSendTrackingState();
    /// Restarts the tracking timer: milestones every second when the ad has any, else the heartbeat.
    /// @param interval seconds between heartbeats; 3 when not positive
    void startTrackingInterval(float interval);
    /// Sends the trackers of the time offsets and milestones that the video has reached; each milestone once per play,
    /// each offset once per ad.
    void checkSendVideoTracking();
    /// Sends the heartbeat while the video plays.
    void sendVideoTrackingToServer();

    // ====================================================================================== tracking/Macros.cpp

    /// The template with its macros replaced, without URL escaping; null for null.
    NSString getTrackingUniqueInfo(const NSString& url) const override;
    /// MD5 (RFC 1321) of the text up to its first zero byte, as 32 lower-case hexadecimal digits; null for null.
    static NSString md5(const NSString& text);

    // ==================================================================================== tracking/Delivery.cpp

    /// Expands and sends each template of a list; the entry "c" counts a click instead.
    void sendTrackingUrls(const NSArray& urls);
    /// Sends one tracker as it is, without expanding macros; ignores null.
    void sendBtnClickTracking(const NSString& url);
    /// Requests one expanded address, or counts a click with the parent for "c"; ignores null.
    void sendTrackingToServer(const NSString& url);
    /// Logs a delivered tracker.
    void didSendTracking(const QoroAdRequest& request);
    /// Logs a failed tracker, which is not sent again.
    void failSendTracking(const QoroAdRequest& request);
    /// Counts a click with the parent ad controller.
    void clickRequester() override;
    /// Forwards a click to the parent ad controller; ignored without one.
    void sendClickFromOtherView();
    /// Sends the impression and marks it as sent in the parent ad controller.
    void sendImpression() override;

    // ============================================================================ clickthrough/ActionButtons.cpp

    /// Builds up to two call-to-action buttons from the ad's records that have a title and work on this device.
    void addActionButton();
    /// Carries out the first button's action.
    void doButtonOneAction();
    /// Carries out the second button's action.
    void doButtonTwoAction();
    /// Sets a button's background from an address, fetched synchronously on the main thread; a failed fetch or an
    /// undecodable picture clears it.
    void setAbilityButtonImage(const UIButton& button, const NSString& fromUrl);
    /// Moves the ad's view into its own full-screen window above the status bar, and makes that window key.
    void showAdActionView();

    // =============================================================================== clickthrough/LaunchType.cpp

    /// Carries out a button's record: sends its trackers, then starts a message, a call, a store page, a calendar
    /// event, or opens an address.
    /// @param info the button's record; null, or one without "data", opens nothing
    void checkLaunchType(const NSDictionary& info);
    /// Opens an address with the system and notifies the kit that the viewer leaves the app; ignores null and empty.
    /// @param openWithBrowser unused: the system chooses the program
    void openOutAppAction(const NSString& url, bool openWithBrowser);
    /// Opens the in-app browser with the options of a button's "data" record; ignores null.
    void openInAppAction(const NSDictionary& data);
    /// Marks the app as left, pauses the video and notifies the kit.
    void doOutAppNotify();
    /// Pauses the video and notifies the kit that a screen opens over the ad.
    void qoroPresent() override;

    // ============================================================================= clickthrough/InAppScreens.cpp

    /// Closes an open in-app browser and creates another one.
    void initInAppWebViewController();
    /// Returns from the in-app browser: forces portrait, restores the ad's window and lays the ad out.
    void closeInAppWebView() override;
    /// Creates the controller of the message and store screens; closes an open one first. Never null.
    std::shared_ptr<ZulixOpenInAppApplicationViewController> getOpenInAppApplicationController();
    /// Returns from a message or store screen and lays the ad out. Writes the field bIsOpenInAppApplication, not the
    /// property.
    void closeInAppApplication() override;

    // ================================================================================ clickthrough/StorePage.cpp

    /// Shows the store page of a product: on a phone in its own window, elsewhere presented over the ad.
    void createAppStoreViewWithStoreId(const NSString& storeId, const NSString& CampaignId, const NSString& ProviderId,
                                       const NSString& AdProviderId);
    /// Removes the store page's window on a phone and makes the host's window key; does nothing elsewhere.
    void removeAppStoreWindow();
    /// Handles the viewer leaving the store page: closes the ad on a phone, else only dismisses the page.
    void didDismissStoreViewController(const std::shared_ptr<QoroAppStoreMockViewController>& page) override;

    // ============================================================================== clickthrough/HiddenImage.cpp

    /// Creates the view of the hidden image, hidden.
    void _createMI();
    /// Counts a mute toggle while the ad has a hidden image: fetches it in the background at the third toggle, shows it
    /// at the eighth.
    void _prepareMI();
    /// Places the hidden image; once it has been revealed, also shows it, pauses the video and puts the close button on
    /// top.
    /// @param frame in points
    /// @param Portrait whether the portrait arrangement places it; a landscape image is turned by a quarter where the
    /// interface is upright
    void _HailMI(const CGRect& frame, bool Portrait);

    // ====================================================================================================== fields
    // Public so that the kit, session recording and tests can read them. Only the controller's operations write them.

    // ------------------------------------------------------------------------------------------ kit collaborators
    /// The ad controller that opened this one; null for none and after the close.
    std::shared_ptr<QoroPhoneGapViewController> parentControllerView;
    UIWindow windowAddOnParent;
    std::weak_ptr<QoroAdDelegate> _delegate;
    /// Null while no in-app browser is open.
    std::shared_ptr<QoroInAppWebViewController> qoroInAppWebViewController;
    /// The store page presented over the ad; null on a phone, where appStoreWindow owns the page.
    std::shared_ptr<QoroAppStoreMockViewController> qoroAppStoreMockViewController;
    /// Phones only: the store page's window.
    UIWindow appStoreWindow;

    // ---------------------------------------------------------------------------------------------------- playback
    MPMoviePlayerViewController playerViewController;
    VideoState videoState{};
    /// Event names by VideoState.
    std::array<std::string_view, 5> arrayVideoState{};
    QoroMoviePlayerStatus qoroMoviePlayerStatus{};
    bool bIsPlay = false;
    bool bIsLoaded = false;
    bool bIsPlayFinish = false;
    /// The first play has been set up.
    bool bIsInitVideoBeginStep = false;
    bool bPlayNextVideo = false;
    /// Position of the last pause, in seconds.
    float fVideoStopTime = 0;
    /// Duration in seconds; 0 while unknown.
    float fTotalTime = 0;
    /// Location in whole seconds, as text → whether the video has paused there in this viewing; null until first read.
    NSMutableDictionary prePauseStatusDict;

    // ------------------------------------------------------------------------------------------------------- sound
    MPMusicPlayerController musicPlayer;
    UISlider volumeSlider;
    /// Output volume at the player's start, 0 to 1; unmuting restores it, or 0.5 where it is 0.
    float fDefaultVolume = 0;
    /// Inverted until the video has loaded: changeVideoStateToLoaded toggles it, which applies bIsDefaultMute.
    bool bIsMute = false;

    // ------------------------------------------------------------------------------------- layout and orientation
    float fScreenWidth = 0;
    float fScreenHeight = 0;
    /// The video's size on the screen, in points.
    float fVideoWidth = 0;
    float fVideoHeight = 0;
    /// Top of the portrait video, in points; −1 until it is placed.
    float fPortraitModeVideoPosY = 0;
    /// UIDeviceOrientation that checkDeviceOrientation waits for; 0 (unknown) while it waits for nothing.
    std::int64_t changeModeOrientation = 0;
    /// UIDeviceOrientation at the start of the last layout.
    std::int64_t currentOrientation = 0;
    bool bIsPortraitOnly = false;
    bool bIsPortraitNow = false;
    /// The ad has only one of the two arrangements.
    bool bOnlyOneSideVideo = false;
    bool bIsVideoOrientationLandscape = false;
    bool bHideVideoToShowWebViewInLandscapeMode = false;
    bool bHideVideoToShowWebViewInPortraitMode = false;
    bool bIsLockLandscapeAndEnterLandscapeLeft = false;
    bool _bIsLockLandscapeAndEnterLandscapeLeft = false;
    bool bDefaultStatusBarHidden = false;
    /// Set at the first play or end; the spinner is not shown again.
    bool bIsStopProgreeebar = false;

    // ---------------------------------------------------------------------------------------------------- controls
    UIView viewTopBackground;
    UIView viewBottomBackground;
    UIView viewButtonBackground;
    UIImageView imgTopBackgroundColor;
    UIImageView imgBottomBackgroundColor;
    UIButton btnMute;
    UIButton btnPlayAndPause;
    UIButton btnScreenScale;
    UIButton btnClose;
    UIButton btnActionOne;
    UIButton btnActionTwo;
    UIButton btnReplay;
    /// Transparent and over the whole video; a tap shows the control bars.
    UIButton btnClickListener;
    UIButton btnReturnToVideo;
    UIButton btnBrandIcon;
    UILabel labelBrandText;
    UILabel labelRemainderTime;
    bool bIsHideControlbutton = false;

    // ------------------------------------------------------------------------------------------------------ closing
    /// Seconds left, in steps of 0.1; a float although the prefix says integer.
    float iCountdownCount = 0;
    /// Seconds until the watchdog shows the close button; negative in the ad means never.
    std::int32_t iBufferingSufferTime = 0;
    /// Nonzero shows the countdown while it runs.
    std::int32_t iShowProgressWheel = 0;
    /// The creative draws its own close control.
    bool bIsUseVideoCustomClose = false;

    // ----------------------------------------------------------------------------------------------------- tracking
    /// Milestone → "0" (unsent) or "1" (sent in this play); null before the first video and after the close.
    NSMutableDictionary dicSendTrackingState;
    /// The ad has milestone trackers; otherwise the heartbeat is used.
    bool bUseVASTTracking = false;

    // ------------------------------------------------------------------------------------------------ click-through
    /// Number of usable buttons, at most 2; until addActionButton runs, the ad's own count, unclamped.
    ButtonPositionMode buttonPosMode{};
    NSDictionary dicButtonOneActionInfo;
    NSDictionary dicButtonTwoActionInfo;
    bool bDoButtonAction = false;
    bool _bDoButtonAction = false;
    bool bIsOpenInAppApplication = false;
    bool _bIsOpenInAppApplication = false;
    bool bGoOutApp = false;

    // ------------------------------------------------------------------------------------------------- hidden image
    /// Mute toggles counted so far.
    std::int64_t miWatchDog = 0;
    /// The image has been revealed; never reset.
    bool isShowMI = false;
    UIImageView miImageView;

    // ------------------------------------------------------------------------------------------------------- timers
    NSTimer timerCheckDeviceOrientation;
    NSTimer timerUpdateRemainderTime;
    NSTimer timerCloseBtnCountdown;
    NSTimer timerBufferSufferTime;
    /// Never started; stopUpdateTimer stops it with the others.
    NSTimer timerCheckVideoPlay;
    NSTimer timerSendTrackingToServer;
    NSTimer timerSetControllerButtonHide;
    NSTimer timerVideoLoaded;

    /// The ad description. Without one, an empty description: reads yield zero or null, and the next call discards
    /// writes.
    QoroVideoAd& ad();
    const QoroVideoAd& ad() const;

private:
    // playback/PlaybackState.cpp: movieStateChange's playing and paused states, moviePlayBackDidFinish's regular end.
    void moviePlays();
    void moviePauses();
    void movieEnds();
    // webbridge/ScriptEvents.cpp: sendEventToJS with one entry.
    void sendEventToJS(const NSString& event, std::string_view key, Value value);
    // tracking/Delivery.cpp: sendTrackingToServer, with the purpose of the request.
    void requestTracker(const NSString& url, RequestPurpose purpose);

    mutable std::unique_ptr<QoroVideoAd> absentAd_;
    EventData eventData_;
};

} // namespace qoro
