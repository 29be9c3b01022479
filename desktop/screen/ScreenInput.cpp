#include "desktop/screen/Screen.h"

#include "desktop/screen/FocusOrder.h"
#include "desktop/screen/WidgetSource.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <utility>

// Input from the viewer: touches and keys.

namespace qoro
{

namespace
{

bool uses_control(unsigned keyval)
{
    return keyval == GDK_KEY_space || keyval == GDK_KEY_Return || keyval == GDK_KEY_KP_Enter;
}

} // namespace

// --------------------------------------------------------------------------------------------------------- Touches

CGPoint Screen::screen_point(double x, double y) const
{
    return held_.to_screen({(x - origin_.x) / scale_, (y - origin_.y) / scale_});
}

std::shared_ptr<ViewNode> Screen::touched_at(double x, double y) const
{
    return hit_test(platform_, screen_point(x, y));
}

bool Screen::keeps(double x, double y) const
{
    const std::shared_ptr<ViewNode> view = touched_at(x, y);
    return !view || view->kind != ViewNode::Kind::WebView;
}

/// Records the time of a touch on a page, which enables commands that need a user action. Only events from the window
/// system count.
void Screen::note_touch(GdkEvent* event)
{
    double x = 0;
    double y = 0;
    GtkNative* native = GTK_NATIVE(window_);
    if (!gdk_event_get_position(event, &x, &y))
        return;
    double left = 0;
    double top = 0;
    gtk_native_get_surface_transform(native, &left, &top);
    const graphene_point_t in_window = GRAPHENE_POINT_INIT(static_cast<float>(x - left), static_cast<float>(y - top));
    graphene_point_t in_surface;
    if (!gtk_widget_compute_point(GTK_WIDGET(native), surface_, &in_window, &in_surface))
        return;
    const auto view = touched_at(static_cast<double>(in_surface.x), static_cast<double>(in_surface.y));
    if (!view || view->kind != ViewNode::Kind::WebView)
        return;
    // Press and release are one touch: the release counts unless the page has already used the press.
    const GdkEventType type = gdk_event_get_event_type(event);
    const bool begins = type == GDK_BUTTON_PRESS || type == GDK_TOUCH_BEGIN;
    if (begins || view->page_touched)
        view->page_touched = platform_.loop().now();
}

void Screen::note_key(GdkEvent* event)
{
    const unsigned code = gdk_key_event_get_keycode(event);
    if (gdk_event_get_event_type(event) == GDK_KEY_RELEASE) {
        held_key_.reset();
        return;
    }
    // Repetitions of a held key are part of the same touch.
    if (std::exchange(held_key_, code) == code)
        return;
    GtkWidget* focus = gtk_window_get_focus(window_);
    if (!focus || gdk_key_event_is_modifier(event) || gdk_key_event_get_keyval(event) == GDK_KEY_Escape)
        return;
    for (const auto& [serial, layer] : layers_) {
        const auto view = layer.view.lock();
        if (view && view->kind == ViewNode::Kind::WebView && gtk_widget_is_ancestor(focus, layer.widget))
            view->page_touched = platform_.loop().now();
    }
}

bool Screen::press(double x, double y)
{
    touch_began_ = {x, y};
    shows_focus_ = false;
    gtk_widget_queue_draw(surface_);
    chosen_ = touched_at(x, y);
    if (!keeps(x, y))
        return false;
    touched_ = touched_at(x, y);
    // The focus follows the touch, away from a page that it has left.
    const std::shared_ptr<ViewNode> view = touched_.lock();
    if (!give_focus(view ? layer_of(*view) : nullptr))
        gtk_window_set_focus(window_, nullptr);
    set_pressed(true);
    return true;
}

void Screen::drag(double x, double y)
{
    const std::shared_ptr<ViewNode> view = touched_.lock();
    set_pressed(view && touched_at(x, y) == view);
}

void Screen::release(double x, double y)
{
    set_pressed(false);
    const std::shared_ptr<ViewNode> view = touched_.lock();
    touched_.reset();
    if (view && touched_at(x, y) == view)
        touch(platform_, screen_point(x, y));
}

void Screen::set_pressed(bool pressed)
{
    const std::shared_ptr<ViewNode> view = touched_.lock();
    if (const Layer* layer = view ? layer_of(*view) : nullptr)
        node_widget_set_pressed(layer->widget, pressed);
}

// -------------------------------------------------------------------------------------------------------- Keyboard

Screen::Layer* Screen::layer_of(const ViewNode& view)
{
    const auto found = layers_.find(view.serial);
    return found == layers_.end() ? nullptr : &found->second;
}

/// The shown layer whose widget or page has the focus.
Screen::Layer* Screen::focused_layer() const
{
    GtkWidget* focus = gtk_window_get_focus(window_);
    if (!focus)
        return nullptr;
    const auto has_it = [&](const Layer* layer) {
        return focus == layer->widget || gtk_widget_is_ancestor(focus, layer->widget);
    };
    const auto found = std::ranges::find_if(from_below_, has_it);
    return found == from_below_.end() ? nullptr : *found;
}

std::shared_ptr<ViewNode> Screen::focused_view() const
{
    const Layer* layer = window_ ? focused_layer() : nullptr;
    return layer ? layer->view.lock() : nullptr;
}

bool Screen::is_written_into() const
{
    const std::shared_ptr<ViewNode> view = focused_view();
    const WidgetSource* page = view && view->web ? view->web->widget_source() : nullptr;
    return page && page->takes_text();
}

/// Gives the focus to a control or a page. Returns whether it accepts the focus.
bool Screen::give_focus(Layer* layer)
{
    GtkWidget* target = layer ? node_widget_focus_target(layer->widget) : nullptr;
    if (!target)
        return false;
    if (gtk_window_get_focus(window_) != target)
        gtk_widget_grab_focus(target);
    focus_place_ = held_.to_screen(layer->place.center);
    return true;
}

bool Screen::move_focus(bool forward)
{
    if (opening_)
        return false;
    std::vector<Layer*> reached;
    std::vector<FocusStop> stops;
    for (Layer* layer : from_below_)
        if (node_widget_focus_target(layer->widget)) {
            reached.push_back(layer);
            stops.push_back({layer->window, layer->place.around()});
        }
    if (reached.empty())
        return false;
    const std::vector<std::size_t> order = focus_order(stops);
    const auto here = std::ranges::find(order, focused_layer(), [&](std::size_t n) { return reached[n]; });
    const std::size_t last = order.size() - 1;
    const auto place = static_cast<std::size_t>(here - order.begin());
    const std::size_t next = here == order.end() ? (forward ? 0 : last)
                             : forward           ? (place == last ? 0 : place + 1)
                                                 : (place == 0 ? last : place - 1);
    Layer* layer = reached[order[next]];
    chosen_ = layer->view;
    shows_focus_ = true;
    gtk_widget_queue_draw(surface_);
    return give_focus(layer);
}

/// Restores the focus after an update that may have hidden, covered or removed its view. If the chosen view is out of
/// reach, the focus stays where it is, or moves to the view in its place.
void Screen::keep_focus()
{
    const std::shared_ptr<ViewNode> chosen = chosen_.lock();
    if (!chosen || give_focus(layer_of(*chosen)))
        return;
    Layer* layer = focused_layer();
    if (layer && give_focus(layer))
        return;
    const std::shared_ptr<ViewNode> instead = hit_test(platform_, focus_place_);
    if (!give_focus(instead ? layer_of(*instead) : nullptr))
        gtk_window_set_focus(window_, nullptr);
}

bool Screen::capture_key(unsigned keyval, unsigned state)
{
    if (on_key && on_key(keyval, state))
        return true;
    // Ctrl+Tab leaves a page, whatever the page does with the key.
    const bool back = keyval == GDK_KEY_ISO_Left_Tab || (state & GDK_SHIFT_MASK) != 0;
    const bool tab = keyval == GDK_KEY_Tab || keyval == GDK_KEY_ISO_Left_Tab;
    if (!tab || (state & GDK_CONTROL_MASK) == 0)
        return false;
    const std::shared_ptr<ViewNode> view = focused_view();
    return view && view->kind == ViewNode::Kind::WebView && move_focus(!back);
}

bool Screen::take_key(unsigned keyval)
{
    if (!uses_control(keyval))
        return false;
    const std::shared_ptr<ViewNode> view = focused_view();
    if (!view || view->kind != ViewNode::Kind::Button)
        return false;
    shows_focus_ = true;
    key_held_ = view;
    node_widget_set_pressed(layer_of(*view)->widget, true);
    return true;
}

/// Controls are activated on release, because a held key repeats.
void Screen::let_key_go(unsigned keyval)
{
    if (!uses_control(keyval))
        return;
    const std::shared_ptr<ViewNode> view = key_held_.lock();
    key_held_.reset();
    const Layer* layer = view ? layer_of(*view) : nullptr;
    if (!layer)
        return;
    node_widget_set_pressed(layer->widget, false);
    if (view == focused_view())
        activate(view);
}

/// Like a touch: only if a touch can reach the control.
void Screen::activate(const std::shared_ptr<ViewNode>& view)
{
    if (const auto point = view ? touchable_point(*view) : std::nullopt)
        touch(platform_, *point);
}

} // namespace qoro
