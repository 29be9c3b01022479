#include "Base/VideoPlayer/QoroVideoWebViewController.h"

namespace qoro
{

namespace
{
/// How long the device has to reach the orientation that the layout expects.
constexpr double CheckDeviceOrientationSeconds = 5.0;
} // namespace

void QoroVideoWebViewController::checkVideoSize()
{
    if (getBDoButtonAction() || qoroInAppWebViewController)
        return;
    viewBackground.setHidden(false);
    const std::int64_t device = getDeviceOriengation();
    const std::int64_t statusBar = UIApplication::sharedApplication().statusBarOrientation();

    // The host is locked to landscape while the device is held upright.
    if (device == UIDeviceOrientationPortrait && isLandscape(statusBar) && fScreenWidth > fScreenHeight) {
        bIsLockOneSide = true;
        bIsLockOneSideAndIsLandscape = true;
    }

    const bool landscapeWanted = ad().launchOrientation == UIDeviceOrientationLandscapeLeft ||
                                 (isLandscape(device) && ad().landscapeModeType != 0) || ad().portraitModeType == 0;
    const bool heldToLandscape = bIsLockOneSide && isLandscape(statusBar);
    // A full-screen portrait video fills the screen either way.
    if ((!landscapeWanted && !heldToLandscape) || ad().portraitVideoPos == FULL)
        setPortraitModeScreen();
    else
        setLandscapeFullScreenVideo();

    setControlBottonToVisible();
    updateRemainderTime();
}

void QoroVideoWebViewController::checkScreenRotateEvent()
{
    // A store page turns the status bar by itself.
    if (!ad().strStoreId)
        checkVideoSize();
}

void QoroVideoWebViewController::checkDeviceOrientation()
{
    stopTimerWith(timerCheckDeviceOrientation);
    timerCheckDeviceOrientation = NSTimer::scheduledTimerWithTimeInterval(
        CheckDeviceOrientationSeconds,
        action<&QoroVideoWebViewController::checkIsDeviceOrientationEqualVideoOrientation>(
            this, "checkIsDeviceOrientationEqualVideoOrientation"),
        false);
}

void QoroVideoWebViewController::checkIsDeviceOrientationEqualVideoOrientation()
{
    const std::int64_t device = getDeviceOriengation();
    stopTimerWith(timerCheckDeviceOrientation);
    timerCheckDeviceOrientation = nullptr;
    if (changeModeOrientation == UIDeviceOrientationUnknown) {
        checkVideoSize();
        return;
    }
    // Either landscape side will do; upside down does not stand for upright.
    const bool otherLandscapeSide =
        device == UIDeviceOrientationLandscapeRight && changeModeOrientation == UIDeviceOrientationLandscapeLeft;
    if (device == changeModeOrientation || otherLandscapeSide)
        changeModeOrientation = UIDeviceOrientationUnknown;
    else
        checkVideoSize();
}

bool QoroVideoWebViewController::checkCanOrientation() const
{
    // Asked of the arrangement that the device would turn to; landscape right can't.
    switch (getDeviceOriengation()) {
    case UIDeviceOrientationLandscapeLeft:
        return ad().portraitModeType != 0;
    case UIDeviceOrientationPortrait:
        return ad().landscapeModeType != 0;
    default:
        return false;
    }
}

void QoroVideoWebViewController::changeOrientation(const NSString& orientation)
{
    if (orientation.isEqualToString("portrait"))
        setPortraitModeScreen();
    else if (orientation.isEqualToString("landscape"))
        setLandscapeFullScreenVideo();
}

void QoroVideoWebViewController::didRotateFromInterfaceOrientation(std::int64_t /*orientation*/)
{
    if (!bIsInitVideoBeginStep)
        UIDevice::forceOrientation(UIDeviceOrientationPortrait);
}

bool QoroVideoWebViewController::ckeckIsStatusbarHide() const
{
    return UIApplication::sharedApplication().isStatusBarHidden();
}

} // namespace qoro
