#include "platform/Inbound.h"
#include "views/Turns.h"
#include "views/ViewNode.h"
#include "views/ViewPath.h"

#include <array>
#include <cmath>
#include <optional>
#include <tuple>
#include <utility>

namespace qoro
{

namespace
{

constexpr double LeastAlphaForTouch = 0.01;

bool inside(const CGRect& rect, CGPoint point)
{
    return point.x >= rect.x && point.x < rect.x + rect.width && point.y >= rect.y && point.y < rect.y + rect.height;
}

/// Converts a point from the parent's coordinates to the view's; absent when it is outside the view.
std::optional<CGPoint> held_point(const ViewNode& view, CGPoint point)
{
    const CGRect& frame = view.frame;
    // At quarter turns test against the frame itself, so that rounding opens no gap between neighbouring views.
    if (is_whole_turn(view.angle)) {
        if (!inside(frame, point))
            return {};
        const double from_left = point.x - frame.x;
        const double from_top = point.y - frame.y;
        const double from_right = frame.x + frame.width - point.x;
        const double from_bottom = CGRectGetMaxY(frame) - point.y;
        if (view.angle == QuarterTurn)
            return CGPoint{from_top, from_right};
        if (view.angle == -QuarterTurn)
            return CGPoint{from_bottom, from_left};
        if (std::fabs(view.angle) == HalfTurn)
            return CGPoint{from_right, from_bottom};
        return CGPoint{from_left, from_top};
    }
    const CGPoint from_middle = turned({point.x - view.center.x, point.y - view.center.y}, -view.angle);
    const CGPoint own{from_middle.x + view.bounds.width / 2, from_middle.y + view.bounds.height / 2};
    if (!inside({0, 0, view.bounds.width, view.bounds.height}, own))
        return {};
    return own;
}

std::optional<CGPoint> point_in_window(const ViewNode& window, CGPoint point)
{
    return fills_screen(window) ? point : held_point(window, point);
}

bool is_above(const ViewNode& window, const ViewNode& other)
{
    return std::tie(window.window_level, window.shown_serial) > std::tie(other.window_level, other.shown_serial);
}

/// @param own the point in the view's coordinates; absent when it is outside the view
std::shared_ptr<ViewNode> reached(const std::shared_ptr<ViewNode>& view, std::optional<CGPoint> own)
{
    if (!own || view->hidden || view->alpha < LeastAlphaForTouch || !view->takes_touches)
        return nullptr;
    for (auto subview = view->subviews.rbegin(); subview != view->subviews.rend(); ++subview)
        if (auto found = reached(*subview, held_point(**subview, *own)))
            return found;
    return view;
}

void deliver_touch(Platform& platform, const std::shared_ptr<ViewNode>& view)
{
    if (view && view->kind == ViewNode::Kind::Button)
        UIButton(view).sendTouchUpInside();
    else if (view && view->kind == ViewNode::Kind::WebView)
        view->page_touched = platform.loop().now();
}

} // namespace

std::shared_ptr<ViewNode> hit_test(Platform& platform, CGPoint point)
{
    auto& list = platform.shared<WindowList>();
    ++list.hit_tests;
    // The topmost window at the point; of two that are equally high, the one created last.
    std::shared_ptr<ViewNode> top;
    std::optional<CGPoint> in_top;
    for (const auto& each : list.windows) {
        auto window = each.lock();
        if (!window || window->hidden || (top && is_above(*top, *window)))
            continue;
        if (const auto own = point_in_window(*window, point)) {
            top = std::move(window);
            in_top = own;
        }
    }
    return top ? reached(top, in_top) : nullptr;
}

std::optional<CGPoint> touchable_point(const ViewNode& view)
{
    // Offsets from the centre, as fractions of the view's size. The centre alone does not suffice: another control may
    // cover it.
    constexpr std::array<double, 3> Shares{0, -0.35, 0.35};
    const Placement place = placement_on_screen(view);
    const std::optional<CGSize> screen = view.platform.device().facts().screen;
    for (const double down : Shares)
        for (const double across : Shares) {
            const CGPoint offset = turned({across * place.bounds.width, down * place.bounds.height}, place.angle);
            const CGPoint point{place.center.x + offset.x, place.center.y + offset.y};
            if (screen && !inside({0, 0, screen->width, screen->height}, point))
                continue;
            if (hit_test(view.platform, point).get() == &view)
                return point;
        }
    return {};
}

std::shared_ptr<ViewNode> touch(Platform& platform, CGPoint point)
{
    std::shared_ptr<ViewNode> view;
    platform.dispatch([&] {
        view = hit_test(platform, point);
        deliver_touch(platform, view);
    });
    return view;
}

void touch_view(Platform& platform, const std::shared_ptr<ViewNode>& view)
{
    come_in(
        platform, "touch", [&] { return touch_record(view); },
        [&] { platform.dispatch([&] { deliver_touch(platform, view); }); });
}

} // namespace qoro
