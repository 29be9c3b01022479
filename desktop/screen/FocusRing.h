#pragma once

#include "platform/Geometry.h"

typedef struct _GdkSnapshot GtkSnapshot;

namespace qoro
{

/// Draws the focus ring of a control: a light line between dark ones, which is visible on any background.
/// @param box of the control; the ring surrounds it where the area has room, otherwise it lies inside
/// @param area nothing is drawn outside it
void draw_focus_ring(GtkSnapshot* snapshot, const CGRect& box, const CGRect& area);

} // namespace qoro
