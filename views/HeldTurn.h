#pragma once

#include "platform/Geometry.h"

namespace qoro
{

/// How the device's screen is turned to its viewer, clockwise, so that what is turned the other way on it stands
/// upright.
/// @param device_orientation UIDeviceOrientation; a device that lies flat, or is held nobody knows how, stays as it was
/// @param bar_orientation UIInterfaceOrientation
/// @param screen the screen's own size; one that is wider than high belongs to a host in landscape: its coordinates
///               have turned with the interface already, all but the half turn between the two landscape sides
/// @param before the turn so far
double held_turn(int device_orientation, int bar_orientation, CGSize screen, double before);

} // namespace qoro
