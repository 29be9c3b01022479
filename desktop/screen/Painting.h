#pragma once

#include "desktop/screen/Picture.h"
#include "views/ViewNode.h"

typedef struct _GdkSnapshot GtkSnapshot;
typedef struct _PangoContext PangoContext;

namespace qoro
{

/// State that affects a view's appearance besides the view itself.
struct PaintState {
    /// A finger rests on the view.
    bool pressed = false;
    /// Image of a button or an image view, or a video's latest picture; null if there is none.
    Picture picture;
    /// Pixels of a video's picture per point.
    double resolution = 1;
    /// Position of a spinner, in twelfths of a turn.
    int spinner_step = 0;
};

/// Number of a spinner's spokes; it makes one turn per second.
inline constexpr int spinner_steps = 12;

/// Where a video's picture lies in its view: in the middle, at whole points.
/// @param area, picture in points
CGPoint picture_corner(CGSize area, CGSize picture);

/// Draws one view without rotation, from its top left corner, without its subviews and its alpha.
/// @param text context for layouts
/// @param size of the view's widget, in whole points
void paint(GtkSnapshot* snapshot, PangoContext* text, const ViewNode& view, CGSize size, const PaintState& state);

} // namespace qoro
