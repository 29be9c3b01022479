#include "views/ViewPath.h"

#include "platform/Inbound.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qoro
{

Value view_path(const std::shared_ptr<ViewNode>& view)
{
    if (!view)
        return {};
    std::vector<Value> path;
    const ViewNode* node = view.get();
    for (; node->parent; node = node->parent) {
        const auto& siblings = node->parent->subviews;
        const auto place = std::ranges::find(siblings, node, [](const auto& each) { return each.get(); });
        path.emplace_back(static_cast<std::int64_t>(place - siblings.begin()));
    }
    const auto windows = node->platform.shared<WindowList>().all();
    const auto window = std::ranges::find(windows, node, [](const auto& each) { return each.get(); });
    if (window == windows.end())
        return {};
    path.emplace_back(static_cast<std::int64_t>(window - windows.begin()));
    std::ranges::reverse(path);
    return NSArray(std::move(path));
}

std::shared_ptr<ViewNode> view_at(Platform& platform, const Value& path)
{
    const NSArray places = path.array();
    const auto windows = platform.shared<WindowList>().all();
    std::shared_ptr<ViewNode> view;
    for (std::size_t depth = 0; depth < places.count(); ++depth) {
        const auto& among = depth == 0 ? windows : view->subviews;
        const auto place = static_cast<std::size_t>(places[depth].integer());
        if (place >= among.size())
            return nullptr;
        // Two steps: the assignment may otherwise destroy the list that it reads.
        const std::shared_ptr<ViewNode> next = among[place];
        view = next;
    }
    return view;
}

Value touch_record(const std::shared_ptr<ViewNode>& view)
{
    if (!view)
        return {};
    const CGPoint point = touchable_point(*view).value_or(placement_on_screen(*view).center);
    return NSDictionary{{"view", view_path(view)}, {"point", NSArray{point.x, point.y}}};
}

void note_page_touch(const std::shared_ptr<ViewNode>& page)
{
    const double now = page->platform.loop().now();
    come_in(
        page->platform, "pageTouch",
        [&] {
            NSDictionary record = touch_record(page).dictionary();
            record.setObject(now, "at");
            return Value(record);
        },
        [&] { page->page_touched = now; });
}

} // namespace qoro
