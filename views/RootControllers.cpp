#include "views/RootControllers.h"

#include "platform/Inbound.h"
#include "views/ViewNode.h"

#include <functional>

namespace qoro
{

namespace
{

void notify_each(Platform& platform, const std::function<void(UIViewController&)>& notify)
{
    for (const std::shared_ptr<ViewNode>& window : platform.shared<WindowList>().visible_from_below())
        // Retained: what it does may replace it.
        if (const std::shared_ptr<UIViewController> root = window->window_root)
            platform.dispatch([&] { notify(*root); });
}

} // namespace

void notify_rotation(Platform& platform, UIInterfaceOrientation from)
{
    come_in(
        platform, "rotated", [from] { return Value(static_cast<int>(from)); },
        [&] {
            notify_each(platform, [from](UIViewController& root) { root.didRotateFromInterfaceOrientation(from); });
        });
}

void notify_appearance(Platform& platform)
{
    come_in(
        platform, "appeared", [] { return Value(); },
        [&] { notify_each(platform, [](UIViewController& root) { root.viewDidAppear(false); }); });
}

} // namespace qoro
