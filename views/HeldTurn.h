#pragma once

#include "platform/Export.h"
#include "platform/Geometry.h"
#include "platform/Orientation.h"

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// Rotation of the device's screen relative to the viewer, in radians, clockwise. Content rotated by the negative angle
/// appears upright.
/// @param device_orientation with the device flat or its orientation unknown, the previous
///                           rotation is returned
/// @param bar_orientation of the interface
/// @param screen size of the screen in points. One wider than high belongs to a host in landscape: its coordinates have
///               already rotated with the interface, except for the half turn between the two landscape orientations
/// @param before the previous rotation
double held_turn(UIDeviceOrientation device_orientation, UIInterfaceOrientation bar_orientation, CGSize screen,
                 double before);

} // namespace qoro
