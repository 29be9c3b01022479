#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "Base/VideoPlayer/layout/Frames.h"
#include "Base/VideoPlayer/webbridge/EventNames.h"

namespace qoro
{

namespace
{

constexpr double BrandIconDivisor = 7.0;

/// Rotation of landscape content in an upright interface, in radians.
double turnForDevice(std::int64_t orientation)
{
    return orientation == UIDeviceOrientationLandscapeRight ? -QuarterTurn : QuarterTurn;
}

/// Rotation of landscape content in an interface that is landscape already, in radians.
double turnForLockedHost(std::int64_t statusBar, bool enteredLandscapeLeft)
{
    return (statusBar == UIInterfaceOrientationLandscapeLeft) != enteredLandscapeLeft ? HalfTurn : 0;
}

} // namespace

void QoroVideoWebViewController::setLandscapeFullScreenVideo()
{
    bIsPortraitNow = false;
    currentOrientation = getDeviceOriengation();
    listenerCallbackToJS(event_names::VideoOrientation, eventData_.with("orientation", "landscape"));
    bIsVideoOrientationLandscape = true;
    btnBrandIcon.setFrame(brandIconFrame(fScreenWidth, fScreenHeight, BrandIconDivisor));
    labelBrandText.setHidden(false);
    // The screen is measured upright: its height is the landscape width.
    btnClickListener.setFrame({0, 0, fScreenHeight, fScreenWidth});
    fVideoHeight = fScreenHeight;
    fVideoWidth = fScreenWidth;

    const bool lockedLandscape = bIsLockOneSideAndIsLandscape && bIsMoreThaniOS8;
    if (!lockedLandscape) {
        const CGAffineTransform turn = CGAffineTransformMakeRotation(turnForDevice(getDeviceOriengation()));
        webView().setTransform(turn);
        playerViewController.view().setTransform(turn);
    }

    view().setFrame({0, 0, fScreenHeight, fScreenHeight});
    webView().setFrame({0, 0, fScreenHeight, fScreenHeight});
    viewBackground.setHidden(true);
    bIsFullScreen = true;
    sendOrientationEvent();
    setControlBottonInVisible(false);
    showVideoProgressbar();
    qoroMoviePlayer.setScalingMode(MPMovieScalingModeNone);

    view().removeFromSuperview();
    qoroMoviePlayer.view().removeFromSuperview();
    miImageView.removeFromSuperview();
    if (!lockedLandscape) {
        playerViewController.view().setFrame(windowTempWindow.frame());
        windowTempWindow.addSubview(view());
        windowTempWindow.addSubview(qoroMoviePlayer.view());
        windowTempWindow.addSubview(miImageView);
    } else {
        const CGAffineTransform turn = CGAffineTransformMakeRotation(turnForLockedHost(
            UIApplication::sharedApplication().statusBarOrientation(), getBIsLockLandscapeAndEnterLandscapeLeft()));
        for (const UIView& turned : {view(), UIView(webView()), qoroMoviePlayer.view(), playerViewController.view()}) {
            turned.setTransform(turn);
            turned.setFrame({0, 0, fScreenWidth, fScreenHeight});
            turned.setCenter(middleOf(view().frame()));
        }
        windowTempWindow.addSubview(view());
        windowTempWindow.addSubview(qoroMoviePlayer.view());
        // A square on the screen's width replaces the landscape size above.
        btnClickListener.setFrame({0, 0, fScreenWidth, fScreenWidth});
        miImageView.setTransform(turn);
        windowTempWindow.addSubview(miImageView);
    }
    _HailMI(playerViewController.view().frame(), false);

    if (bIsPortraitOnly && ad().portraitModeType != 0)
        btnScreenScale.setBackgroundImage(embeddedImage(arrayVideoScaleToPortraitButton));
    else
        btnScreenScale.setHidden(true);

    if (getDeviceOriengation() != UIDeviceOrientationLandscapeLeft && !bOnlyOneSideVideo && !bIsLockOneSide) {
        changeModeOrientation = UIDeviceOrientationLandscapeLeft;
        checkDeviceOrientation();
    }
    if (ad().bIsWebViewInFront)
        handleWebViewInFront();
    updateRemainderTime();
    setWebViewSize();
    setButtonPosition();
    setVideoCloseButtonImage();
    addVideoCloseButton();
}

} // namespace qoro
