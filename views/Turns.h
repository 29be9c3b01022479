#pragma once

#include "platform/Geometry.h"

namespace qoro
{

// Turns of points and sizes. Whole quarter turns are exact.

/// Whether an angle is a whole number of quarter turns.
bool is_whole_turn(double angle);

/// A vector turned clockwise on the screen by an angle.
CGPoint turned(CGPoint vector, double angle);

/// The extents of the smallest upright rectangle that holds a rectangle turned by an angle, whichever way.
CGSize turned_extents(CGSize size, double angle);

} // namespace qoro
