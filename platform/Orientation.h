#pragma once

#include "platform/Export.h"

#include <cstdint>

namespace QORO_EXPORT qoro
{

/// How the device is held.
enum UIDeviceOrientation : std::int64_t {
    UIDeviceOrientationUnknown = 0,
    UIDeviceOrientationPortrait = 1,
    UIDeviceOrientationPortraitUpsideDown = 2,
    UIDeviceOrientationLandscapeLeft = 3,
    UIDeviceOrientationLandscapeRight = 4,
    UIDeviceOrientationFaceUp = 5,
    UIDeviceOrientationFaceDown = 6,
};

/// How the application's interface is rotated. The landscape values are swapped relative to UIDeviceOrientation.
enum UIInterfaceOrientation : std::int64_t {
    UIInterfaceOrientationPortrait = 1,
    UIInterfaceOrientationPortraitUpsideDown = 2,
    UIInterfaceOrientationLandscapeRight = 3,
    UIInterfaceOrientationLandscapeLeft = 4,
};

/// Whether a device or interface orientation is landscape (3 or 4).
inline bool isLandscape(std::int64_t orientation)
{
    return static_cast<std::uint64_t>(orientation) - 3 <= 1;
}

} // namespace qoro
