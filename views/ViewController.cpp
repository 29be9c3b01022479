#include "views/ViewNode.h"

namespace qoro
{

namespace
{

void run_as_event(std::function<void()> completion)
{
    if (!completion)
        return;
    Platform& platform = Platform::current();
    platform.loop().post([&platform, completion = std::move(completion)] { platform.dispatch(completion); });
}

} // namespace

void UIViewController::loadView()
{
    if (view_)
        return;
    const CGSize screen = UIScreen::mainScreenBounds().value_or(CGSize{});
    view_ = UIView::create();
    view_.setFrame({0, 0, screen.width, screen.height});
    populateView();
    viewDidLoad();
}

void UIViewController::viewDidAppear(bool)
{
}

void UIViewController::presentViewController(const std::shared_ptr<UIViewController>& controller, bool,
                                             std::function<void()> completion)
{
    if (!controller)
        return;
    end_presentation();
    presenting_ = controller;
    controller->presenter_ = std::static_pointer_cast<UIViewController>(shared_from_this());
    controller->loadView();
    present_over(controller->view(), view());
    run_as_event(std::move(completion));
}

void UIViewController::dismissViewController(bool, std::function<void()> completion)
{
    // The presenter may hold the last reference to this controller.
    const std::shared_ptr<Object> held = weak_from_this().lock();
    const std::shared_ptr<UIViewController> presenter = presenter_.lock();
    if (presenting_)
        end_presentation();
    else if (presenter)
        presenter->end_presentation();
    run_as_event(std::move(completion));
}

void UIViewController::end_presentation()
{
    const std::shared_ptr<UIViewController> ended = std::move(presenting_);
    if (!ended)
        return;
    ended->presenter_.reset();
    end_presentation_of(ended->view());
}

// Parent controllers are not modelled, and no controller reacts to interface rotation by default.
void UIViewController::removeFromParentViewController()
{
}
void UIViewController::didRotateFromInterfaceOrientation(UIInterfaceOrientation)
{
}

} // namespace qoro
