#include "views/NodeAccess.h"

#include <algorithm>
#include <tuple>

namespace qoro
{

std::vector<std::shared_ptr<ViewNode>> WindowList::all()
{
    std::vector<std::shared_ptr<ViewNode>> held;
    held.reserve(windows.size());
    for (const auto& window : windows)
        if (auto node = window.lock())
            held.push_back(std::move(node));
    return held;
}

std::vector<std::shared_ptr<ViewNode>> WindowList::visible_from_below()
{
    auto visible = all();
    std::erase_if(visible, [](const auto& window) { return window->hidden; });
    std::ranges::stable_sort(visible, {},
                             [](const auto& window) { return std::tuple(window->window_level, window->shown_serial); });
    return visible;
}

UIWindow UIWindow::create(const CGRect& frame)
{
    UIWindow window(std::make_shared<ViewNode>(ViewNode::Kind::Window));
    auto& windows = window.node_->platform.shared<WindowList>().windows;
    std::erase_if(windows, [](const auto& each) { return each.expired(); });
    windows.push_back(window.node_);
    window.setFrame(frame);
    return window;
}

double UIWindow::windowLevel() const
{
    return read(node_, &ViewNode::window_level);
}

void UIWindow::setWindowLevel(double level) const
{
    assign(node_, &ViewNode::window_level, level);
}

bool UIWindow::isKeyWindow() const
{
    return read(node_, &ViewNode::key_window);
}

void UIWindow::makeKeyAndVisible() const
{
    if (!node_)
        return;
    WindowList& list = node_->platform.shared<WindowList>();
    for (const auto& window : list.all())
        window->key_window = false;
    node_->key_window = true;
    node_->hidden = false;
    node_->shown_serial = list.next_shown_serial++;
    node_->changed();
}

void UIWindow::resignKeyWindow() const
{
    assign(node_, &ViewNode::key_window, false);
}

std::shared_ptr<UIViewController> UIWindow::rootViewController() const
{
    return read(node_, &ViewNode::window_root);
}

void UIWindow::setRootViewController(const std::shared_ptr<UIViewController>& controller) const
{
    if (!node_)
        return;
    // Held until the end: releasing the previous controller may destroy the owner of this handle.
    const std::shared_ptr<ViewNode> window = node_;
    const std::shared_ptr<UIViewController> before = std::exchange(window->window_root, controller);
    if (controller && controller->view().superview() != UIView(window))
        UIView(window).addSubview(controller->view());
}

UIWindow UIApplication::keyWindow() const
{
    for (const auto& window : platform_.shared<WindowList>().all())
        if (window->key_window)
            return UIWindow(window);
    return {};
}

std::vector<UIWindow> UIApplication::windows() const
{
    std::vector<UIWindow> handles;
    for (const auto& window : platform_.shared<WindowList>().all())
        handles.emplace_back(window);
    return handles;
}

} // namespace qoro
