#include "views/TearDown.h"

#include "platform/UIKit.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

#include <memory>

using namespace qoro;

namespace
{

/// What the root controller's destructor found.
struct End {
    int destroyed = 0;
    Platform* current = nullptr;
    bool counter_existed = false;
    int run = 0;
};

struct Counter {
    int count = 0;
};

/// A view controller that owns the window whose root it is.
struct Root : UIViewController {
    explicit Root(End& its_end) : window(UIWindow::create({0, 0, 375, 812})), end(its_end) {}
    ~Root() override
    {
        ++end.destroyed;
        end.current = Platform::current_or_null();
        end.counter_existed = Platform::current().shared<Counter>().count == 7;
        Platform::current().loop().post([&on = end] { ++on.run; });
        Platform::current().emit(event::ParentClicked{});
    }

    const UIWindow window;
    End& end;
};

struct TearDown : testing::Test {
    TearDown()
    {
        platform.shared<Counter>().count = 7;
        const auto root = std::make_shared<Root>(end);
        root->window.setRootViewController(root);
        platform.transcript.clear();
    }

    End end;
    test::RecordingPlatform platform;
};

} // namespace

TEST_F(TearDown, DestroysRootControllersThatOwnTheirWindows)
{
    EXPECT_EQ(end.destroyed, 0);
    const test::RecordingPlatform other;

    tear_down(platform);

    EXPECT_EQ(end.destroyed, 1);
    EXPECT_EQ(end.current, &platform);
    EXPECT_TRUE(end.counter_existed);
    EXPECT_EQ(Platform::current_or_null(), &other);
}

TEST_F(TearDown, RunsAndReportsNothingMore)
{
    platform.loop().post([this] { ++end.run; });
    platform.loop().start_timer(1, true, [this] { ++end.run; });

    tear_down(platform);

    EXPECT_EQ(platform.loop().pending(), 0U);
    platform.let_pass(2);
    EXPECT_EQ(end.run, 0);
    EXPECT_TRUE(platform.transcript.empty());
}

TEST_F(TearDown, DestroysTheSharedObjects)
{
    tear_down(platform);

    EXPECT_EQ(platform.shared<Counter>().count, 0);
}
