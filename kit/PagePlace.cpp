#include "kit/PagePlace.h"

#include "views/Turns.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{

constexpr double LeastAlphaToBeSeen = 0.01;

CGRect box_of(const ViewNode& view)
{
    const Placement place = placement_on_screen(view);
    const CGSize extents = turned_extents(place.bounds, place.angle);
    return {place.center.x - extents.width / 2, place.center.y - extents.height / 2, extents.width, extents.height};
}

CGRect common(const CGRect& a, const CGRect& b)
{
    const double left = std::max(a.x, b.x);
    const double top = std::max(a.y, b.y);
    const double right = std::min(a.x + a.width, b.x + b.width);
    const double bottom = std::min(CGRectGetMaxY(a), CGRectGetMaxY(b));
    return {left, top, std::max(0.0, right - left), std::max(0.0, bottom - top)};
}

bool is_seen(const ViewNode& view)
{
    return !view.hidden && view.alpha >= LeastAlphaToBeSeen;
}

/// The window that shows the view; null when the view or an ancestor is invisible, or when it is in no window.
const ViewNode* window_of(const ViewNode& view)
{
    const ViewNode* each = &view;
    while (each && is_seen(*each) && each->parent)
        each = each->parent;
    return is_seen(*each) && each->kind == ViewNode::Kind::Window ? each : nullptr;
}

enum class Met { Nothing, Cover, Sought };

/// Searches from the topmost view for the one sought, or for a video or a page that alone covers the whole area.
Met walk_down(const ViewNode& view, const ViewNode& sought, const CGRect& area)
{
    if (!is_seen(view))
        return Met::Nothing;
    for (auto subview = view.subviews.rbegin(); subview != view.subviews.rend(); ++subview)
        if (const Met met = walk_down(**subview, sought, area); met != Met::Nothing)
            return met;
    if (&view == &sought)
        return Met::Sought;
    const bool opaque = view.alpha >= 1 &&
                        (view.kind == ViewNode::Kind::Video || (view.kind == ViewNode::Kind::WebView && view.opaque));
    return opaque && common(box_of(view), area) == area ? Met::Cover : Met::Nothing;
}

bool is_covered(const ViewNode& view, const CGRect& area)
{
    const auto windows = view.platform.shared<WindowList>().visible_from_below();
    for (auto window = windows.rbegin(); window != windows.rend(); ++window)
        if (const Met met = walk_down(**window, view, area); met != Met::Nothing)
            return met == Met::Cover;
    return false;
}

/// Converts a rectangle to the coordinates of the screen rotated back by an angle.
CGRect turned_back(const CGRect& rect, CGSize screen, double angle)
{
    const CGPoint from_middle{rect.x + rect.width / 2 - screen.width / 2, rect.y + rect.height / 2 - screen.height / 2};
    const CGPoint offset = turned(from_middle, -angle);
    const CGSize extents = turned_extents({rect.width, rect.height}, angle);
    const CGSize held = turned_extents(screen, angle);
    return {held.width / 2 + offset.x - extents.width / 2, held.height / 2 + offset.y - extents.height / 2,
            extents.width, extents.height};
}

CGRect scaled(const CGRect& rect, double scale)
{
    return {rect.x / scale, rect.y / scale, rect.width / scale, rect.height / scale};
}

} // namespace

std::optional<CGRect> visible_part(const ViewNode& view, CGSize screen)
{
    const ViewNode* window = window_of(view);
    if (!window)
        return std::nullopt;
    const CGRect visible = common(common(box_of(view), {0, 0, screen.width, screen.height}), box_of(*window));
    if (visible.width <= 0 || visible.height <= 0 || is_covered(view, visible))
        return std::nullopt;
    return visible;
}

PagePlace place_of_page(const ViewNode& page, CGSize screen, double scale)
{
    const Placement placement = placement_on_screen(page);
    const double angle = is_whole_turn(placement.angle) ? placement.angle : 0;
    const CGRect box = box_of(page);
    const CGRect position = turned_back(box, screen, angle);
    const CGSize held = turned_extents(screen, angle);

    PagePlace place;
    place.screen = {held.width / scale, held.height / scale};
    place.position = scaled(position, scale);
    const auto visible = visible_part(page, screen);
    if (!visible)
        return place;
    const CGRect seen = turned_back(*visible, screen, angle);
    place.visible = scaled({seen.x - position.x, seen.y - position.y, seen.width, seen.height}, scale);
    place.exposed_percentage = 100 * (visible->width * visible->height) / (box.width * box.height);
    return place;
}

} // namespace qoro
