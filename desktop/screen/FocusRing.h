#pragma once

#include "platform/Geometry.h"

typedef struct _GdkSnapshot GtkSnapshot;

namespace qoro
{

/// Draws the sign that a control has the keyboard: a light line between dark ones, which is seen on anything.
/// @param box of the control; the ring lies around it where the area has room, else within
/// @param area outside which nothing is to be drawn
void draw_focus_ring(GtkSnapshot* snapshot, const CGRect& box, const CGRect& area);

} // namespace qoro
