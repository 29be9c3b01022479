#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/playback/HostBounds.h"

namespace qoro
{

namespace
{

/// Whether a value converts to a number; any other type counts as absent.
bool holdsNumber(const Value& value)
{
    return value.is_number() || value.is_string();
}

} // namespace

void QoroVideoWebViewController::videoReplay(const UIButton& sender)
{
    if (qoroMoviePlayerStatus != QoroMoviePlayerStatusResuming) {
        initSendTrackingState();
        changeMoviePlayerStatus(QoroMoviePlayerStatusNone);
    }
    // Only a tap on the replay button sends the replay trackers.
    if (sender && sender == btnReplay) {
        for (const Value& url : ad().arrayReplayTrackingUrls) {
            if (url.string().length() > 0 && !bPlayNextVideo)
                sendBtnClickTracking(getTrackingUniqueInfo(url.string()));
        }
    }
    resetPrePauseStatus();
    bPlayNextVideo = false;
    qoroMoviePlayer.play();
    btnReplay.setHidden(true);
    setControlBottonToVisible();
}

void QoroVideoWebViewController::playNextVideo(const NSDictionary& record)
{
    bIsInitVideoBeginStep = false;
    bPlayNextVideo = true;
    initSendTrackingState();
    const NSString address = record["v_u"].string();
    ad().setDicTrackingUrls(nullptr);
    ad().setStrVideoTrackingUrl(nullptr);
    clearPrePauseStatus();
    if (const NSDictionary urls = record["v_tracking"].dictionary())
        ad().setDicTrackingUrls(urls);
    if (const NSString url = record["tracking_u"].string())
        ad().setStrVideoTrackingUrl(url);
    if (const NSArray urls = record["replay_tracking_urls"].array())
        ad().setArrayReplayTrackingUrls(urls);
    bUseVASTTracking = ad().dicTrackingUrls.count() > 0;
    if (holdsNumber(record["auto_close"]))
        ad().setBIsAutoClose(record["auto_close"].intValue() != 0);
    // A record without a list removes the buttons.
    ad().setArrayButtonsInfo(record["btns"].array());
    addActionButton();
    if (holdsNumber(record["tracking_interval"]))
        startTrackingInterval(record["tracking_interval"].floatValue());
    if (!address.isEqualToString(ad().strVideoUrl)) {
        ad().setStrVideoUrl(address);
        reloadVideo();
    }
}

bool QoroVideoWebViewController::checkCanPlayNextVideo(const NSString& address) const
{
    return address && !address.isEqualToString(ad().strVideoUrl);
}

void QoroVideoWebViewController::reloadVideo()
{
    if (!ad().strVideoUrl)
        return;
    qoroMoviePlayer.pause();
    removeObserverFromQoroMoviePlayer();
    qoroMoviePlayer.view().removeFromSuperview();
    setQoroMoviePlayer(nullptr);
    playerViewController = nullptr;
    fPortraitModeVideoPosY = -1.0F;

    playerViewController = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString(ad().strVideoUrl));
    playerViewController.view().setAutoresizingMask(0);
    setQoroMoviePlayer(playerViewController.moviePlayer());
    qoroMoviePlayer.setMovieSourceType(MPMovieSourceTypeFile);
    qoroMoviePlayer.view().setFrame(hostBounds(rootViewController));
    qoroMoviePlayer.setFullscreen(false);
    qoroMoviePlayer.setScalingMode(MPMovieScalingModeAspectFill);
    qoroMoviePlayer.setRepeatMode(MPMovieRepeatModeNone);
    qoroMoviePlayer.setControlStyle(MPMovieControlStyleNone);
    qoroMoviePlayer.view().setAutoresizingMask(0);
    qoroMoviePlayer.view().addSubview(btnClickListener);
    addObserverToQoroMoviePlayer();
    setButtonBarToScreen(true);
    addActionButton();
    checkVideoSize();
    fTotalTime = static_cast<float>(qoroMoviePlayer.duration());
    addTimerToHideControlButton();
}

} // namespace qoro
