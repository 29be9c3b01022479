#pragma once

#include "desktop/screen/Picture.h"
#include "views/ViewNode.h"

typedef struct _GdkSnapshot GtkSnapshot;
typedef struct _PangoContext PangoContext;

namespace qoro
{

/// What a view's look depends on beside the view itself.
struct PaintState {
    /// A finger rests on it.
    bool pressed = false;
    /// The image of a button or an image view, or a video's newest picture; null for none.
    Picture picture;
    /// Pixels of a video's picture to a point.
    double resolution = 1;
    /// How far a spinner has come, in twelfths of a turn.
    int spinner_step = 0;
};

/// Spokes of a spinner; it turns once a second.
inline constexpr int spinner_steps = 12;

/// Draws one view, upright, from the top left corner on; its subviews and its alpha are not its own business.
/// @param size of the widget that stands for it, in whole points
void paint(GtkSnapshot* snapshot, PangoContext* text, const ViewNode& view, CGSize size, const PaintState& state);

} // namespace qoro
