#pragma once

#include "platform/Geometry.h"

#include <string>

namespace qoro
{

/// The seconds that a countdown shows: rounded up, so that it says 1 until the very end.
long whole_seconds_left(double seconds);

/// What a countdown is drawn of: a dark disc around the middle, a ring on it that runs down, and the seconds. In points
/// from the middle; angles in radians, clockwise from the right.
struct CountDownLook {
    double disc_radius = 0;
    /// Of the middle of the ring's line.
    double ring_radius = 0;
    double ring_width = 0;
    /// What is left of the ring; its end stands at the top, so that the gap grows from there, clockwise.
    double arc_begin = 0;
    double arc_end = 0;
    std::string seconds;
    /// At which the seconds stay inside the ring, however many digits they have.
    double font_size = 0;
    /// Where the digits' foot stands, below the middle.
    double baseline = 0;
};

/// @param size of the view
/// @param ring_width as the view was given it; a ring that has no room is narrower
/// @param full the seconds that a whole ring stands for; from 0 on down there is none
CountDownLook count_down_look(CGSize size, double ring_width, double seconds, double full);

} // namespace qoro
