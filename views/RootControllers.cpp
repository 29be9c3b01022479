#include "views/RootControllers.h"

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
    notify_each(platform, [from](UIViewController& root) { root.didRotateFromInterfaceOrientation(from); });
}

void notify_appearance(Platform& platform)
{
    notify_each(platform, [](UIViewController& root) { root.viewDidAppear(false); });
}

} // namespace qoro
