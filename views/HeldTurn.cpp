#include "views/HeldTurn.h"

#include "platform/UIKit.h"

namespace qoro
{

double held_turn(UIDeviceOrientation device_orientation, UIInterfaceOrientation bar_orientation, CGSize screen,
                 double before)
{
    if (screen.width > screen.height)
        return bar_orientation == UIInterfaceOrientationLandscapeLeft ? HalfTurn : 0;
    switch (device_orientation) {
    case UIDeviceOrientationPortrait:
        return 0;
    case UIDeviceOrientationPortraitUpsideDown:
        return HalfTurn;
    case UIDeviceOrientationLandscapeLeft:
        return -QuarterTurn;
    case UIDeviceOrientationLandscapeRight:
        return QuarterTurn;
    default:
        return before;
    }
}

} // namespace qoro
