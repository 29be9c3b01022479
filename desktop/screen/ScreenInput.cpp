#include "desktop/screen/ScreenInput.h"

#include "desktop/screen/FocusOrder.h"
#include "desktop/screen/FocusRing.h"
#include "desktop/screen/WidgetSource.h"
#include "views/ViewPath.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

bool uses_control(unsigned keyval)
{
    return keyval == GDK_KEY_space || keyval == GDK_KEY_Return || keyval == GDK_KEY_KP_Enter;
}

bool is_page(const std::shared_ptr<ViewNode>& view)
{
    return view && view->kind == ViewNode::Kind::WebView;
}

/// Position of a window system's event in a widget of the window; absent if it has none.
std::optional<CGPoint> place_of(GdkEvent* event, GtkWindow* window, GtkWidget* widget)
{
    double x = 0;
    double y = 0;
    if (!gdk_event_get_position(event, &x, &y))
        return {};
    double left = 0;
    double top = 0;
    gtk_native_get_surface_transform(GTK_NATIVE(window), &left, &top);
    const graphene_point_t in_window = GRAPHENE_POINT_INIT(static_cast<float>(x - left), static_cast<float>(y - top));
    graphene_point_t in_widget;
    if (!gtk_widget_compute_point(GTK_WIDGET(window), widget, &in_window, &in_widget))
        return {};
    return CGPoint{static_cast<double>(in_widget.x), static_cast<double>(in_widget.y)};
}

} // namespace

struct ScreenInput::Signals {
    static gboolean key_pressed(GtkEventControllerKey*, unsigned keyval, unsigned, GdkModifierType state,
                                ScreenInput* input)
    {
        return input->capture_key(keyval, static_cast<unsigned>(state));
    }

    static gboolean key_left_over(GtkEventControllerKey*, unsigned keyval, unsigned, GdkModifierType,
                                  ScreenInput* input)
    {
        return input->take_key(keyval);
    }

    static void key_released(GtkEventControllerKey*, unsigned keyval, unsigned, GdkModifierType, ScreenInput* input)
    {
        input->let_key_go(keyval);
    }

    static void focus_moved(GtkWindow*, GParamSpec*, ScreenInput* input) { gtk_widget_queue_draw(input->surface_); }

    /// Observes input before the page receives it, without consuming any.
    static gboolean input_passes(GtkEventControllerLegacy*, GdkEvent* event, ScreenInput* input)
    {
        switch (gdk_event_get_event_type(event)) {
        case GDK_BUTTON_PRESS:
        case GDK_BUTTON_RELEASE:
        case GDK_TOUCH_BEGIN:
        case GDK_TOUCH_END:
            input->note_touch(event);
            break;
        case GDK_KEY_PRESS:
        case GDK_KEY_RELEASE:
            input->note_key(event);
            break;
        default:
            break;
        }
        return GDK_EVENT_PROPAGATE;
    }

    static void drag_begin(GtkGestureDrag* gesture, double x, double y, ScreenInput* input)
    {
        // Input for a page is passed on; all other input is consumed.
        gtk_gesture_set_state(GTK_GESTURE(gesture),
                              input->press({x, y}) ? GTK_EVENT_SEQUENCE_CLAIMED : GTK_EVENT_SEQUENCE_DENIED);
    }

    static void drag_update(GtkGestureDrag*, double x, double y, ScreenInput* input)
    {
        input->drag({input->touch_began_.x + x, input->touch_began_.y + y});
    }

    static void drag_end(GtkGestureDrag*, double x, double y, ScreenInput* input)
    {
        input->release({input->touch_began_.x + x, input->touch_began_.y + y});
    }

    static void cancelled(GtkGesture*, GdkEventSequence*, ScreenInput* input) { input->cancel(); }
};

ScreenInput::ScreenInput(Platform& platform, GtkWindow* window, GtkWidget* surface, LayerStack& layers, OnKey on_key)
    : platform_(platform), window_(window), surface_(surface), layers_(layers), on_key_(std::move(on_key))
{
    observe_keys();
    observe_touches();
}

void ScreenInput::observe_keys()
{
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    connections_.add(keys, "key-pressed", Signals::key_pressed, this);
    // Bubble phase: a page receives keys first and returns those it does not use.
    GtkEventController* keys_left_over = gtk_event_controller_key_new();
    connections_.add(keys_left_over, "key-pressed", Signals::key_left_over, this);
    connections_.add(keys_left_over, "key-released", Signals::key_released, this);
    for (GtkEventController* each : {keys, keys_left_over}) {
        gtk_widget_add_controller(GTK_WIDGET(window_), each);
        window_controllers_.push_back(each);
    }
    connections_.add(window_, "notify::focus-widget", Signals::focus_moved, this);
}

void ScreenInput::observe_touches()
{
    GtkEventController* all = gtk_event_controller_legacy_new();
    gtk_event_controller_set_propagation_phase(all, GTK_PHASE_CAPTURE);
    connections_.add(all, "event", Signals::input_passes, this);
    gtk_widget_add_controller(surface_, all);

    GtkEventController* finger = GTK_EVENT_CONTROLLER(gtk_gesture_drag_new());
    gtk_event_controller_set_propagation_phase(finger, GTK_PHASE_CAPTURE);
    connections_.add(finger, "drag-begin", Signals::drag_begin, this);
    connections_.add(finger, "drag-update", Signals::drag_update, this);
    connections_.add(finger, "drag-end", Signals::drag_end, this);
    connections_.add(finger, "cancel", Signals::cancelled, this);
    gtk_widget_add_controller(surface_, finger);
}

void ScreenInput::leave_window()
{
    for (GtkEventController* each : std::exchange(window_controllers_, {}))
        gtk_widget_remove_controller(GTK_WIDGET(window_), each);
}

// --------------------------------------------------------------------------------------------------------- Touches

std::shared_ptr<ViewNode> ScreenInput::touched_at(CGPoint in_surface)
{
    const CGPoint point = layers_.viewport().to_screen(in_surface);
    if (!hit_ || hit_->point != point)
        hit_ = Hit{point, hit_test(platform_, point)};
    return hit_->view.lock();
}

bool ScreenInput::keeps(CGPoint in_surface)
{
    return !is_page(touched_at(in_surface));
}

/// Records the time of a touch on a page, which enables commands that need a user action. Only events from the window
/// system count.
void ScreenInput::note_touch(GdkEvent* event)
{
    const std::optional<CGPoint> place = place_of(event, window_, surface_);
    const std::shared_ptr<ViewNode> view = place ? touched_at(*place) : nullptr;
    if (!is_page(view))
        return;
    // Press and release are one touch: the release counts unless the page has already used the press.
    const GdkEventType type = gdk_event_get_event_type(event);
    const bool begins = type == GDK_BUTTON_PRESS || type == GDK_TOUCH_BEGIN;
    if (begins || view->page_touched)
        note_page_touch(view);
}

bool ScreenInput::press(CGPoint in_surface)
{
    touch_began_ = in_surface;
    shows_focus_ = false;
    gtk_widget_queue_draw(surface_);
    const std::shared_ptr<ViewNode> view = touched_at(in_surface);
    chosen_ = view;
    if (is_page(view))
        return false;
    touched_ = view;
    // The focus follows the touch, away from a page that it has left.
    if (!give_focus(view.get()))
        gtk_window_set_focus(window_, nullptr);
    set_pressed(true);
    return true;
}

void ScreenInput::drag(CGPoint in_surface)
{
    const std::shared_ptr<ViewNode> view = touched_.lock();
    set_pressed(view && touched_at(in_surface) == view);
}

void ScreenInput::release(CGPoint in_surface)
{
    set_pressed(false);
    const std::shared_ptr<ViewNode> view = touched_.lock();
    touched_.reset();
    if (view && touched_at(in_surface) == view)
        touch_view(platform_, view);
}

void ScreenInput::cancel()
{
    set_pressed(false);
    touched_.reset();
}

void ScreenInput::set_pressed(bool pressed)
{
    const std::shared_ptr<ViewNode> view = touched_.lock();
    if (const Layer* layer = view ? layers_.find(*view) : nullptr)
        node_widget_set_pressed(layer->widget, pressed);
}

void ScreenInput::activate(const std::shared_ptr<ViewNode>& view)
{
    if (view && touchable_point(*view))
        touch_view(platform_, view);
}

// ------------------------------------------------------------------------------------------------------------ Keys

void ScreenInput::note_key(GdkEvent* event)
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
    layers_.for_each([&](const Layer& layer) {
        const std::shared_ptr<ViewNode> view = layer.view.lock();
        if (is_page(view) && gtk_widget_is_ancestor(focus, layer.widget))
            note_page_touch(view);
    });
}

bool ScreenInput::capture_key(unsigned keyval, unsigned state)
{
    if (on_key_(keyval, state))
        return true;
    // Ctrl+Tab leaves a page, whatever the page does with the key.
    const bool back = keyval == GDK_KEY_ISO_Left_Tab || (state & GDK_SHIFT_MASK) != 0;
    const bool tab = keyval == GDK_KEY_Tab || keyval == GDK_KEY_ISO_Left_Tab;
    if (!tab || (state & GDK_CONTROL_MASK) == 0)
        return false;
    return is_page(focused_view()) && move_focus(!back);
}

bool ScreenInput::take_key(unsigned keyval)
{
    if (!uses_control(keyval))
        return false;
    const std::shared_ptr<ViewNode> view = focused_view();
    if (!view || view->kind != ViewNode::Kind::Button)
        return false;
    shows_focus_ = true;
    key_held_ = view;
    node_widget_set_pressed(layers_.find(*view)->widget, true);
    return true;
}

/// Controls are activated on release, because a held key repeats.
void ScreenInput::let_key_go(unsigned keyval)
{
    if (!uses_control(keyval))
        return;
    const std::shared_ptr<ViewNode> view = key_held_.lock();
    key_held_.reset();
    const Layer* layer = view ? layers_.find(*view) : nullptr;
    if (!layer)
        return;
    node_widget_set_pressed(layer->widget, false);
    if (view == focused_view())
        activate(view);
}

// ----------------------------------------------------------------------------------------------------------- Focus

/// The shown layer whose widget or page has the focus.
Layer* ScreenInput::focused_layer() const
{
    GtkWidget* focus = gtk_window_get_focus(window_);
    if (!focus)
        return nullptr;
    const auto has_it = [&](const Layer* layer) {
        return focus == layer->widget || gtk_widget_is_ancestor(focus, layer->widget);
    };
    const auto found = std::ranges::find_if(layers_.from_below(), has_it);
    return found == layers_.from_below().end() ? nullptr : *found;
}

std::shared_ptr<ViewNode> ScreenInput::focused_view() const
{
    const Layer* layer = focused_layer();
    return layer ? layer->view.lock() : nullptr;
}

bool ScreenInput::is_written_into() const
{
    const std::shared_ptr<ViewNode> view = focused_view();
    const WidgetSource* page = view && view->web ? view->web->widget_source() : nullptr;
    return page && page->takes_text();
}

/// Gives the focus to a control or a page. Returns whether it accepts the focus.
bool ScreenInput::give_focus(const Layer* layer)
{
    GtkWidget* target = layer ? node_widget_focus_target(layer->widget) : nullptr;
    if (!target)
        return false;
    if (gtk_window_get_focus(window_) != target)
        gtk_widget_grab_focus(target);
    focus_place_ = layers_.viewport().held.to_screen(layer->place.center);
    return true;
}

bool ScreenInput::move_focus(bool forward)
{
    if (focus_held_)
        return false;
    std::vector<Layer*> reached;
    std::vector<FocusStop> stops;
    for (Layer* layer : layers_.from_below())
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
    const Layer* layer = reached[order[next]];
    chosen_ = layer->view;
    shows_focus_ = true;
    gtk_widget_queue_draw(surface_);
    return give_focus(layer);
}

void ScreenInput::restore_focus()
{
    const std::shared_ptr<ViewNode> chosen = chosen_.lock();
    if (!chosen || give_focus(chosen.get()))
        return;
    const Layer* layer = focused_layer();
    if (layer && give_focus(layer))
        return;
    if (!give_focus(hit_test(platform_, focus_place_).get()))
        gtk_window_set_focus(window_, nullptr);
}

void ScreenInput::draw_focus(GtkSnapshot* snapshot) const
{
    const Layer* layer = shows_focus_ ? focused_layer() : nullptr;
    if (!layer)
        return;
    const Viewport& viewport = layers_.viewport();
    draw_focus_ring(snapshot, viewport.to_surface(layer->place.around()), viewport.area());
}

} // namespace qoro
