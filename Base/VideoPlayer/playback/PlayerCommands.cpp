#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "platform/Numbers.h"

namespace qoro
{

void QoroVideoWebViewController::setPlayOrPause()
{
    if (!qoroMoviePlayer || bHideVideoToShowWebViewInLandscapeMode || bHideVideoToShowWebViewInPortraitMode)
        return;
    if (bIsPlay) {
        qoroMoviePlayer.pause();
        return;
    }
    if (bIsPlayFinish)
        videoReplay(nullptr);
    else
        qoroMoviePlayer.play();
    setControlButtonHide();
}

void QoroVideoWebViewController::setMute()
{
    if (bHideVideoToShowWebViewInLandscapeMode || bHideVideoToShowWebViewInPortraitMode || !musicPlayer)
        return;
    UIImage image;
    if (bIsMute) {
        volumeSlider.setValue(fDefaultVolume > 0 ? fDefaultVolume : 0.5F);
        image = embeddedImage(arrayVideoSounOnButton);
        if (bIsInitVideoBeginStep)
            sendTrackingUrls(ad().arrayUnmuteTrackingUrls);
    } else {
        volumeSlider.setValue(0.0F);
        image = embeddedImage(arrayVideoSoundOffButton);
        if (bIsInitVideoBeginStep)
            sendTrackingUrls(ad().arrayMuteTrackingUrls);
    }
    bIsMute = !bIsMute;
    btnMute.setBackgroundImage(image);
    _prepareMI();
}

void QoroVideoWebViewController::setVideoPlay()
{
    if (!bIsPlay)
        setPlayOrPause();
}

void QoroVideoWebViewController::setVideoPause()
{
    if (bIsPlay) {
        setPlayOrPause();
        setControlBottonToVisible();
    }
}

void QoroVideoWebViewController::setVideoMute()
{
    if (!bIsMute)
        setMute();
}

void QoroVideoWebViewController::setVideoUnmute()
{
    if (bIsMute)
        setMute();
}

void QoroVideoWebViewController::setVideoSeekToTime(float seconds)
{
    qoroMoviePlayer.setCurrentPlaybackTime(static_cast<double>(seconds));
    addTimerToHideControlButton();
    changeMoviePlayerStatus(qoroMoviePlayerStatus == QoroMoviePlayerStatusResuming ? QoroMoviePlayerStatusNone
                                                                                   : QoroMoviePlayerStatusSeeking);
}

std::int32_t QoroVideoWebViewController::getVideoTotalTime()
{
    if (!qoroMoviePlayer)
        return 0;
    if (!(fTotalTime > 0))
        fTotalTime = static_cast<float>(qoroMoviePlayer.duration());
    return truncated(fTotalTime);
}

bool QoroVideoWebViewController::getVideoIsMute() const
{
    return bIsMute;
}

void QoroVideoWebViewController::checkVideoPlay()
{
    if (!bIsPlay) {
        btnClose.setHidden(false);
        setControlBottonToVisible();
    }
}

void QoroVideoWebViewController::volumeChanged()
{
    if (!musicPlayer)
        return;
    bIsMute = !(volumeSlider.value() > 0);
    const UIImage image = bIsMute ? embeddedImage(arrayVideoSoundOffButton) : embeddedImage(arrayVideoSounOnButton);
    sendEventToJS("video_volumechange", {{"volume", bIsMute ? "0" : "1"}});
    btnMute.setBackgroundImage(image);
}

} // namespace qoro
