#pragma once

#include "desktop/media/VideoFrame.h"
#include "views/ViewNode.h"

#include <functional>
#include <memory>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

// The widget of one view: draws the view, hosts the page of a web view, and represents the view to assistive
// technology. As usual in GTK, these are functions over a GtkWidget. Main thread only.

/// Callbacks of a widget, until it is released.
struct NodeNews {
    /// The view's video has a new picture. Returns whether it is on the screen; otherwise the next frame shows it.
    std::function<bool()> picture;
    /// Assistive technology has activated the control. May be empty.
    std::function<void()> activated;
};

/// Creates a widget for a view, as a floating reference. The widget does not own the view.
GtkWidget* node_widget_new(const std::shared_ptr<ViewNode>& view, NodeNews news);

/// Applies the changes of the view since the last call: its appearance, page or player.
/// @return whether there were any
bool node_widget_update(GtkWidget* widget);
/// Reachability of a view for the viewer.
enum class NodeReach {
    /// Hidden, transparent, off the screen or covered.
    Away,
    /// Visible.
    Seen,
    /// Visible, and a touch can reach it.
    Touchable,
};
/// Sets the reachability; assistive technology sees only reachable views.
void node_widget_set_reach(GtkWidget* widget, NodeReach reach);
/// The widget that receives keyboard focus for the view: the control's own, or the page's. Null if the view takes no
/// input or is out of reach.
GtkWidget* node_widget_focus_target(GtkWidget* widget);
/// Sets whether a finger rests on the view.
void node_widget_set_pressed(GtkWidget* widget, bool pressed);
/// Sets the number of device pixels per point; 0 while the view is not shown, which stops its player from making
/// pictures. To be called whenever the widget has been placed.
/// @param size of the widget, in points
void node_widget_set_resolution(GtkWidget* widget, CGSize size, double pixels_per_point);
/// The latest picture of the view's video; empty unless it has the size of the picture that was drawn last.
VideoFrame node_widget_next_picture(GtkWidget* widget);
/// Draws the widget anew with the screen's frame if its video has a later picture.
void node_widget_catch_up(GtkWidget* widget);
/// Detaches the widget from the view, its page and its player.
void node_widget_release(GtkWidget* widget);

} // namespace qoro
