#pragma once

#include "platform/Export.h"
#include "platform/Geometry.h"

#include <string>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

/// The seconds that a countdown shows: rounded up, at least 1.
long whole_seconds_left(double seconds);

/// Geometry of a countdown: a dark disc in the centre, a shrinking ring on it, and the seconds. Lengths in points,
/// positions relative to the centre, angles in radians, clockwise from the right.
struct CountDownLook {
    double disc_radius = 0;
    /// Radius of the ring's centre line.
    double ring_radius = 0;
    double ring_width = 0;
    /// The arc that remains. It ends at the top, so the gap grows clockwise from there.
    double arc_begin = 0;
    double arc_end = 0;
    std::string seconds;
    /// Font size at which the seconds fit inside the ring, whatever their number of digits.
    double font_size = 0;
    /// Baseline of the digits, below the centre.
    double baseline = 0;
};

/// Lays out a countdown.
/// @param size size of the view
/// @param ring_width requested line width; reduced when the view is too small
/// @param full the seconds of a full ring; there is no ring for 0 or less
CountDownLook count_down_look(CGSize size, double ring_width, double seconds, double full);

} // namespace qoro
