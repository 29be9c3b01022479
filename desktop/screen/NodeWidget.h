#pragma once

#include "views/ViewNode.h"

#include <functional>
#include <memory>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

// The widget of one view: draws it, hosts a web view's page, and speaks for it to assistive technology. Functions over
// a GtkWidget, as GTK has it.

/// A new widget for a view, with no reference of the caller's. It does not keep the view.
/// @param on_picture called for every new picture of the view's video, which the next frame shows
GtkWidget* node_widget_new(const std::shared_ptr<ViewNode>& view, std::function<void()> on_picture);

/// Takes over what has changed in the view since the last time: its look, its page or its player.
void node_widget_update(GtkWidget* widget);
/// Whether a finger rests on the view.
void node_widget_set_pressed(GtkWidget* widget, bool pressed);
/// How many device pixels of the screen a point is; 0 while the view is not shown: it asks its player for no picture
/// then. Called when the widget has its place.
/// @param size the widget's, in points
void node_widget_set_resolution(GtkWidget* widget, CGSize size, double pixels_per_point);
/// Ends what reaches into the view, its page and its player.
void node_widget_release(GtkWidget* widget);

} // namespace qoro
