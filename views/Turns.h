#pragma once

#include "platform/Export.h"
#include "platform/Geometry.h"

namespace QORO_EXPORT_TO_DESKTOP qoro
{

// Rotations of vectors and sizes by radians. Multiples of a quarter turn are exact.

/// Whether an angle in [−π, π] is a multiple of a quarter turn.
bool is_whole_turn(double angle);

/// Rotates a vector by an angle, clockwise on the screen.
CGPoint turned(CGPoint vector, double angle);

/// Size of the bounding rectangle of a rectangle rotated by an angle.
CGSize turned_extents(CGSize size, double angle);

} // namespace qoro
