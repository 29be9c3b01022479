#include "kit/ControlRects.h"

#include "kit/PagePlace.h"
#include "views/Turns.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{

/// Collects the views that are drawn after the page.
/// @param passed whether the page has been drawn
void collect_in_front(const ViewNode& view, const ViewNode& page, bool& passed, std::vector<const ViewNode*>& front)
{
    if (passed)
        front.push_back(&view);
    passed = passed || &view == &page;
    for (const auto& subview : view.subviews)
        collect_in_front(*subview, page, passed, front);
}

std::vector<const ViewNode*> in_front_of(const ViewNode& page)
{
    std::vector<const ViewNode*> front;
    bool passed = false;
    for (const auto& window : page.platform.shared<WindowList>().visible_from_below())
        collect_in_front(*window, page, passed, front);
    return front;
}

/// The rectangle of a view in the coordinates of a page as its script knows them.
CGRect rect_in_page(const ViewNode& view, const Placement& page, double scale)
{
    const Placement place = placement_on_screen(view);
    const CGPoint offset = turned({place.center.x - page.center.x, place.center.y - page.center.y}, -page.angle);
    const CGSize extents = turned_extents(place.bounds, place.angle - page.angle);
    return {(page.bounds.width / 2 + offset.x - extents.width / 2) / scale,
            (page.bounds.height / 2 + offset.y - extents.height / 2) / scale, extents.width / scale,
            extents.height / scale};
}

bool overlaps(const CGRect& rect, CGSize page)
{
    return std::isfinite(rect.x + rect.y + rect.width + rect.height) && rect.width > 0 && rect.height > 0 &&
           rect.x < page.width && rect.y < page.height && rect.x + rect.width > 0 && rect.y + rect.height > 0;
}

} // namespace

NSArray rects_over_page(const ViewNode& page, std::span<const NamedControl> controls, CGSize screen)
{
    const Placement place = placement_on_screen(page);
    const double scale = page.web ? page.web->page_scale() : 1;
    const CGSize extent{place.bounds.width / scale, place.bounds.height / scale};
    const std::vector<const ViewNode*> front = in_front_of(page);
    std::vector<Value> rects;
    for (const auto& [name, view] : controls) {
        const auto node = view.node();
        if (!node || std::ranges::find(front, node.get()) == front.end())
            continue;
        const CGRect rect = rect_in_page(*node, place, scale);
        if (overlaps(rect, extent))
            rects.emplace_back(NSDictionary{{"name", name},
                                            {"x", rect.x},
                                            {"y", rect.y},
                                            {"width", rect.width},
                                            {"height", rect.height},
                                            {"visible", visible_part(*node, screen).has_value()},
                                            {"hittable", touchable_point(*node).has_value()}});
    }
    return NSArray(std::move(rects));
}

} // namespace qoro
