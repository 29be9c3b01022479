#include "views/RootControllers.h"

#include "platform/UIKit.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace qoro;

namespace
{

struct Root : UIViewController {
    Root(std::string its_name, std::vector<std::string>& into) : name(std::move(its_name)), calls(into) {}
    void viewDidAppear(bool animated) override { calls.push_back(name + (animated ? " animated" : " appears")); }
    void didRotateFromInterfaceOrientation(UIInterfaceOrientation from) override
    {
        calls.push_back(name + " from " + std::to_string(from));
        then();
    }

    const std::string name;
    std::vector<std::string>& calls;
    std::function<void()> then = [] {};
};

struct RootControllers : testing::Test {
    UIWindow window_with(const std::string& name, double level)
    {
        const UIWindow window = UIWindow::create({0, 0, 375, 812});
        window.setRootViewController(std::make_shared<Root>(name, calls));
        window.setWindowLevel(level);
        window.setHidden(false);
        return window;
    }

    test::RecordingPlatform platform;
    std::vector<std::string> calls;
    UIWindow above = window_with("above", UIWindowLevelStatusBar);
    UIWindow below = window_with("below", UIWindowLevelNormal);
};

} // namespace

TEST_F(RootControllers, AreNotifiedFromTheBottomWindowUp)
{
    const UIWindow without = UIWindow::create({0, 0, 375, 812});
    without.setHidden(false);

    notify_appearance(platform);
    notify_rotation(platform, UIInterfaceOrientationLandscapeRight);

    EXPECT_EQ(calls, (std::vector<std::string>{"below appears", "above appears", "below from 3", "above from 3"}));
}

TEST_F(RootControllers, OfHiddenWindowsAreNotNotified)
{
    above.setHidden(true);

    notify_appearance(platform);
    notify_rotation(platform, UIInterfaceOrientationPortrait);

    EXPECT_EQ(calls, (std::vector<std::string>{"below appears", "below from 1"}));
}

TEST_F(RootControllers, MayBeReplacedDuringANotification)
{
    dynamic_cast<Root&>(*below.rootViewController()).then = [this] { below.setRootViewController(nullptr); };

    notify_rotation(platform, UIInterfaceOrientationPortrait);

    EXPECT_EQ(calls, (std::vector<std::string>{"below from 1", "above from 1"}));
}
