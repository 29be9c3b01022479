#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "platform/Numbers.h"
#include "platform/QoroAdManager.h"

namespace qoro
{

namespace
{

/// Whether a video whose last pause was at stopTime was watched to its end: true from the end to one second past it,
/// false before the end. Times in seconds.
bool watchedToEnd(float stopTime, float totalTime)
{
    float past = stopTime - totalTime;
    if (past < 0)
        past = 2;
    return past <= 1;
}

} // namespace

void QoroVideoWebViewController::movieStateChange(const NSNotification&)
{
    switch (qoroMoviePlayer.playbackState()) {
    case MPMoviePlaybackStateStopped:
        changeVideoState(VideoEnded);
        QoroAdManager::showLog("video stop", ZulixLogTagOfInfo);
        bIsPlay = false;
        break;
    case MPMoviePlaybackStatePlaying:
        moviePlays();
        break;
    case MPMoviePlaybackStatePaused:
        moviePauses();
        break;
    case MPMoviePlaybackStateInterrupted:
        QoroAdManager::showLog("video interrupted", ZulixLogTagOfInfo);
        break;
    case MPMoviePlaybackStateSeekingForward:
        QoroAdManager::showLog("video forward", ZulixLogTagOfInfo);
        break;
    case MPMoviePlaybackStateSeekingBackward:
        QoroAdManager::showLog("video backward", ZulixLogTagOfInfo);
        break;
    default:
        QoroAdManager::showLog("video unknowed", ZulixLogTagOfInfo);
        break;
    }
}

void QoroVideoWebViewController::moviePlays()
{
    // The first play, a replay, a return to the app and a seek do not count as a resume.
    if (qoroMoviePlayerStatus != QoroMoviePlayerStatusResuming &&
        qoroMoviePlayerStatus != QoroMoviePlayerStatusSeeking && !bIsPlayFinish && bIsInitVideoBeginStep)
        sendTrackingUrls(ad().arrayResumeTrackingUrls);
    bPlayNextVideo = false;
    if (!bIsLoaded)
        changeVideoStateToLoaded();
    changeVideoState(VideoPlay);
    stopProgressbar();
    bIsStopProgreeebar = true;
    bIsPlayFinish = false;
    bGoOutApp = false;
    QoroAdManager::showLog("video play", ZulixLogTagOfInfo);
    bIsPlay = true;

    if (!bIsInitVideoBeginStep) {
        sendOrientationEvent();
        fTotalTime = static_cast<float>(qoroMoviePlayer.duration());
        if (!bIsFullScreen)
            addTimerToHideControlButton();
        startTrackingInterval(ad().fTrackingInterval);
        bIsInitVideoBeginStep = true;
        qoroMoviePlayer.view().addSubview(labelRemainderTime);
        fVideoStopTime = 0;
    }

    if (!ad().bIsEndedCloseBtn && iCountdownCount >= 0) {
        stopTimerWith(timerCloseBtnCountdown);
        timerCloseBtnCountdown = NSTimer::scheduledTimerWithTimeInterval(
            0.1, action<&QoroVideoWebViewController::showCloseButton>(this, "showCloseButton"), true);
        countDownView.setHidden(iShowProgressWheel == 0);
    }
    addTimerUpdateRemainder();
    btnPlayAndPause.setHidden(false);
    btnPlayAndPause.setBackgroundImage(embeddedImage(arrayVideoPauseButton));
    btnReplay.setHidden(true);
    setVideoVisible();
    if (qoroMoviePlayerStatus == QoroMoviePlayerStatusSeeking)
        changeMoviePlayerStatus(QoroMoviePlayerStatusNone);
}

void QoroVideoWebViewController::moviePauses()
{
    changeVideoState(VideoPause);
    QoroAdManager::showLog("video pause", ZulixLogTagOfInfo);
    fVideoStopTime = static_cast<float>(qoroMoviePlayer.currentPlaybackTime());
    btnPlayAndPause.setBackgroundImage(embeddedImage(arrayVideoPlayButton));
    bIsPlay = false;
    // The player also reports a pause at its end and during a seek; neither is the viewer's.
    if (qoroMoviePlayer.duration() != qoroMoviePlayer.currentPlaybackTime() &&
        qoroMoviePlayerStatus != QoroMoviePlayerStatusSeeking &&
        qoroMoviePlayerStatus != QoroMoviePlayerStatusTerminating)
        sendTrackingUrls(ad().arrayPauseTrackingUrls);
    if (qoroMoviePlayerStatus == QoroMoviePlayerStatusSeeking)
        changeMoviePlayerStatus(QoroMoviePlayerStatusNone);
    if (qoroMoviePlayer.duration() == qoroMoviePlayer.currentPlaybackTime())
        changeMoviePlayerStatus(QoroMoviePlayerStatusFinishedVideo);
    // On a phone play_video has created the store page.
    if (ad().strStoreId && !QoroAdManager::bIsiPhone())
        createAppStoreViewWithStoreId(ad().strStoreId, ad().strCampaignId, ad().strProviderId, ad().strAdProviderId);
    stopTimerWith(timerCloseBtnCountdown);
}

void QoroVideoWebViewController::moviePlayerLoadStateChanged(const NSNotification&)
{
    if (qoroMoviePlayer.loadState() == MPMovieLoadStatePlayable)
        changeVideoStateToLoaded();
}

void QoroVideoWebViewController::moviePlayBackDidFinish(const NSNotification& notification)
{
    stopProgressbar();
    bIsStopProgreeebar = true;
    switch (notification.userInfo[MPMoviePlayerPlaybackDidFinishReasonUserInfoKey].intValue()) {
    case MPMovieFinishReasonUserExited:
        removeObserverFromQoroMoviePlayer();
        qoroMoviePlayer.view().removeFromSuperview();
        setQoroMoviePlayer(nullptr);
        break;
    case MPMovieFinishReasonPlaybackError:
        qoroMoviePlayer.play();
        NSLog("playbackFinished. Reason: Playback Error");
        btnClose.setHidden(false);
        break;
    case MPMovieFinishReasonPlaybackEnded:
        movieEnds();
        break;
    default:
        break;
    }
}

void QoroVideoWebViewController::movieEnds()
{
    NSLog("playbackFinished. Reason: Playback Ended " + fixed_text(fVideoStopTime, 6));
    const bool reachedEnd = watchedToEnd(fVideoStopTime, fTotalTime);
    if (bUseVASTTracking && reachedEnd)
        sendTrackingUrls(ad().dicTrackingUrls["complete"].array());
    changeVideoState(VideoEnded);
    bIsPlay = false;
    bIsPlayFinish = true;
    setControlBottonInVisible(false);
    btnPlayAndPause.setHidden(true);
    btnReplay.setHidden(false);
    stopTimerWith(timerSetControllerButtonHide);
    timerSetControllerButtonHide = nullptr;
    if (reachedEnd && ad().bIsAutoClose) {
        const ClosingBy video(*this, ClosedBy::Video);
        closeAction();
    }
    if (ad().bIsEndedCloseBtn)
        btnClose.setHidden(false);
    if ((ad().portraitVideoPos == FULL && ad().bIsHideFullPortraitVideoAtEnd) || ad().bIsHideLandscapeVideoAtEnd)
        setVideoInvisible();
    if (ad().bIsAutoReplay && qoroMoviePlayerStatus == QoroMoviePlayerStatusFinishedVideo)
        videoReplay(nullptr);
    const UIColor paleGrey = UIColor::colorWithRed(0.5, 0.5, 0.5, 0.1);
    btnActionOne.setBackgroundColor(paleGrey);
    btnActionTwo.setBackgroundColor(paleGrey);
    if (!ad().bIsEndedCloseBtn) {
        stopTimerWith(timerCloseBtnCountdown);
        timerCloseBtnCountdown = NSTimer::scheduledTimerWithTimeInterval(
            0.1, action<&QoroVideoWebViewController::showCloseButton>(this, "showCloseButton"), true);
        countDownView.setHidden(true);
    }
}

void QoroVideoWebViewController::changeVideoState(VideoState state)
{
    if (state != VideoLoading && timerVideoLoaded.isValid())
        stopTimerWith(timerVideoLoaded);
    videoState = state;
    if (arrayVideoState.size() >= state)
        sendEventToJS(arrayVideoState[state], nullptr);
}

void QoroVideoWebViewController::changeVideoStateToLoaded()
{
    if (bIsLoaded)
        return;
    bIsLoaded = true;
    // bIsMute is inverted until here: this toggle applies the ad's initial setting.
    setMute();
    changeVideoState(VideoLoaded);
}

void QoroVideoWebViewController::changeMoviePlayerStatus(QoroMoviePlayerStatus status)
{
    qoroMoviePlayerStatus = status;
}

} // namespace qoro
