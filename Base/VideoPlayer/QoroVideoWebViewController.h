#pragma once

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

/// How many call-to-action buttons are shown; 0 for none.
enum ButtonPositionMode : std::int32_t { ButtonPositionMode_OneButton = 1, ButtonPositionMode_TwoButton = 2 };

/// What the script is told of the player.
enum VideoState : std::uint32_t { VideoLoading = 0, VideoLoaded = 1, VideoPlay = 2, VideoPause = 3, VideoEnded = 4 };

/// Why the player is moving. Playing and Terminating are never assigned; Terminating is honoured where it is tested.
enum QoroMoviePlayerStatus : std::int64_t {
    QoroMoviePlayerStatusNone = 0,
    QoroMoviePlayerStatusResuming = 1,
    QoroMoviePlayerStatusPlaying = 2,
    QoroMoviePlayerStatusSeeking = 3,
    QoroMoviePlayerStatusFinishedVideo = 4,
    QoroMoviePlayerStatusTerminating = 5,
};

/// The video ad on the whole screen: one object whose operations stand in rooms, each under the comment that names its
/// file. It plays the video beside, under or over the creative's page, draws its own controls, follows the device's
/// rotation, reports progress, talks with the creative's script and carries out click-throughs. Main thread only.
///
/// Made by create(), then init(); then the kit sets its parent and opens the ad.
class QoroVideoWebViewController : public QoroPhoneGapViewController, public QoroAppStoreMockViewControllerDelegate
{
public:
    static std::shared_ptr<QoroVideoWebViewController> create();
    ~QoroVideoWebViewController() override;

    // =============================================================== QoroVideoWebViewController.cpp: life and close

    QoroVideoWebViewController* init() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               std::function<void()> completion) override;
    void appWillEnterForeground();
    /// The ad controller that opened this one; null for none.
    void setParentViewController(const std::shared_ptr<QoroPhoneGapViewController>& parent);
    const std::shared_ptr<QoroPhoneGapViewController>& getParentViewController() const;
    void addOnParentWindow(const UIWindow& window);
    void closeAction() override;
    void MRAIDClose() override;
    AdFacts facts() const override;
    void removeViewAndButton();
    void removeBtnClose();
    void removeTempWindow();

    // Properties with a storage of their own. The three flags below have a second storage, a field of the same name
    // without the underscore, which closeInAppApplication alone writes; this is how it is meant to be.
    void setQoroDelegate(const std::weak_ptr<QoroAdDelegate>& delegate) { _delegate = delegate; }
    const std::weak_ptr<QoroAdDelegate>& getQoroDelegate() const { return _delegate; }
    void setBDoButtonAction(bool doing) { _bDoButtonAction = doing; }
    bool getBDoButtonAction() const { return _bDoButtonAction; }
    void setBIsOpenInAppApplication(bool open) { _bIsOpenInAppApplication = open; }
    bool getBIsOpenInAppApplication() const { return _bIsOpenInAppApplication; }
    void setBIsLockLandscapeAndEnterLandscapeLeft(bool left) { _bIsLockLandscapeAndEnterLandscapeLeft = left; }
    bool getBIsLockLandscapeAndEnterLandscapeLeft() const { return _bIsLockLandscapeAndEnterLandscapeLeft; }

    // ================================================================================ webbridge/AdResponse.cpp

    /// The kit's entry point.
    /// @param DefaultPosY points
    void openInAppVideoView(const std::shared_ptr<QoroVideoAd>& ad, float DefaultPosY);
    /// Whether the text contains "http" anywhere; false for null.
    bool verifyWebUrlWithString(const NSString& url) const;
    void loadWebView(const NSString& url);
    void didAdRequester(const QoroAdRequest& request);
    using QoroPhoneGapViewController::failAdRequest;
    void failAdRequest(const NSError& error) override;
    using QoroPhoneGapViewController::webView;
    bool webView(const UIWebView& webView, const NSURL& shouldStartLoadWithRequest,
                 std::int64_t navigationType) override;
    void webViewDidStartLoad(const UIWebView& webView) override;
    void webViewDidFinishLoad(const UIWebView& webView) override;
    void openNewWebAction();
    void handleWebViewInFront();

    // =============================================================================== webbridge/ScriptEvents.cpp

    void addEventListener(const NSString& name, const Value& EventId, const Value& successCallBack) override;
    std::int32_t removeEventListener(const NSString& name, const Value& EventId) override;
    /// @param withResult wrapped under the key "e"; null for none
    void sendEventToJS(const NSString& event, const NSDictionary& withResult);
    void sendOrientationEvent();
    void sendVideoVisibilityEvent();

    // ============================================================================= webbridge/ScriptCommands.cpp

    /// One table takes a command's name to its operation.
    ScriptAnswer callFromScript(const ScriptMessage& message) override;

    // ================================================================================== playback/PlayerSetup.cpp

    /// @param url the video's address; null or empty for none
    void play_video(const NSString& url);
    void addObserverToQoroMoviePlayer();
    void removeObserverFromQoroMoviePlayer();
    void interruption(const NSNotification& notification);
    void beginInterruption();
    void endInterruption();

    // ================================================================================ playback/PlaybackState.cpp

    void movieStateChange(const NSNotification& notification);
    void moviePlayerLoadStateChanged(const NSNotification& notification);
    void moviePlayBackDidFinish(const NSNotification& notification);
    void changeVideoState(VideoState state);
    void changeVideoStateToLoaded();
    void changeMoviePlayerStatus(QoroMoviePlayerStatus status);

    // ============================================================================== playback/PlayerCommands.cpp

    void setPlayOrPause();
    void setMute();
    void setVideoPlay();
    void setVideoPause();
    void setVideoMute();
    void setVideoUnmute();
    /// @param seconds from the start
    void setVideoSeekToTime(float seconds);
    /// Whole seconds, truncated; 0 without a player.
    std::int32_t getVideoTotalTime();
    bool getVideoIsMute() const;
    void checkVideoPlay();
    void volumeChanged();

    // ====================================================================================== playback/Replay.cpp

    /// @param sender who asked; null for nobody in particular
    void videoReplay(const UIButton& sender);
    void playNextVideo(const NSDictionary& record);
    bool checkCanPlayNextVideo(const NSString& address) const;
    void reloadVideo();

    // ==================================================================================== playback/PrePause.cpp

    bool prePauseStatusAtLocation(std::int32_t location);
    void setPrePauseStatusWithStatus(bool status, std::int32_t atLocation);
    void resetPrePauseStatus();
    void clearPrePauseStatus();
    void cancelPrePauseLocations();

    // =================================================================================== layout/Orientation.cpp

    void checkVideoSize() override;
    void checkScreenRotateEvent();
    void checkDeviceOrientation();
    void checkIsDeviceOrientationEqualVideoOrientation();
    bool checkCanOrientation() const;
    /// @param orientation "portrait" or "landscape"; anything else is ignored
    void changeOrientation(const NSString& orientation) override;
    void didRotateFromInterfaceOrientation(std::int64_t orientation) override;
    bool ckeckIsStatusbarHide() const;

    // =============================================================================== layout/LandscapeLayout.cpp

    void setLandscapeFullScreenVideo();

    // ================================================================================ layout/PortraitLayout.cpp

    void setPortraitModeScreen();
    void setVideoViewFrame();
    void setWebViewSize();

    // ===================================================================================== layout/ButtonBar.cpp

    void setButtonBarToScreen(bool bIsPlayNextVideo);
    void setButtonPosition();

    // =============================================================================== layout/VideoVisibility.cpp

    bool checkVideoNeedToHide() const;
    void setVideoInvisible();
    void setVideoVisible();
    void setScreenScale();
    void showVideoProgressbar();

    // =================================================================================== overlay/CloseButton.cpp

    void setVideoCloseButtonImage();
    void addVideoCloseButton();
    void addCountDownView();
    void showCloseButton();
    void showCloseButtonWhenBufferingTimeOut();
    void MRAIDUseCustomClose(bool uses) override;

    // ==================================================================================== overlay/ControlBar.cpp

    void setControlBottonInVisible(bool hidden);
    void setControlBottonToVisible();
    void setControlButtonHide();
    void addTimerToHideControlButton();
    void setControllerBarHiddenState();

    // ================================================================================= overlay/RemainingTime.cpp

    void addTimerUpdateRemainder();
    void updateRemainderTime();
    void stopUpdateTimer() override;
    void setButtonText(const UIButton& button, const NSString& setTitleString);

    // ==================================================================================== tracking/Progress.cpp

    void initSendTrackingState();
    /// @param interval seconds; 3 when not positive
    void startTrackingInterval(float interval);
    void checkSendVideoTracking();
    void sendVideoTrackingToServer();

    // ====================================================================================== tracking/Macros.cpp

    /// The template with its macros replaced; null for null.
    NSString getTrackingUniqueInfo(const NSString& url) const;
    /// 32 lower-case hexadecimal digits; null for null.
    static NSString md5(const NSString& text);

    // ==================================================================================== tracking/Delivery.cpp

    void sendTrackingUrls(const NSArray& urls);
    void sendBtnClickTracking(const NSString& url);
    void sendTrackingToServer(const NSString& url);
    void didSendTracking(const QoroAdRequest& request);
    void failSendTracking(const QoroAdRequest& request);
    void clickRequester() override;
    void sendClickFromOtherView();
    void sendImpression() override;

    // ============================================================================ clickthrough/ActionButtons.cpp

    void addActionButton();
    void doButtonOneAction();
    void doButtonTwoAction();
    void setAbilityButtonImage(const UIButton& button, const NSString& fromUrl);
    void showAdActionView();

    // =============================================================================== clickthrough/LaunchType.cpp

    void checkLaunchType(const NSDictionary& info);
    void openOutAppAction(const NSString& url, bool openWithBrowser);
    void openInAppAction(const NSDictionary& data);
    void doOutAppNotify();
    void qoroPresent() override;

    // ============================================================================= clickthrough/InAppScreens.cpp

    void initInAppWebViewController();
    void closeInAppWebView() override;
    std::shared_ptr<ZulixOpenInAppApplicationViewController> getOpenInAppApplicationController();
    void closeInAppApplication() override;

    // ================================================================================ clickthrough/StorePage.cpp

    void createAppStoreViewWithStoreId(const NSString& storeId, const NSString& CampaignId, const NSString& ProviderId,
                                       const NSString& AdProviderId);
    void removeAppStoreWindow();
    void didDismissStoreViewController(const std::shared_ptr<QoroAppStoreMockViewController>& page) override;

    // ============================================================================== clickthrough/HiddenImage.cpp

    void _createMI();
    void _prepareMI();
    void _HailMI(const CGRect& frame, bool Portrait);

    // ====================================================================================================== fields
    // Open to the kit, to sessions that record them and to tests; the controller's operations alone write them.

    // ------------------------------------------------------------------------------------------ the kit around it
    std::shared_ptr<QoroPhoneGapViewController> parentControllerView;
    UIWindow windowAddOnParent;
    std::weak_ptr<QoroAdDelegate> _delegate;
    std::shared_ptr<QoroInAppWebViewController> qoroInAppWebViewController;
    std::shared_ptr<QoroAppStoreMockViewController> qoroAppStoreMockViewController;
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
    /// Seconds; where the video last paused.
    float fVideoStopTime = 0;
    /// Seconds.
    float fTotalTime = 0;
    /// Location as text → whether the video has paused there in this viewing; null until asked.
    NSMutableDictionary prePauseStatusDict;

    // ------------------------------------------------------------------------------------------------------- sound
    MPMusicPlayerController musicPlayer;
    UISlider volumeSlider;
    /// The output volume found at the player's start, 0 to 1; what unmuting restores.
    float fDefaultVolume = 0;
    /// Inverted until the video has loaded: the first toggle applies the ad's wish.
    bool bIsMute = false;

    // ------------------------------------------------------------------------------------- layout and orientation
    float fScreenWidth = 0;
    float fScreenHeight = 0;
    /// The video's size on the screen, in points.
    float fVideoWidth = 0;
    float fVideoHeight = 0;
    /// Points; −1 until the band is placed.
    float fPortraitModeVideoPosY = 0;
    /// What the last layout expects the device to reach; 0 for nothing.
    std::int64_t changeModeOrientation = 0;
    /// The device's at the start of the last layout.
    std::int64_t currentOrientation = 0;
    bool bIsPortraitOnly = false;
    bool bIsPortraitNow = false;
    /// The ad has but one of the two arrangements.
    bool bOnlyOneSideVideo = false;
    bool bIsVideoOrientationLandscape = false;
    bool bHideVideoToShowWebViewInLandscapeMode = false;
    bool bHideVideoToShowWebViewInPortraitMode = false;
    bool bIsLockLandscapeAndEnterLandscapeLeft = false;
    bool _bIsLockLandscapeAndEnterLandscapeLeft = false;
    bool bDefaultStatusBarHidden = false;
    /// The spinner is not to be shown any more.
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
    /// Invisible, over the whole video: a tap on it shows the bars.
    UIButton btnClickListener;
    UIButton btnReturnToVideo;
    UIButton btnBrandIcon;
    UILabel labelBrandText;
    UILabel labelRemainderTime;
    bool bIsHideControlbutton = false;

    // ------------------------------------------------------------------------------------------------------ closing
    /// Seconds left, whole to begin with; a float although the name says integer.
    float iCountdownCount = 0;
    std::int32_t iBufferingSufferTime = 0;
    std::int32_t iShowProgressWheel = 0;
    /// The creative draws its own close control.
    bool bIsUseVideoCustomClose = false;

    // ----------------------------------------------------------------------------------------------------- tracking
    /// Milestone → "0" or "1" (sent in this play); null before a video and after the close.
    NSMutableDictionary dicSendTrackingState;
    bool bUseVASTTracking = false;

    // ------------------------------------------------------------------------------------------------ click-through
    /// The usable buttons, at most 2; before they are built, the ad's own count, unclamped.
    ButtonPositionMode buttonPosMode{};
    NSDictionary dicButtonOneActionInfo;
    NSDictionary dicButtonTwoActionInfo;
    bool bDoButtonAction = false;
    bool _bDoButtonAction = false;
    bool bIsOpenInAppApplication = false;
    bool _bIsOpenInAppApplication = false;
    bool bGoOutApp = false;

    // ------------------------------------------------------------------------------------------------- hidden image
    std::int64_t miWatchDog = 0;
    bool isShowMI = false;
    UIImageView miImageView;

    // ------------------------------------------------------------------------------------------------------- timers
    NSTimer timerCheckDeviceOrientation;
    NSTimer timerUpdateRemainderTime;
    NSTimer timerCloseBtnCountdown;
    NSTimer timerBufferSufferTime;
    /// Never started; stopped with the others.
    NSTimer timerCheckVideoPlay;
    NSTimer timerSendTrackingToServer;
    NSTimer timerSetControllerButtonHide;
    NSTimer timerVideoLoaded;

    /// The ad description; while there is none, an empty one to which writing is lost, so that every reading is zero.
    QoroVideoAd& ad();
    const QoroVideoAd& ad() const;

private:
    // playback/PlaybackState.cpp: what movieStateChange and moviePlayBackDidFinish do for one state or reason.
    void moviePlays();
    void moviePauses();
    void movieEnds();

    mutable std::unique_ptr<QoroVideoAd> absentAd_;
};

} // namespace qoro
