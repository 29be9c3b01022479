#include "desktop/screen/Screen.h"

#include "desktop/screen/FocusRing.h"
#include "desktop/screen/WidgetSource.h"
#include "views/Turns.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qoro
{

namespace
{

/// Points of the monitor that are reserved for window frames and panels.
constexpr int monitor_margin = 48;
/// Longer than a frame of any video, but imperceptible.
constexpr int longest_wait_ms = 50;

graphene_rect_t rect_of(const CGRect& rect)
{
    return GRAPHENE_RECT_INIT(static_cast<float>(rect.x), static_cast<float>(rect.y), static_cast<float>(rect.width),
                              static_cast<float>(rect.height));
}

graphene_point_t point_of(CGPoint point)
{
    return GRAPHENE_POINT_INIT(static_cast<float>(point.x), static_cast<float>(point.y));
}

float degrees(double angle)
{
    return static_cast<float>(std::round(angle * 180 / std::numbers::pi * 1e6) / 1e6);
}

bool covers(const CGRect& rect, CGSize area)
{
    return rect.x <= 0 && rect.y <= 0 && rect.x + rect.width >= area.width && CGRectGetMaxY(rect) >= area.height;
}

bool meets(const CGRect& rect, CGSize area)
{
    return rect.x < area.width && rect.y < area.height && rect.x + rect.width > 0 && CGRectGetMaxY(rect) > 0;
}

} // namespace

struct Screen::Signals {
    static gboolean tick(GtkWidget*, GdkFrameClock*, void* data)
    {
        auto* screen = static_cast<Screen*>(data);
        screen->tick_ = 0;
        screen->update();
        return G_SOURCE_REMOVE;
    }

    static gboolean patience_ended(void* data)
    {
        auto* screen = static_cast<Screen*>(data);
        screen->patience_ = 0;
        screen->walk_with_next_frame();
        return G_SOURCE_REMOVE;
    }

    static gboolean close_requested(GtkWindow*, Screen* screen)
    {
        if (!screen->on_close)
            return FALSE;
        screen->on_close();
        return TRUE;
    }

    static gboolean key_pressed(GtkEventControllerKey*, unsigned keyval, unsigned, GdkModifierType state,
                                Screen* screen)
    {
        return screen->capture_key(keyval, static_cast<unsigned>(state));
    }

    /// Observes input before the page receives it, without consuming any.
    static gboolean input_passes(GtkEventControllerLegacy*, GdkEvent* event, Screen* screen)
    {
        switch (gdk_event_get_event_type(event)) {
        case GDK_BUTTON_PRESS:
        case GDK_BUTTON_RELEASE:
        case GDK_TOUCH_BEGIN:
        case GDK_TOUCH_END:
            screen->note_touch(event);
            break;
        case GDK_KEY_PRESS:
        case GDK_KEY_RELEASE:
            screen->note_key(event);
            break;
        default:
            break;
        }
        return GDK_EVENT_PROPAGATE;
    }

    static gboolean key_left_over(GtkEventControllerKey*, unsigned keyval, unsigned, GdkModifierType, Screen* screen)
    {
        return screen->take_key(keyval);
    }

    static void key_released(GtkEventControllerKey*, unsigned keyval, unsigned, GdkModifierType, Screen* screen)
    {
        screen->let_key_go(keyval);
    }

    static void focus_moved(GtkWindow*, GParamSpec*, Screen* screen) { gtk_widget_queue_draw(screen->surface_); }

    static void drag_begin(GtkGestureDrag* gesture, double x, double y, Screen* screen)
    {
        // Input for a page is passed on; all other input is consumed.
        gtk_gesture_set_state(GTK_GESTURE(gesture),
                              screen->press(x, y) ? GTK_EVENT_SEQUENCE_CLAIMED : GTK_EVENT_SEQUENCE_DENIED);
    }

    static void drag_update(GtkGestureDrag*, double x, double y, Screen* screen)
    {
        screen->drag(screen->touch_began_.x + x, screen->touch_began_.y + y);
    }

    static void drag_end(GtkGestureDrag*, double x, double y, Screen* screen)
    {
        screen->release(screen->touch_began_.x + x, screen->touch_began_.y + y);
    }

    static void touch_cancelled(GtkGesture*, GdkEventSequence*, Screen* screen)
    {
        screen->set_pressed(false);
        screen->touched_.reset();
    }

    static void state_changed(GdkToplevel* toplevel, GParamSpec*, Screen* screen)
    {
        const bool iconified = (gdk_toplevel_get_state(toplevel) & GDK_TOPLEVEL_STATE_MINIMIZED) != 0;
        bool& before = screen->iconified_;
        if (iconified == before)
            return;
        before = iconified;
        if (screen->on_iconified)
            screen->on_iconified(iconified);
    }

    static void realized(GtkWidget* window, Screen* screen)
    {
        GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
        g_signal_connect(surface, "notify::state", G_CALLBACK(state_changed), screen);
        const DeviceFacts& facts = screen->platform_.device().facts();
        const CGSize size = facts.screen.value_or(screen->held_.screen);
        const int scale = gtk_widget_get_scale_factor(window);
        screen->upload_memory_ =
            std::make_unique<UploadMemory>(gdk_surface_get_display(surface), static_cast<int>(size.width) * scale,
                                           static_cast<int>(size.height) * scale);
    }

    static void destroyed(GtkWidget*, Screen* screen)
    {
        // The viewer has closed the window and there is no on_close.
        screen->window_ = nullptr;
        screen->surface_ = nullptr;
        screen->help_ = nullptr;
        screen->tick_ = 0;
        screen->stop_waiting();
        screen->upload_memory_.reset();
        screen->from_below_.clear();
        screen->layers_.clear();
    }
};

Screen::Screen(Platform& platform)
    : platform_(platform), window_(GTK_WINDOW(gtk_window_new())), surface_(surface_new(*this)),
      help_(gtk_label_new(nullptr))
{
    GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(column), surface_);
    gtk_box_append(GTK_BOX(column), help_);
    gtk_label_set_wrap(GTK_LABEL(help_), TRUE);
    // A natural width of one letter: the text wraps at the width of the screen and never widens the window.
    gtk_label_set_width_chars(GTK_LABEL(help_), 1);
    gtk_label_set_max_width_chars(GTK_LABEL(help_), 1);
    gtk_widget_set_visible(help_, FALSE);
    gtk_window_set_child(window_, column);
    // The window has the size of the device, also after a rotation.
    gtk_window_set_resizable(window_, FALSE);

    g_signal_connect(window_, "close-request", G_CALLBACK(Signals::close_requested), this);
    g_signal_connect(window_, "realize", G_CALLBACK(Signals::realized), this);
    g_signal_connect(window_, "destroy", G_CALLBACK(Signals::destroyed), this);

    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect(keys, "key-pressed", G_CALLBACK(Signals::key_pressed), this);
    gtk_widget_add_controller(GTK_WIDGET(window_), keys);
    // Bubble phase: a page receives keys first and returns those it does not use.
    GtkEventController* keys_left_over = gtk_event_controller_key_new();
    g_signal_connect(keys_left_over, "key-pressed", G_CALLBACK(Signals::key_left_over), this);
    g_signal_connect(keys_left_over, "key-released", G_CALLBACK(Signals::key_released), this);
    gtk_widget_add_controller(GTK_WIDGET(window_), keys_left_over);
    g_signal_connect(window_, "notify::focus-widget", G_CALLBACK(Signals::focus_moved), this);

    GtkEventController* input = gtk_event_controller_legacy_new();
    gtk_event_controller_set_propagation_phase(input, GTK_PHASE_CAPTURE);
    g_signal_connect(input, "event", G_CALLBACK(Signals::input_passes), this);
    gtk_widget_add_controller(surface_, input);

    GtkGesture* finger = gtk_gesture_drag_new();
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(finger), GTK_PHASE_CAPTURE);
    g_signal_connect(finger, "drag-begin", G_CALLBACK(Signals::drag_begin), this);
    g_signal_connect(finger, "drag-update", G_CALLBACK(Signals::drag_update), this);
    g_signal_connect(finger, "drag-end", G_CALLBACK(Signals::drag_end), this);
    g_signal_connect(finger, "cancel", G_CALLBACK(Signals::touch_cancelled), this);
    gtk_widget_add_controller(surface_, GTK_EVENT_CONTROLLER(finger));
}

Screen::~Screen()
{
    stop_waiting();
    if (!window_)
        return;
    GtkWindow* window = window_;
    if (GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window)))
        g_signal_handlers_disconnect_by_data(surface, this);
    g_signal_handlers_disconnect_by_data(window, this);
    surface_release(surface_);
    gtk_window_destroy(window);
}

void Screen::set_title(const std::string& title)
{
    if (window_)
        gtk_window_set_title(window_, title.c_str());
}

void Screen::set_help(const std::string& line)
{
    if (!window_)
        return;
    gtk_label_set_text(GTK_LABEL(help_), line.c_str());
    gtk_widget_set_visible(help_, !line.empty());
}

void Screen::show()
{
    if (!window_)
        return;
    update();
    // Suppresses the focus that GTK would set when the window opens.
    opening_ = true;
    gtk_window_present(window_);
    opening_ = false;
}

void Screen::needs_display()
{
    if (!surface_ || tick_ || patience_)
        return;
    // GTK draws frames no closer together than the monitor's refresh interval. While a video plays, other changes wait
    // for its next picture: a frame of their own would delay that picture.
    if (last_picture_ && g_get_monotonic_time() - last_picture_ < gint64{longest_wait_ms} * 1000)
        patience_ = g_timeout_add(longest_wait_ms, Signals::patience_ended, this);
    else
        walk_with_next_frame();
}

void Screen::walk_with_next_frame()
{
    stop_waiting();
    // At most one update per frame, and none while the window is invisible.
    if (!tick_)
        tick_ = gtk_widget_add_tick_callback(surface_, Signals::tick, this, nullptr);
}

void Screen::stop_waiting()
{
    if (patience_)
        g_source_remove(std::exchange(patience_, 0));
}

void Screen::picture_arrived()
{
    last_picture_ = g_get_monotonic_time();
    if (patience_)
        walk_with_next_frame();
}

// ------------------------------------------------------------------------------------------------------ View tree

void Screen::update()
{
    const DeviceFacts& facts = platform_.device().facts();
    HeldScreen held = held_;
    if (facts.screen)
        held.screen = *facts.screen;
    held.turn = held_turn(platform_.device().orientation(), platform_.device().status_bar_orientation(), held.screen,
                          held.turn);
    if (held.turn != held_.turn || held.screen != held_.screen)
        gtk_widget_queue_resize(surface_);
    held_ = held;

    for (auto& [serial, layer] : layers_)
        layer.shown = false;
    from_below_.clear();
    std::size_t number = 0;
    for (const auto& window : platform_.shared<WindowList>().visible_from_below())
        add_layers(window, 1, *window, number++);
    find_reach();
    retire_layers();
    order_widgets();
    keep_focus();
    gtk_widget_queue_allocate(surface_);
    gtk_widget_queue_draw(surface_);
}

void Screen::add_layers(const std::shared_ptr<ViewNode>& view, double opacity, const ViewNode& in_window,
                        std::size_t window_number)
{
    if (view->hidden)
        return;
    Layer& layer = layers_[view->serial];
    if (!layer.widget) {
        layer.view = view;
        NodeNews news;
        news.picture = [this] { picture_arrived(); };
        news.activated = [this, seen = layer.view] { activate(seen.lock()); };
        layer.widget = node_widget_new(view, std::move(news));
        gtk_widget_set_parent(layer.widget, surface_);
    }
    node_widget_update(layer.widget);
    layer.shown = true;
    // Alphas multiply: a view's own picture and its subviews fade alike.
    layer.opacity = opacity * std::clamp(view->alpha, 0.0, 1.0);
    layer.place = place_in_window(placement_on_screen(*view), held_);
    const WidgetPlace window = place_in_window(placement_on_screen(in_window), held_);
    layer.clip = window.around();
    layer.clipped = !fills_screen(in_window) && is_whole_turn(window.angle) && !covers(layer.clip, held_.extents());
    layer.window = window_number;
    layer.height = from_below_.size();
    from_below_.push_back(&layer);
    for (const auto& subview : view->subviews)
        add_layers(subview, layer.opacity, in_window, window_number);
}

void Screen::find_reach()
{
    for (auto& [serial, layer] : layers_)
        node_widget_set_reach(layer.widget, layer.shown ? reach_of(layer) : NodeReach::Away);
}

NodeReach Screen::reach_of(const Layer& layer)
{
    const std::shared_ptr<ViewNode> view = layer.view.lock();
    if (layer.opacity <= 0 || !meets(layer.place.around(), held_.extents()))
        return NodeReach::Away;
    const bool to_be_used = view->kind == ViewNode::Kind::Button || view->kind == ViewNode::Kind::WebView;
    if (to_be_used && view->takes_touches)
        return touchable_point(*view) ? NodeReach::Touchable : NodeReach::Away;
    // Any other view is covered if a touch at its centre hits a higher view that is not one of its descendants.
    const std::shared_ptr<ViewNode> touched = hit_test(platform_, placement_on_screen(*view).center);
    const Layer* cover = touched ? layer_of(*touched) : nullptr;
    if (!cover || cover->height <= layer.height)
        return NodeReach::Seen;
    const ViewNode* part = touched.get();
    while (part && part != view.get())
        part = part->parent;
    return part ? NodeReach::Seen : NodeReach::Away;
}

/// A hidden view retains its widget while it lives, so that a page continues where it was.
void Screen::retire_layers()
{
    for (auto each = layers_.begin(); each != layers_.end();) {
        Layer& layer = each->second;
        if (layer.view.expired()) {
            gtk_widget_unparent(layer.widget);
            each = layers_.erase(each);
            continue;
        }
        if (!layer.shown)
            node_widget_set_resolution(layer.widget, {}, 0);
        gtk_widget_set_child_visible(layer.widget, layer.shown);
        ++each;
    }
}

/// GTK searches for the widget under the pointer from the last child on. The surface's glass remains after the shown
/// widgets, so it comes first in that search.
void Screen::order_widgets()
{
    GtkWidget* before = nullptr;
    for (const Layer* layer : from_below_) {
        if (gtk_widget_get_prev_sibling(layer->widget) != before)
            gtk_widget_insert_after(layer->widget, surface_, before);
        before = layer->widget;
    }
}

// ----------------------------------------------------------------------------------------------------------- Window

double Screen::monitor_scale() const
{
    // One point is one point of the monitor, unless the device is larger than the monitor.
    GListModel* monitors = gdk_display_get_monitors(gtk_widget_get_display(surface_));
    auto* monitor = GDK_MONITOR(g_list_model_get_item(monitors, 0));
    if (!monitor)
        return 1;
    GdkRectangle room;
    gdk_monitor_get_geometry(monitor, &room);
    g_object_unref(monitor);
    const CGSize device = held_.extents();
    return std::min({1.0, room.width / device.width, (room.height - monitor_margin) / device.height});
}

int Screen::natural_width() const
{
    return static_cast<int>(std::lround(held_.extents().width * monitor_scale()));
}

int Screen::natural_height() const
{
    return static_cast<int>(std::lround(held_.extents().height * monitor_scale()));
}

void Screen::allocate(int width, int height)
{
    const CGSize device = held_.extents();
    scale_ = std::min({1.0, width / device.width, height / device.height});
    origin_ = {std::floor((width - device.width * scale_) / 2), std::floor((height - device.height * scale_) / 2)};
    place_layers();
}

void Screen::place_layers()
{
    for (Layer* layer : from_below_)
        place_layer(*layer);
}

void Screen::place_layer(Layer& layer)
{
    const WidgetPlace& place = layer.place;
    const CGSize size{static_cast<double>(place.width), static_cast<double>(place.height)};
    // Only translations, scales and rotations: some of GTK's renderers cannot draw a general matrix.
    GskTransform* transform = nullptr;
    if (origin_ != CGPoint{}) {
        const graphene_point_t origin = point_of(origin_);
        transform = gsk_transform_translate(transform, &origin);
    }
    if (scale_ != 1)
        transform = gsk_transform_scale(transform, static_cast<float>(scale_), static_cast<float>(scale_));
    if (place.angle == 0) {
        const graphene_point_t corner = point_of({place.center.x - size.width / 2, place.center.y - size.height / 2});
        transform = gsk_transform_translate(transform, &corner);
    } else {
        const graphene_point_t center = point_of(place.center);
        const graphene_point_t back = point_of({-size.width / 2, -size.height / 2});
        transform = gsk_transform_translate(transform, &center);
        transform = gsk_transform_rotate(transform, degrees(place.angle));
        transform = gsk_transform_translate(transform, &back);
    }
    int least = 0;
    gtk_widget_measure(layer.widget, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
    gtk_widget_allocate(layer.widget, place.width, place.height, -1, transform);
    const bool seen = layer.opacity > 0 && meets(place.around(), held_.extents());
    node_widget_set_resolution(layer.widget, size, seen ? scale_ * gtk_widget_get_scale_factor(surface_) : 0);
}

void Screen::draw(GtkSnapshot* snapshot)
{
    const GdkRGBA black{0, 0, 0, 1};
    const CGSize device = held_.extents();
    const graphene_rect_t area = rect_of({origin_.x, origin_.y, device.width * scale_, device.height * scale_});
    gtk_snapshot_append_color(snapshot, &black, &area);
    draw_layers(snapshot);
    draw_focus(snapshot);
}

void Screen::draw_layers(GtkSnapshot* snapshot)
{
    for (const Layer* layer : from_below_) {
        if (layer->opacity <= 0)
            continue;
        if (layer->clipped) {
            const graphene_rect_t clip =
                rect_of({origin_.x + layer->clip.x * scale_, origin_.y + layer->clip.y * scale_,
                         layer->clip.width * scale_, layer->clip.height * scale_});
            gtk_snapshot_push_clip(snapshot, &clip);
        }
        // Outside the rotation: GTK's other renderer ignores an opacity inside it.
        if (layer->opacity < 1)
            gtk_snapshot_push_opacity(snapshot, layer->opacity);
        gtk_widget_snapshot_child(surface_, layer->widget, snapshot);
        if (layer->opacity < 1)
            gtk_snapshot_pop(snapshot);
        if (layer->clipped)
            gtk_snapshot_pop(snapshot);
    }
}

void Screen::draw_focus(GtkSnapshot* snapshot)
{
    const Layer* layer = shows_focus_ ? focused_layer() : nullptr;
    if (!layer)
        return;
    const auto in_surface = [this](const CGRect& box) {
        return CGRect{origin_.x + box.x * scale_, origin_.y + box.y * scale_, box.width * scale_, box.height * scale_};
    };
    const CGSize device = held_.extents();
    draw_focus_ring(snapshot, in_surface(layer->place.around()), in_surface({0, 0, device.width, device.height}));
}

std::string Screen::snapshot_png(const std::string& path)
{
    if (!window_ || !gtk_widget_get_mapped(surface_))
        return "nothing is shown";
    update();
    // Unscaled, independent of the monitor's size.
    const CGPoint origin = std::exchange(origin_, {});
    const double scale = std::exchange(scale_, 1);
    place_layers();
    GtkSnapshot* snapshot = gtk_snapshot_new();
    draw(snapshot);
    GskRenderNode* node = gtk_snapshot_free_to_node(snapshot);
    const graphene_rect_t device = rect_of({0, 0, held_.extents().width, held_.extents().height});
    GdkTexture* picture = gsk_renderer_render_texture(gtk_native_get_renderer(GTK_NATIVE(window_)), node, &device);
    gsk_render_node_unref(node);
    origin_ = origin;
    scale_ = scale;
    place_layers();
    GBytes* png = gdk_texture_save_to_png_bytes(picture);
    g_object_unref(picture);
    gsize length = 0;
    const auto* bytes = static_cast<const char*>(g_bytes_get_data(png, &length));
    GError* error = nullptr;
    std::string problem;
    if (!g_file_set_contents(path.c_str(), bytes, static_cast<gssize>(length), &error)) {
        problem = error->message;
        g_error_free(error);
    }
    g_bytes_unref(png);
    return problem;
}

} // namespace qoro
