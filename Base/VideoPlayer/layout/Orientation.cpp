#include "Base/VideoPlayer/QoroVideoWebViewController.h"

namespace qoro
{

namespace
{
/// Time for the device to reach the orientation that the layout expects.
constexpr double CheckDeviceOrientationSeconds = 5.0;
} // namespace

void QoroVideoWebViewController::checkVideoSize()
{
    if (getBDoButtonAction() || qoroInAppWebViewController)
        return;
    viewBackground.setHidden(false);
    const std::int64_t device = getDeviceOriengation();
    const std::int64_t statusBar = UIApplication::sharedApplication().statusBarOrientation();

    // An upright device with a landscape status bar: the host is locked to landscape.
    if (device == UIDeviceOrientationPortrait && isLandscape(statusBar) && fScreenWidth > fScreenHeight) {
        bIsLockOneSide = true;
        bIsLockOneSideAndIsLandscape = true;
    }

    const bool landscapeWanted = ad().launchOrientation == UIDeviceOrientationLandscapeLeft ||
                                 (isLandscape(device) && ad().landscapeModeType != 0) || ad().portraitModeType == 0;
    const bool heldToLandscape = bIsLockOneSide && isLandscape(statusBar);
    // A full-screen portrait video uses the portrait layout in every orientation.
    if ((!landscapeWanted && !heldToLandscape) || ad().portraitVideoPos == FULL)
        setPortraitModeScreen();
    else
        setLandscapeFullScreenVideo();

    setControlBottonToVisible();
    updateRemainderTime();
}

void QoroVideoWebViewController::checkScreenRotateEvent()
{
    // A store page also turns the status bar.
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
    // Either landscape side is accepted; upside down does not count as upright.
    const bool otherLandscapeSide =
        device == UIDeviceOrientationLandscapeRight && changeModeOrientation == UIDeviceOrientationLandscapeLeft;
    if (device == changeModeOrientation || otherLandscapeSide)
        changeModeOrientation = UIDeviceOrientationUnknown;
    else
        checkVideoSize();
}

bool QoroVideoWebViewController::checkCanOrientation() const
{
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

void QoroVideoWebViewController::didRotateFromInterfaceOrientation(UIInterfaceOrientation /*orientation*/)
{
    if (!bIsInitVideoBeginStep)
        UIDevice::forceOrientation(UIDeviceOrientationPortrait);
}

bool QoroVideoWebViewController::ckeckIsStatusbarHide() const
{
    return UIApplication::sharedApplication().isStatusBarHidden();
}

} // namespace qoro
