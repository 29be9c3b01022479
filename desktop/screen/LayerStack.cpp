#include "desktop/screen/LayerStack.h"

#include "views/Turns.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace qoro
{

namespace
{

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

LayerStack::LayerStack(Platform& platform, GtkWidget* surface, double max_scale, News news)
    : platform_(platform), surface_(surface), news_(std::move(news)), viewport_{.max_scale = max_scale}
{
}

Layer* LayerStack::find(const ViewNode& view)
{
    const auto found = layers_.find(view.serial);
    return found == layers_.end() ? nullptr : &found->second;
}

// ------------------------------------------------------------------------------------------------------------ Walk

bool LayerStack::walk()
{
    const bool turned = follow_device();
    repainted_ = false;
    std::vector<std::pair<const Layer*, LayerPlace>> before;
    for (const Layer* layer : from_below_)
        before.emplace_back(layer, *layer);
    for (auto& [serial, layer] : layers_)
        layer.shown = false;
    from_below_.clear();
    std::size_t number = 0;
    for (const auto& window : platform_.shared<WindowList>().visible_from_below())
        add(window, 1, *window, number++);
    const bool same = std::ranges::equal(from_below_, before, [](const Layer* layer, const auto& old) {
        return layer == old.first && static_cast<const LayerPlace&>(*layer) == old.second;
    });
    find_reach();
    retire();
    order_widgets();
    if (turned || !same)
        return true;
    // A view may have another player.
    if (repainted_)
        for (const Layer* layer : from_below_)
            tell_resolution(*layer);
    return false;
}

bool LayerStack::follow_device()
{
    const DeviceFacts& facts = platform_.device().facts();
    HeldScreen held = viewport_.held;
    if (facts.screen)
        held.screen = *facts.screen;
    held.turn = held_turn(platform_.device().orientation(), platform_.device().status_bar_orientation(), held.screen,
                          held.turn);
    const bool moved = held.turn != viewport_.held.turn || held.screen != viewport_.held.screen;
    if (moved)
        gtk_widget_queue_resize(surface_);
    viewport_.held = held;
    return moved;
}

void LayerStack::add(const std::shared_ptr<ViewNode>& view, double opacity, const ViewNode& in_window,
                     std::size_t window_number)
{
    if (view->hidden)
        return;
    Layer& layer = layers_[view->serial];
    if (!layer.widget) {
        layer.view = view;
        NodeNews news;
        news.picture = [this, seen = layer.view] {
            const std::shared_ptr<ViewNode> video = seen.lock();
            const Layer* shown = video ? find(*video) : nullptr;
            return shown && shown->shown && news_.picture(*shown);
        };
        news.activated = [this, seen = layer.view] { news_.activated(seen.lock()); };
        layer.widget = node_widget_new(view, std::move(news));
        gtk_widget_set_parent(layer.widget, surface_);
    }
    repainted_ |= node_widget_update(layer.widget);
    layer.shown = true;
    // Alphas multiply: a view's own picture and its subviews fade alike.
    layer.opacity = opacity * std::clamp(view->alpha, 0.0, 1.0);
    layer.place = place_in_window(placement_on_screen(*view), viewport_.held);
    const WidgetPlace window = place_in_window(placement_on_screen(in_window), viewport_.held);
    layer.clip = window.around();
    layer.clipped =
        !fills_screen(in_window) && is_whole_turn(window.angle) && !covers(layer.clip, viewport_.held.extents());
    layer.window = window_number;
    layer.height = from_below_.size();
    from_below_.push_back(&layer);
    for (const auto& subview : view->subviews)
        add(subview, layer.opacity, in_window, window_number);
}

void LayerStack::find_reach()
{
    for (auto& [serial, layer] : layers_)
        node_widget_set_reach(layer.widget, layer.shown ? reach_of(layer) : NodeReach::Away);
}

NodeReach LayerStack::reach_of(const Layer& layer)
{
    const std::shared_ptr<ViewNode> view = layer.view.lock();
    if (layer.opacity <= 0 || !meets(layer.place.around(), viewport_.held.extents()))
        return NodeReach::Away;
    const bool to_be_used = view->kind == ViewNode::Kind::Button || view->kind == ViewNode::Kind::WebView;
    if (to_be_used && view->takes_touches)
        return touchable_point(*view) ? NodeReach::Touchable : NodeReach::Away;
    // Any other view is covered if a touch at its centre hits a higher view that is not one of its descendants.
    const std::shared_ptr<ViewNode> touched = hit_test(platform_, placement_on_screen(*view).center);
    const Layer* cover = touched ? find(*touched) : nullptr;
    if (!cover || cover->height <= layer.height)
        return NodeReach::Seen;
    const ViewNode* part = touched.get();
    while (part && part != view.get())
        part = part->parent;
    return part ? NodeReach::Seen : NodeReach::Away;
}

/// A hidden view keeps its widget, so that a page keeps its state; a destroyed view loses it.
void LayerStack::retire()
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

/// GTK searches for the widget under the pointer from the last child to the first. The surface's glass remains the last
/// child, after the shown widgets, so GTK asks it first.
void LayerStack::order_widgets()
{
    GtkWidget* before = nullptr;
    for (const Layer* layer : from_below_) {
        if (gtk_widget_get_prev_sibling(layer->widget) != before)
            gtk_widget_insert_after(layer->widget, surface_, before);
        before = layer->widget;
    }
}

// -------------------------------------------------------------------------------------------------------- Placement

void LayerStack::allocate(int width, int height)
{
    viewport_.fit(width, height);
    place_all();
}

void LayerStack::unscaled(const std::function<void()>& action)
{
    const Viewport before = std::exchange(viewport_, Viewport{.held = viewport_.held});
    place_all();
    action();
    viewport_ = before;
    place_all();
}

void LayerStack::place_all()
{
    for (Layer* layer : from_below_)
        place(*layer);
}

void LayerStack::place(const Layer& layer)
{
    const auto& [held, origin, scale, max_scale] = viewport_;
    const WidgetPlace& at = layer.place;
    const CGSize size{static_cast<double>(at.width), static_cast<double>(at.height)};
    // Only translations, scales and rotations: some of GTK's renderers cannot draw a general matrix.
    GskTransform* transform = nullptr;
    if (origin != CGPoint{}) {
        const graphene_point_t corner = point_of(origin);
        transform = gsk_transform_translate(transform, &corner);
    }
    if (scale != 1)
        transform = gsk_transform_scale(transform, static_cast<float>(scale), static_cast<float>(scale));
    if (at.angle == 0) {
        const graphene_point_t corner = point_of({at.center.x - size.width / 2, at.center.y - size.height / 2});
        transform = gsk_transform_translate(transform, &corner);
    } else {
        const graphene_point_t center = point_of(at.center);
        const graphene_point_t back = point_of({-size.width / 2, -size.height / 2});
        transform = gsk_transform_translate(transform, &center);
        transform = gsk_transform_rotate(transform, degrees(at.angle));
        transform = gsk_transform_translate(transform, &back);
    }
    int least = 0;
    gtk_widget_measure(layer.widget, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
    gtk_widget_allocate(layer.widget, at.width, at.height, -1, transform);
    tell_resolution(layer);
}

void LayerStack::tell_resolution(const Layer& layer)
{
    const WidgetPlace& at = layer.place;
    const bool seen = layer.opacity > 0 && meets(at.around(), viewport_.held.extents());
    node_widget_set_resolution(layer.widget, {static_cast<double>(at.width), static_cast<double>(at.height)},
                               seen ? viewport_.scale * gtk_widget_get_scale_factor(surface_) : 0);
}

// ---------------------------------------------------------------------------------------------------------- Drawing

std::vector<DrawnNode> LayerStack::draw() const
{
    std::vector<DrawnNode> drawn;
    for (const Layer* layer : from_below_) {
        node_widget_catch_up(layer->widget);
        drawn.push_back(draw(*layer));
    }
    return drawn;
}

DrawnNode LayerStack::draw(const Layer& layer) const
{
    if (layer.opacity <= 0)
        return nullptr;
    GtkSnapshot* snapshot = gtk_snapshot_new();
    if (layer.clipped) {
        const graphene_rect_t clip = rect_of(viewport_.to_surface(layer.clip));
        gtk_snapshot_push_clip(snapshot, &clip);
    }
    // Outside the rotation: GTK's other renderer ignores an opacity inside it.
    if (layer.opacity < 1)
        gtk_snapshot_push_opacity(snapshot, layer.opacity);
    gtk_widget_snapshot_child(surface_, layer.widget, snapshot);
    if (layer.opacity < 1)
        gtk_snapshot_pop(snapshot);
    if (layer.clipped)
        gtk_snapshot_pop(snapshot);
    return drawn_node(snapshot);
}

} // namespace qoro
