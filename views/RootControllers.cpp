#include "views/RootControllers.h"

#include "views/ViewNode.h"

#include <functional>

namespace qoro
{

namespace
{

void tell_each(Platform& platform, const std::function<void(UIViewController&)>& tell)
{
    for (const std::shared_ptr<ViewNode>& window : platform.shared<WindowList>().visible_from_below())
        // Retained: what it does may replace it.
        if (const std::shared_ptr<UIViewController> root = window->window_root)
            platform.dispatch([&] { tell(*root); });
}

} // namespace

void tell_rotation(Platform& platform, UIInterfaceOrientation from)
{
    tell_each(platform, [from](UIViewController& root) { root.didRotateFromInterfaceOrientation(from); });
}

void tell_appearance(Platform& platform)
{
    tell_each(platform, [](UIViewController& root) { root.viewDidAppear(false); });
}

} // namespace qoro
