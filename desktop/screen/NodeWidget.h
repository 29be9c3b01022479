#pragma once

#include "views/ViewNode.h"

#include <functional>
#include <memory>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

// The widget of one view: draws it, hosts a web view's page, and speaks for it to assistive technology. Functions over
// a GtkWidget, as GTK has it.

/// What a widget tells its screen; called as long as the widget stands there.
struct NodeNews {
    /// Every new picture of the view's video, which the next frame shows.
    std::function<void()> picture;
    /// Assistive technology uses the control.
    std::function<void()> activated;
};

/// A new widget for a view, with no reference of the caller's. It does not keep the view.
GtkWidget* node_widget_new(const std::shared_ptr<ViewNode>& view, NodeNews news);

/// Takes over what has changed in the view since the last time: its look, its page or its player.
void node_widget_update(GtkWidget* widget);
/// How the viewer meets the view now.
enum class NodeReach {
    /// Not at all.
    Away,
    /// It is to be seen.
    Seen,
    /// It is to be seen, and a finger reaches it.
    Touchable,
};
void node_widget_set_reach(GtkWidget* widget, NodeReach reach);
/// The widget that takes the keys for the view when the viewer gets there by keyboard: a control's own, or a page's;
/// null for what nobody uses.
GtkWidget* node_widget_focus_target(GtkWidget* widget);
/// Whether a finger rests on the view.
void node_widget_set_pressed(GtkWidget* widget, bool pressed);
/// How many device pixels of the screen a point is; 0 while the view is not shown: it asks its player for no picture
/// then. Called when the widget has its place.
/// @param size the widget's, in points
void node_widget_set_resolution(GtkWidget* widget, CGSize size, double pixels_per_point);
/// Ends what reaches into the view, its page and its player.
void node_widget_release(GtkWidget* widget);

} // namespace qoro
