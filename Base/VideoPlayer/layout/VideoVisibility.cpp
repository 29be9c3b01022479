#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "platform/Numbers.h"

namespace qoro
{

namespace
{

constexpr double SpinnerSize = 40.0;

/// Offset that centres the spinner in a length, truncated to whole points.
int spinnerStart(float extent)
{
    return truncated((extent - SpinnerSize) * 0.5);
}

} // namespace

bool QoroVideoWebViewController::checkVideoNeedToHide() const
{
    if (ad().bIsWebViewInFront)
        return false;
    if (!bIsFullScreen)
        return false;
    if (qoroMoviePlayer.view().isHidden())
        return false;
    if (!miImageView.isHidden())
        return false;
    const bool inLandscape = ad().landscapeModeType == VIDEO_AND_WEBVIEW && !bHideVideoToShowWebViewInLandscapeMode;
    const bool inPortrait = ad().portraitModeType == VIDEO_AND_WEBVIEW && !bHideVideoToShowWebViewInPortraitMode &&
                            ad().portraitVideoPos == FULL;
    return inLandscape || inPortrait;
}

void QoroVideoWebViewController::setVideoInvisible()
{
    if (!checkVideoNeedToHide())
        return;
    setVideoPause();
    if (ad().landscapeModeType == VIDEO_AND_WEBVIEW) {
        if (ad().bShowHideVideoBtn && !ad().bIsWebViewInFront)
            btnReturnToVideo.setHidden(false);
        bHideVideoToShowWebViewInLandscapeMode = true;
    }
    // Unlike setVideoVisible, this does not check portraitModeType.
    if (ad().portraitVideoPos == FULL)
        bHideVideoToShowWebViewInPortraitMode = true;
    qoroMoviePlayer.view().setHidden(true);
    setVideoCloseButtonImage();
    btnClose.removeFromSuperview();
    webView().addSubview(btnClose);
    sendVideoVisibilityEvent();
}

void QoroVideoWebViewController::setVideoVisible()
{
    if (checkVideoNeedToHide())
        return;
    qoroMoviePlayer.view().setHidden(false);
    if (ad().landscapeModeType == VIDEO_AND_WEBVIEW) {
        if (ad().bShowHideVideoBtn && !ad().bIsWebViewInFront)
            btnReturnToVideo.setHidden(true);
        bHideVideoToShowWebViewInLandscapeMode = false;
    }
    if (ad().portraitVideoPos == FULL && ad().portraitModeType == VIDEO_AND_WEBVIEW)
        bHideVideoToShowWebViewInPortraitMode = false;
    setVideoCloseButtonImage();
    if (bIsFullScreen) {
        btnClose.removeFromSuperview();
        qoroMoviePlayer.view().addSubview(btnClose);
    }
    sendVideoVisibilityEvent();
}

void QoroVideoWebViewController::setScreenScale()
{
    const bool wasFullScreen = bIsFullScreen;
    bIsFullScreen = !wasFullScreen;
    if (wasFullScreen)
        setPortraitModeScreen();
    else
        setLandscapeFullScreenVideo();
}

void QoroVideoWebViewController::showVideoProgressbar()
{
    if (bIsStopProgreeebar)
        return;
    showProgressbarPosX(spinnerStart(fVideoWidth), spinnerStart(fVideoHeight), qoroMoviePlayer.view());
}

} // namespace qoro
