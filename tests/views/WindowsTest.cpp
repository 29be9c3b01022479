#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

struct Screens : testing::Test {
    std::vector<std::shared_ptr<ViewNode>> visible() { return platform.shared<WindowList>().visible_from_below(); }

    RecordingPlatform platform;
    UIWindow first = UIWindow::create({0, 0, 375, 812});
    UIWindow second = UIWindow::create();
    const UIApplication& application = UIApplication::sharedApplication();
};

using Nodes = std::vector<std::shared_ptr<ViewNode>>;

} // namespace

TEST_F(Screens, MakeWindowsHiddenAndWithoutTheKey)
{
    EXPECT_TRUE(second.isHidden());
    EXPECT_FALSE(second.isKeyWindow());
    EXPECT_EQ(second.frame(), (CGRect{0, 0, 0, 0}));
    EXPECT_EQ(second.windowLevel(), UIWindowLevelNormal);
    EXPECT_FALSE(application.keyWindow());
}

TEST_F(Screens, GiveTheKeyToTheWindowThatWasMadeKeyLast)
{
    first.makeKeyAndVisible();
    second.makeKeyAndVisible();

    EXPECT_EQ(application.keyWindow(), second);
    EXPECT_FALSE(first.isKeyWindow());
    EXPECT_FALSE(first.isHidden());
}

TEST_F(Screens, HaveNoKeyWindowAfterItResigned)
{
    first.makeKeyAndVisible();

    first.resignKeyWindow();

    EXPECT_FALSE(application.keyWindow());
    EXPECT_FALSE(first.isHidden());
}

TEST_F(Screens, ListTheWindowsThatAreReferenced)
{
    EXPECT_EQ(application.windows(), (std::vector<UIWindow>{first, second}));

    first = UIWindow();

    EXPECT_EQ(application.windows(), std::vector<UIWindow>{second});
}

TEST_F(Screens, LoseTheKeyWithTheKeyWindow)
{
    first.makeKeyAndVisible();

    first = UIWindow();

    EXPECT_FALSE(application.keyWindow());
}

TEST_F(Screens, AreDrawnAgainWhenAVisibleWindowIsGone)
{
    first.makeKeyAndVisible();
    const int requests = platform.display_requests;

    first = UIWindow();
    second = UIWindow();

    EXPECT_EQ(platform.display_requests, requests + 1);
}

TEST_F(Screens, StackTheirWindowsByLevelThenByTheLastTimeTheyWereShown)
{
    const UIWindow bar = UIWindow::create();
    bar.setWindowLevel(UIWindowLevelStatusBar);
    bar.makeKeyAndVisible();
    first.makeKeyAndVisible();
    second.makeKeyAndVisible();
    EXPECT_EQ(visible(), (Nodes{first.node(), second.node(), bar.node()}));

    first.makeKeyAndVisible();
    second.setHidden(true);

    EXPECT_EQ(visible(), (Nodes{first.node(), bar.node()}));
}

TEST_F(Screens, ShowAControllersViewInTheWindowWhoseRootItIs)
{
    const auto controller = std::make_shared<UIViewController>();
    controller->loadView();
    const UIView above = UIView::create();
    first.setRootViewController(controller);
    first.addSubview(above);

    first.setRootViewController(controller);

    EXPECT_EQ(first.subviews(), (std::vector<UIView>{controller->view(), above}));
    EXPECT_EQ(first.rootViewController(), controller);
}

TEST_F(Screens, ResizeNothingForARootController)
{
    const auto controller = std::make_shared<UIViewController>();
    controller->loadView();
    controller->view().setFrame({0, 0, 10, 10});

    first.setRootViewController(controller);

    EXPECT_EQ(controller->view().frame(), (CGRect{0, 0, 10, 10}));
}

TEST_F(Screens, KeepTheRootControllerOfAWindow)
{
    auto controller = std::make_shared<UIViewController>();
    const std::weak_ptr<UIViewController> held = controller;
    first.setRootViewController(controller);

    controller.reset();
    EXPECT_FALSE(held.expired());
    first.setRootViewController(nullptr);

    EXPECT_TRUE(held.expired());
}

TEST_F(Screens, AreNotTouchedThroughANullWindow)
{
    const UIWindow none;

    none.makeKeyAndVisible();
    none.resignKeyWindow();
    none.setWindowLevel(5);
    none.setRootViewController(nullptr);

    EXPECT_FALSE(none.isKeyWindow());
    EXPECT_EQ(none.windowLevel(), 0);
    EXPECT_EQ(none.rootViewController(), nullptr);
}
