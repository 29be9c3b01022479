#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "Base/VideoPlayer/layout/Frames.h"
#include "Base/VideoPlayer/webbridge/EventNames.h"
#include "platform/QoroAdManager.h"

namespace qoro
{

namespace
{
constexpr double BrandIconDivisor = 9.0;
} // namespace

void QoroVideoWebViewController::setPortraitModeScreen()
{
    bIsPortraitNow = true;
    currentOrientation = getDeviceOriengation();
    listenerCallbackToJS(event_names::VideoOrientation, eventData_.with("orientation", "portrait"));
    bIsVideoOrientationLandscape = false;
    btnBrandIcon.setFrame(brandIconFrame(fScreenWidth, fScreenHeight, BrandIconDivisor));
    labelBrandText.setHidden(true);

    const ViewPosition position = ad().portraitVideoPos;
    if (position != FULL) {
        setVideoVisible();
        // A band is always visible, even where setVideoVisible declines.
        if (qoroMoviePlayer.view().isHidden())
            qoroMoviePlayer.view().setHidden(false);
    }
    qoroMoviePlayer.view().removeFromSuperview();
    btnScreenScale.setHidden(false);
    bIsFullScreen = position == FULL;
    sendOrientationEvent();

    const CGAffineTransform upright = CGAffineTransformMakeRotation(0);
    webView().setTransform(upright);
    playerViewController.view().setTransform(upright);
    qoroMoviePlayer.setScalingMode(MPMovieScalingModeAspectFit);
    qoroMoviePlayer.view().setAutoresizingMask(0);
    qoroMoviePlayer.setFullscreen(false);

    if (position != FULL) {
        fVideoHeight = bandHeight(fScreenWidth, ad().fVideoWidth, ad().fVideoHeight);
    } else {
        const ScreenInsets insets = screenInsets(UIScreen::mainScreenBounds());
        fVideoHeight = static_cast<float>(fScreenHeight - insets.top - insets.bottom);
    }
    fVideoWidth = fScreenWidth;
    btnClickListener.setFrame({0, 0, fVideoWidth, fVideoHeight});
    showVideoProgressbar();

    view().setFrame({0, 0, fScreenWidth, fScreenHeight});
    webView().setFrame({0, 0, fScreenWidth, fScreenHeight});
    qoroMoviePlayer.view().setFrame({0, 0, fVideoWidth, fVideoHeight});
    view().setFrame({0, 0, view().frame().width, view().frame().height});

    if (bIsPortraitOnly && position != FULL && ad().landscapeModeType != 0)
        btnScreenScale.setBackgroundImage(embeddedImage(arrayVideoFullscreenButton));
    else
        btnScreenScale.setHidden(true);

    const std::int64_t device = getDeviceOriengation();
    if (position == FULL) {
        qoroMoviePlayer.setFullscreen(true);
        // The host is locked to landscape: rotate the full-screen video back upright.
        if (!bIsLockOneSideAndIsPortrait && bIsMoreThaniOS8 && bIsLockOneSide) {
            const CGAffineTransform turn =
                CGAffineTransformMakeRotation(device == UIDeviceOrientationLandscapeRight ? QuarterTurn : -QuarterTurn);
            webView().setTransform(turn);
            playerViewController.view().setTransform(turn);
            btnClickListener.setFrame({0, 0, fScreenHeight, fScreenWidth});
        }
    }
    windowTempWindow.addSubview(view());
    windowTempWindow.addSubview(qoroMoviePlayer.view());

    if (device != UIDeviceOrientationPortrait && !bOnlyOneSideVideo && !bIsLockOneSide) {
        changeModeOrientation = UIDeviceOrientationPortrait;
        checkDeviceOrientation();
    }
    if (ad().bIsWebViewInFront)
        handleWebViewInFront();
    updateRemainderTime();

    // Place the upper one first: the lower one's frame depends on it.
    if (position == TOP) {
        setVideoViewFrame();
        setWebViewSize();
    } else {
        setWebViewSize();
        setVideoViewFrame();
    }

    miImageView.removeFromSuperview();
    windowTempWindow.addSubview(miImageView);
    _HailMI(playerViewController.view().frame(), true);
    setButtonPosition();
    setVideoCloseButtonImage();
    addVideoCloseButton();
}

void QoroVideoWebViewController::setVideoViewFrame()
{
    // Placed once; later layouts keep the position.
    if (fPortraitModeVideoPosY < 0) {
        switch (ad().portraitVideoPos) {
        case MIDDLE:
            fPortraitModeVideoPosY = (fScreenHeight - fVideoHeight) * 0.5F;
            break;
        case BOTTOM:
            fPortraitModeVideoPosY = static_cast<float>(CGRectGetMaxY(webView().frame()));
            break;
        default:
            fPortraitModeVideoPosY = static_cast<float>(screenInsets(UIScreen::mainScreenBounds()).top);
        }
    }
    playerViewController.view().setFrame({0, fPortraitModeVideoPosY, fVideoWidth, fVideoHeight});

    // The store page fills the space below the video.
    if (QoroAdManager::bIsiPhone() && appStoreWindow) {
        const double y = CGRectGetMaxY(playerViewController.view().frame());
        appStoreWindow.setFrame({0, y, fScreenWidth, fScreenHeight - y});
    }
}

void QoroVideoWebViewController::setWebViewSize()
{
    webView().setFrame(webViewFrame({
        .portraitNow = bIsPortraitNow,
        .videoPosition = ad().portraitVideoPos,
        .screenHeight = fScreenHeight,
        .insets = screenInsets(UIScreen::mainScreenBounds()),
        .videoWidth = fVideoWidth,
        .videoHeight = fVideoHeight,
        .playerBottom = CGRectGetMaxY(playerViewController.view().frame()),
    }));
}

} // namespace qoro
