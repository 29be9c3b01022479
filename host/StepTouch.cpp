#include "host/StepTouch.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"
#include "platform/Platform.h"
#include "views/Turns.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <utility>

namespace qoro
{

namespace
{

using Controller = std::weak_ptr<QoroVideoWebViewController>;
using Found = std::function<void(const TouchAim&)>;

bool is_page(const std::shared_ptr<ViewNode>& view)
{
    return view && view->kind == ViewNode::Kind::WebView && view->web;
}

/// The topmost page in a view that is not hidden; null without one.
std::shared_ptr<ViewNode> page_in(const std::shared_ptr<ViewNode>& view)
{
    if (view->hidden)
        return nullptr;
    for (auto subview = view->subviews.rbegin(); subview != view->subviews.rend(); ++subview)
        if (auto page = page_in(*subview))
            return page;
    return is_page(view) ? view : nullptr;
}

std::shared_ptr<ViewNode> topmost_page(Platform& platform)
{
    const auto windows = platform.shared<WindowList>().visible_from_below();
    for (auto window = windows.rbegin(); window != windows.rend(); ++window)
        if (auto page = page_in(*window))
            return page;
    return nullptr;
}

CGPoint on_screen(const ViewNode& view, CGPoint own)
{
    const Placement place = placement_on_screen(view);
    const CGPoint offset = turned({own.x - place.bounds.width / 2, own.y - place.bounds.height / 2}, place.angle);
    return {place.center.x + offset.x, place.center.y + offset.y};
}

CGPoint in_view(const ViewNode& view, CGPoint point)
{
    const Placement place = placement_on_screen(view);
    const CGPoint offset = turned({point.x - place.center.x, point.y - place.center.y}, -place.angle);
    return {offset.x + place.bounds.width / 2, offset.y + place.bounds.height / 2};
}

std::optional<std::string> name_of(const ViewNode& view, const Controller& controller)
{
    if (view.kind != ViewNode::Kind::Button)
        return std::nullopt;
    if (const auto ad = controller.lock())
        for (const std::string& name : button_names())
            if (button_named(*ad, name).node().get() == &view)
                return name;
    if (view.targets.empty())
        return std::nullopt;
    return std::string(view.targets.front().name());
}

void aim_at_point(Platform& platform, CGPoint point, const Controller& controller, const Found& found)
{
    std::shared_ptr<ViewNode> view = hit_test(platform, point);
    if (!is_page(view)) {
        const auto hit = view ? name_of(*view, controller) : std::nullopt;
        found({std::move(view), hit});
        return;
    }
    view->web->aim_touch(in_view(*view, point), [view, found](const PageTouch& touch) {
        found({view, touch.element.empty() ? "page" : "page " + touch.element});
    });
}

} // namespace

void aim_touch(Platform& platform, const TouchStep& step, const Controller& controller, const Found& found)
{
    if (step.selector.empty())
        return aim_at_point(platform, step.point, controller, found);
    const std::shared_ptr<ViewNode> page = topmost_page(platform);
    const auto aim = [&platform, page, selector = step.selector, controller,
                      found](const std::optional<PageTouch>& element) {
        if (element)
            return aim_at_point(platform, on_screen(*page, element->point), controller, found);
        platform.emit(event::Logged{ZulixLogTagOfWarnning, "a step touches no element of the page: " + selector});
        found({});
    };
    if (page)
        page->web->find_element(step.selector, aim);
    else
        aim(std::nullopt);
}

void deliver_touch(Platform& platform, const TouchAim& aim)
{
    touch_view(platform, aim.view);
    if (is_page(aim.view))
        aim.view->web->touch_page();
}

} // namespace qoro
