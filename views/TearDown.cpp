#include "views/TearDown.h"

#include "views/ViewNode.h"

#include <utility>

namespace qoro
{

void tear_down(Platform& platform)
{
    const PlatformScope scope(platform);
    platform.set_event_sink(nullptr);
    platform.loop().clear();
    // A window and the view controller that owns it refer to each other.
    for (const std::shared_ptr<ViewNode>& window : platform.shared<WindowList>().all()) {
        const std::shared_ptr<UIViewController> gone = std::move(window->window_root);
    }
    platform.drop_shared();
    // The destructors may have posted work.
    platform.loop().clear();
}

} // namespace qoro
