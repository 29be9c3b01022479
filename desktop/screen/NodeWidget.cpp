#include "desktop/screen/NodeWidget.h"

#include "desktop/glib/Liveness.h"
#include "desktop/glib/Owned.h"
#include "desktop/glib/StartupTrace.h"
#include "desktop/images/GdkImages.h"
#include "desktop/media/PictureSource.h"
#include "desktop/screen/Painting.h"
#include "desktop/screen/WidgetSource.h"
#include "kit/Accessible.h"

#include <gtk/gtk.h>

#include <cmath>
#include <cstdint>
#include <utility>

namespace qoro
{

namespace
{

/// State of a widget in addition to GTK's own.
struct NodeState {
    std::weak_ptr<ViewNode> view;
    std::uint64_t revision = 0;                // of the view, at the last update
    PlayerEngine* player = nullptr;            // source of the frames
    double resolution = 0;                     // device pixels per point; 0 while not shown
    VideoFrame frame;                          // content of a video's picture
    std::shared_ptr<const DecodedImage> image; // content of a button's or an image view's picture
    PaintState look;
    SourceId spinning;
    NodeNews news;
    Accessible said; // last reported to assistive technology
    NodeReach reach = NodeReach::Away;
    /// For players that outlive the widget.
    Liveness<NodeState> liveness{*this};
};

PictureSource* picture_source_of(PlayerEngine* player)
{
    return player ? player->pictures() : nullptr;
}

WidgetSource* page_of(const ViewNode& view)
{
    return view.web ? view.web->widget_source() : nullptr;
}

} // namespace

struct QoroNodeWidget {
    GtkWidget parent;
    NodeState* state;
};

struct QoroNodeWidgetClass {
    GtkWidgetClass parent;
};

G_DEFINE_TYPE(QoroNodeWidget, qoro_node_widget, GTK_TYPE_WIDGET)

namespace
{

QoroNodeWidget* self_of(void* widget)
{
    return static_cast<QoroNodeWidget*>(widget);
}

VideoFrame latest_frame(const NodeState& state, const ViewNode& view)
{
    const PictureSource* source = picture_source_of(view.player);
    return source && state.resolution > 0 ? source->latest_frame() : VideoFrame();
}

void fetch_frame(NodeState& state, const ViewNode& view)
{
    VideoFrame frame = latest_frame(state, view);
    if (frame.pixels == state.frame.pixels)
        return;
    state.frame = std::move(frame);
    state.look.picture = picture_of(state.frame);
    if (state.look.picture)
        startup_point("first picture drawn");
    state.look.resolution = state.resolution;
}

void fetch_image(NodeState& state, const ViewNode& view)
{
    if (view.image.decoded() == state.image)
        return;
    state.image = view.image.decoded();
    const auto* decoded = dynamic_cast<const GdkDecodedImage*>(state.image.get());
    state.look.picture = decoded ? picture_of(*decoded) : nullptr;
}

void snapshot_node(GtkWidget* widget, GtkSnapshot* snapshot)
{
    NodeState& state = *self_of(widget)->state;
    const std::shared_ptr<ViewNode> view = state.view.lock();
    if (!view)
        return;
    if (view->kind == ViewNode::Kind::Video)
        fetch_frame(state, *view);
    else
        fetch_image(state, *view);
    paint(snapshot, gtk_widget_get_pango_context(widget), *view,
          {static_cast<double>(gtk_widget_get_width(widget)), static_cast<double>(gtk_widget_get_height(widget))},
          state.look);
    if (GtkWidget* page = gtk_widget_get_first_child(widget))
        gtk_widget_snapshot_child(widget, page, snapshot);
}

void measure_node(GtkWidget* widget, GtkOrientation orientation, int for_size, int* minimum, int* natural,
                  int* minimum_baseline, int* natural_baseline)
{
    // The view tree determines the size. GTK requires a measurement before an allocation, so the page is measured and
    // the result ignored.
    if (GtkWidget* page = gtk_widget_get_first_child(widget))
        gtk_widget_measure(page, orientation, for_size, minimum, natural, minimum_baseline, natural_baseline);
    *minimum = *natural = 0;
    *minimum_baseline = *natural_baseline = -1;
}

void allocate_node(GtkWidget* widget, int width, int height, int baseline)
{
    if (GtkWidget* page = gtk_widget_get_first_child(widget))
        gtk_widget_allocate(page, width, height, baseline, nullptr);
}

void dispose_node(GObject* object)
{
    if (GtkWidget* page = gtk_widget_get_first_child(GTK_WIDGET(object)))
        gtk_widget_unparent(page);
    node_widget_release(GTK_WIDGET(object));
    G_OBJECT_CLASS(qoro_node_widget_parent_class)->dispose(object);
}

void finalize_node(GObject* object)
{
    delete self_of(object)->state;
    G_OBJECT_CLASS(qoro_node_widget_parent_class)->finalize(object);
}

// ---------------------------------------------------------------------------------------- Assistive technology

GtkAccessibleRole role_of(ViewNode::Kind kind)
{
    switch (kind) {
    case ViewNode::Kind::Button:
        return GTK_ACCESSIBLE_ROLE_BUTTON;
    case ViewNode::Kind::Label:
        return GTK_ACCESSIBLE_ROLE_LABEL;
    case ViewNode::Kind::CountDown:
        return GTK_ACCESSIBLE_ROLE_TIMER;
    case ViewNode::Kind::ImageView:
    case ViewNode::Kind::Video:
        return GTK_ACCESSIBLE_ROLE_IMG;
    case ViewNode::Kind::WebView: // represented by the page's own widget
        return GTK_ACCESSIBLE_ROLE_GENERIC;
    case ViewNode::Kind::Spinner:
        return GTK_ACCESSIBLE_ROLE_PROGRESS_BAR;
    default: // always hidden
        return GTK_ACCESSIBLE_ROLE_GENERIC;
    }
}

/// The view of the page that a widget shows; null for another widget, and before the page has begun.
GtkWidget* page_view_of(GtkWidget* widget)
{
    GtkWidget* container = gtk_widget_get_first_child(widget);
    return container ? gtk_widget_get_first_child(container) : nullptr;
}

/// Reports changes of a view's role, name and state. The name of a countdown changes once a second.
void speak(GtkWidget* widget, NodeState& state, const ViewNode& view)
{
    Accessible says = accessible(view);
    GtkWidget* page = page_view_of(widget);
    GtkAccessible* speaker = GTK_ACCESSIBLE(page ? page : widget);
    if (says.name != state.said.name)
        gtk_accessible_update_property(speaker, GTK_ACCESSIBLE_PROPERTY_LABEL, says.name.c_str(), -1);
    if (says.on != state.said.on && says.on)
        gtk_accessible_update_state(speaker, GTK_ACCESSIBLE_STATE_PRESSED,
                                    *says.on ? GTK_ACCESSIBLE_TRISTATE_TRUE : GTK_ACCESSIBLE_TRISTATE_FALSE, -1);
    else if (says.on != state.said.on)
        gtk_accessible_reset_state(speaker, GTK_ACCESSIBLE_STATE_PRESSED);
    if (says.usable != state.said.usable || says.role != state.said.role)
        gtk_accessible_update_state(speaker, GTK_ACCESSIBLE_STATE_DISABLED, !says.usable, -1);
    state.said = std::move(says);
}

/// Unreachable views are hidden from assistive technology.
void show_reach(GtkWidget* widget, const NodeState& state)
{
    const bool hidden = state.reach == NodeReach::Away || state.said.role == Accessible::Role::Unexposed;
    gtk_accessible_update_state(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_STATE_HIDDEN, hidden, -1);
    gtk_widget_set_focusable(widget,
                             state.reach == NodeReach::Touchable && state.said.role == Accessible::Role::Button);
}

/// Positions text without rounding, as the layout does.
void use_exact_text(GtkWidget* widget)
{
    const Owned<cairo_font_options_t, cairo_font_options_destroy> options(cairo_font_options_create());
    cairo_font_options_t* exact = options.get();
    cairo_font_options_set_hint_metrics(exact, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(exact, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_antialias(exact, CAIRO_ANTIALIAS_GRAY);
    gtk_widget_set_font_options(widget, exact);
    pango_context_set_round_glyph_positions(gtk_widget_get_pango_context(widget), FALSE);
}

void hear_frames_of(GtkWidget* widget, PlayerEngine* player)
{
    NodeState& state = *self_of(widget)->state;
    if (state.player == player)
        return;
    // The previous player may be destroyed, so its callback is not reset; the view refers to live players only.
    state.player = player;
    if (PictureSource* source = picture_source_of(player))
        source->on_frame = state.liveness.guard([widget](const NodeState& self) {
            if (!self.news.picture())
                gtk_widget_queue_draw(widget);
        });
}

void show_page(GtkWidget* widget, const ViewNode& view)
{
    WidgetSource* source = page_of(view);
    if (!source)
        return;
    source->set_transparent(!view.opaque);
    GtkWidget* page = source->widget();
    if (gtk_widget_get_parent(page) == widget)
        return;
    if (gtk_widget_get_parent(page))
        gtk_widget_unparent(page);
    gtk_widget_set_parent(page, widget);
    source->on_view = self_of(widget)->state->liveness.guard([widget](NodeState& state) {
        const std::shared_ptr<ViewNode> shown = state.view.lock();
        state.said = {};
        if (shown)
            speak(widget, state, *shown);
    });
}

gboolean turn_spinner(void* widget)
{
    NodeState& state = *self_of(widget)->state;
    state.look.spinner_step = (state.look.spinner_step + 1) % spinner_steps;
    gtk_widget_queue_draw(GTK_WIDGET(widget));
    return G_SOURCE_CONTINUE;
}

void activate_node(GtkWidget* widget, const char*, GVariant*)
{
    const NodeNews& news = self_of(widget)->state->news;
    if (news.activated)
        news.activated();
}

} // namespace

static void qoro_node_widget_init(QoroNodeWidget* self)
{
    self->state = new NodeState;
    use_exact_text(GTK_WIDGET(self));
}

static void qoro_node_widget_class_init(QoroNodeWidgetClass* type)
{
    G_OBJECT_CLASS(type)->dispose = dispose_node;
    G_OBJECT_CLASS(type)->finalize = finalize_node;
    GTK_WIDGET_CLASS(type)->snapshot = snapshot_node;
    GTK_WIDGET_CLASS(type)->measure = measure_node;
    GTK_WIDGET_CLASS(type)->size_allocate = allocate_node;
    gtk_widget_class_install_action(GTK_WIDGET_CLASS(type), "control.activate", nullptr, activate_node);
}

GtkWidget* node_widget_new(const std::shared_ptr<ViewNode>& view, NodeNews news)
{
    auto* widget =
        GTK_WIDGET(g_object_new(qoro_node_widget_get_type(), "accessible-role", role_of(view->kind), nullptr));
    NodeState& state = *self_of(widget)->state;
    state.view = view;
    state.news = std::move(news);
    show_reach(widget, state);
    // A page receives input where the surface permits it; the surface handles all other input.
    gtk_widget_set_can_target(widget, view->kind == ViewNode::Kind::WebView);
    return widget;
}

bool node_widget_update(GtkWidget* widget)
{
    NodeState& state = *self_of(widget)->state;
    const std::shared_ptr<ViewNode> view = state.view.lock();
    // The view's revision does not change when its player is destroyed.
    if (!view || (view->revision == state.revision && view->player == state.player))
        return false;
    state.revision = view->revision;
    hear_frames_of(widget, view->player);
    show_page(widget, *view);
    const Accessible::Role before = state.said.role;
    speak(widget, state, *view);
    if (state.said.role != before)
        show_reach(widget, state);
    gtk_widget_queue_draw(widget);
    return true;
}

void node_widget_set_reach(GtkWidget* widget, NodeReach reach)
{
    NodeState& state = *self_of(widget)->state;
    if (state.reach == reach)
        return;
    state.reach = reach;
    show_reach(widget, state);
}

GtkWidget* node_widget_focus_target(GtkWidget* widget)
{
    const NodeState& state = *self_of(widget)->state;
    if (state.reach != NodeReach::Touchable)
        return nullptr;
    if (GtkWidget* page = page_view_of(widget))
        return page;
    return state.said.role == Accessible::Role::Button ? widget : nullptr;
}

void node_widget_set_pressed(GtkWidget* widget, bool pressed)
{
    bool& before = self_of(widget)->state->look.pressed;
    if (before == pressed)
        return;
    before = pressed;
    gtk_widget_queue_draw(widget);
}

void node_widget_set_resolution(GtkWidget* widget, CGSize size, double pixels_per_point)
{
    NodeState& state = *self_of(widget)->state;
    state.resolution = pixels_per_point;
    const std::shared_ptr<ViewNode> view = state.view.lock();
    if (!view)
        return;
    if (PictureSource* source = picture_source_of(view->player))
        source->set_picture_size(static_cast<int>(std::lround(size.width * pixels_per_point)),
                                 static_cast<int>(std::lround(size.height * pixels_per_point)));
    if (view->kind != ViewNode::Kind::Spinner)
        return;
    if (pixels_per_point <= 0)
        state.spinning.reset();
    else if (!state.spinning)
        state.spinning.reset(g_timeout_add(1000 / spinner_steps, turn_spinner, widget));
}

VideoFrame node_widget_next_picture(GtkWidget* widget)
{
    const NodeState& state = *self_of(widget)->state;
    const std::shared_ptr<ViewNode> view = state.view.lock();
    VideoFrame frame = view ? latest_frame(state, *view) : VideoFrame();
    return frame.width == state.frame.width && frame.height == state.frame.height ? frame : VideoFrame();
}

void node_widget_catch_up(GtkWidget* widget)
{
    const NodeState& state = *self_of(widget)->state;
    const std::shared_ptr<ViewNode> view = state.view.lock();
    if (view && view->kind == ViewNode::Kind::Video && latest_frame(state, *view).pixels != state.frame.pixels)
        gtk_widget_queue_draw(widget);
}

void node_widget_release(GtkWidget* widget)
{
    NodeState& state = *self_of(widget)->state;
    state.spinning.reset();
    const std::shared_ptr<ViewNode> view = state.view.lock();
    if (view && state.player && view->player == state.player)
        if (PictureSource* source = picture_source_of(state.player)) {
            source->on_frame = nullptr;
            source->set_picture_size(0, 0);
        }
    state.player = nullptr;
    state.view.reset();
}

} // namespace qoro
