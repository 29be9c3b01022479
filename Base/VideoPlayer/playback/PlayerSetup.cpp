#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/playback/HostBounds.h"
#include "platform/QoroAdManager.h"
#include "platform/ZulixVideoCacheManager.h"

#include <string_view>

namespace qoro
{

namespace
{

/// Height of the tall screen in points; compared exactly.
constexpr double tallScreenHeight = 812;

NSURL contentAddress(const NSString& url, bool fromCache)
{
    const ZulixVideoCacheManager& cache = ZulixVideoCacheManager::sharedInstance();
    if (cache.checkFileExist(url) && fromCache)
        return NSURL::fileURLWithPath(cache.getFilePathWithUrl(url));
    return NSURL::URLWithString(url);
}

struct PlayerNotification {
    std::string_view name;
    /// Restricts the subscription to the current player; otherwise any sender matches.
    bool ofCurrentPlayer;
    Action (*handler)(QoroVideoWebViewController*);
};

constexpr PlayerNotification playerNotifications[] = {
    {MPMoviePlayerPlaybackDidFinishNotification, true,
     [](QoroVideoWebViewController* self) {
         return action<&QoroVideoWebViewController::moviePlayBackDidFinish>(self, "moviePlayBackDidFinish:");
     }},
    {MPMoviePlayerLoadStateDidChangeNotification, true,
     [](QoroVideoWebViewController* self) {
         return action<&QoroVideoWebViewController::moviePlayerLoadStateChanged>(self, "moviePlayerLoadStateChanged:");
     }},
    {MPMoviePlayerPlaybackStateDidChangeNotification, false,
     [](QoroVideoWebViewController* self) {
         return action<&QoroVideoWebViewController::movieStateChange>(self, "movieStateChange:");
     }},
    {MPMoviePlayerDidExitFullscreenNotification, false,
     [](QoroVideoWebViewController* self) {
         return action<&QoroPhoneGapViewController::exitFullScreen>(self, "exitFullScreen:");
     }},
};

} // namespace

void QoroVideoWebViewController::play_video(const NSString& url)
{
    setQoroMoviePlayer(nullptr);

    if (shouldAutorotateToInterfaceOrientation(UIInterfaceOrientationPortrait) &&
        !shouldAutorotateToInterfaceOrientation(UIInterfaceOrientationLandscapeRight) &&
        !shouldAutorotateToInterfaceOrientation(UIInterfaceOrientationLandscapeLeft))
        bIsPortraitOnly = true;

    if (verifyWebUrlWithString(ad().strWebViewUrl)) {
        loadWebView(ad().strWebViewUrl);
    } else {
        if (ad().portraitVideoPos == FULL && ad().portraitModeType == VIDEO_AND_WEBVIEW) {
            ad().setPortraitModeType(ONLY_VIDEO);
            ad().setBIsHideFullPortraitVideoAtEnd(false);
        }
        // A landscape-only ad keeps its own setting for hiding the video at the end.
        if (ad().portraitModeType != 0 || ad().landscapeModeType == 0)
            ad().setBIsHideLandscapeVideoAtEnd(false);
        ad().setBIsWebViewInFront(false);
    }

    if (iBufferingSufferTime >= 0) {
        stopTimerWith(timerBufferSufferTime);
        timerBufferSufferTime = NSTimer::scheduledTimerWithTimeInterval(
            1.0,
            action<&QoroVideoWebViewController::showCloseButtonWhenBufferingTimeOut>(
                this, "showCloseButtonWhenBufferingTimeOut"),
            true);
    }

    NSMutableDictionary result{{"Result", "9"}};
    if (url.length() == 0) {
        result.setObject("url = nil.", "e");
    } else {
        dicSendTrackingState = NSMutableDictionary::dictionary();
        bUseVASTTracking = ad().dicTrackingUrls.count() > 0;
        initSendTrackingState();
        changeVideoState(VideoLoading);
        bIsLoaded = false;
        // Sends "loaded" even if the player never reports a playable load state.
        stopTimerWith(timerVideoLoaded);
        timerVideoLoaded = NSTimer::scheduledTimerWithTimeInterval(
            1.5, action<&QoroVideoWebViewController::changeVideoStateToLoaded>(this, "changeVideoStateToLoaded"),
            false);

        playerViewController =
            MPMoviePlayerViewController::initWithContentURL(contentAddress(url, ad().bIsUseVideoCache));

        const MPVolumeView volumeView = MPVolumeView::create({20, 100, view().bounds().width - 40, 50});
        volumeView.setShowsVolumeSlider(false);
        volumeView.setShowsRouteButton(false);
        view().addSubview(volumeView);
        if (const UISlider slider = volumeView.firstSlider())
            volumeSlider = slider;
        musicPlayer = MPMusicPlayerController::applicationMusicPlayer();
        fDefaultVolume = AVAudioSession::outputVolume();
        // Inverted: changeVideoStateToLoaded toggles it.
        if (ad().bIsDefaultMute)
            bIsMute = false;

        playerViewController.view().setAutoresizingMask(0);
        setQoroMoviePlayer(playerViewController.moviePlayer());
        qoroMoviePlayer.view().setFrame(hostBounds(rootViewController));
        qoroMoviePlayer.setFullscreen(false);
        qoroMoviePlayer.setScalingMode(MPMovieScalingModeAspectFill);
        qoroMoviePlayer.setShouldAutoplay(ad().bIsAutoStart);
        qoroMoviePlayer.setRepeatMode(MPMovieRepeatModeNone);
        qoroMoviePlayer.setControlStyle(MPMovieControlStyleNone);
        qoroMoviePlayer.view().setAutoresizingMask(0);
        qoroMoviePlayer.view().addSubview(btnClickListener);
        qoroMoviePlayer.view().setOpaque(true);

        view().setOpaque(false);
        webView().setOpaque(false);
        view().setBackgroundColor(UIColor::clearColor());
        if (UIScreen::mainScreenBounds().value_or(CGSize{}).height == tallScreenHeight)
            view().setBackgroundColor(UIColor::blackColor().colorWithAlphaComponent(0.7));
        webView().setBackgroundColor(UIColor::clearColor());
        if (ad().strBackgroundColor) {
            view().setBackgroundColor(formatColor(ad().strBackgroundColor));
        } else {
            webView().setBackgroundColor(UIColor::clearColor());
            webView().setAlpha(0.0);
        }

        view().setFrame({0, 0, fScreenWidth, fScreenHeight});
        webView().setFrame({0, 0, fScreenWidth, fScreenHeight});
        view().addSubview(webView());
        showAdActionView();
        setButtonBarToScreen(false);
        if (ad().portraitModeType != 0 && ad().landscapeModeType != 0)
            bOnlyOneSideVideo = false;
        // On other devices each pause creates the store page.
        if (ad().strStoreId && QoroAdManager::bIsiPhone())
            createAppStoreViewWithStoreId(ad().strStoreId, ad().strCampaignId, ad().strProviderId,
                                          ad().strAdProviderId);
        checkVideoSize();
        addObserverToQoroMoviePlayer();
        result.setObject("1", "Result");
        if (!bIsPlayFinish)
            addTimerToHideControlButton();
    }

    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    notifications.addObserver(action<&QoroVideoWebViewController::interruption>(this, "interruption:"),
                              AVAudioSessionInterruptionNotification, AVAudioSession::sharedInstance());
    notifications.postNotificationName("NotifyOpenVideoExResult", nullptr, result);
}

void QoroVideoWebViewController::addObserverToQoroMoviePlayer()
{
    for (const PlayerNotification& row : playerNotifications)
        NSNotificationCenter::defaultCenter().addObserver(row.handler(this), row.name,
                                                          row.ofCurrentPlayer ? qoroMoviePlayer.identity() : nullptr);
}

void QoroVideoWebViewController::removeObserverFromQoroMoviePlayer()
{
    for (const PlayerNotification& row : playerNotifications)
        NSNotificationCenter::defaultCenter().removeObserver(
            this, row.name, row.ofCurrentPlayer ? qoroMoviePlayer.identity() : nullptr);
}

void QoroVideoWebViewController::interruption(const NSNotification& notification)
{
    switch (notification.userInfo[AVAudioSessionInterruptionTypeKey].intValue()) {
    case 1:
        beginInterruption();
        break;
    case 0:
        endInterruption();
        break;
    default:
        break;
    }
}

void QoroVideoWebViewController::beginInterruption()
{
    if (!qoroMoviePlayer)
        return;
    qoroMoviePlayer.pause();
    qoroMoviePlayer.view().removeFromSuperview();
}

void QoroVideoWebViewController::endInterruption()
{
    checkVideoSize();
    if (!_bDoButtonAction)
        setPlayOrPause();
}

} // namespace qoro
