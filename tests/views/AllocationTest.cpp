#include "tests/support/Allocations.h"
#include "tests/support/RecordingPlatform.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::allocations_so_far;
using qoro::test::RecordingPlatform;

namespace
{

struct Ear : Object {
    void hear() { ++heard; }
    int heard = 0;
};

struct Memory : testing::Test {
    RecordingPlatform platform;
    UIWindow window = UIWindow::create({0, 0, 375, 812});
    UIView view = UIView::create();
    UILabel label = UILabel::create();
};

} // namespace

TEST_F(Memory, AllocationsAreCounted)
{
    const std::size_t before = allocations_so_far();

    const auto number = std::make_shared<int>(1);

    EXPECT_EQ(allocations_so_far(), before + 1);
}

TEST_F(Memory, IsNotAllocatedToPlaceAView)
{
    const std::size_t before = allocations_so_far();

    view.setFrame({0, 0, 375, 210.9375});
    view.setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    view.setCenter({187.5, 406});
    const double height = view.frame().height;

    EXPECT_EQ(allocations_so_far(), before);
    EXPECT_EQ(height, 375);
}

TEST_F(Memory, IsNotAllocatedToShowAndHideAView)
{
    const std::size_t before = allocations_so_far();

    view.setHidden(true);
    view.setAlpha(0.5);
    view.setBackgroundColor(UIColor::clearColor());
    const bool hidden = view.isHidden();

    EXPECT_EQ(allocations_so_far(), before);
    EXPECT_TRUE(hidden);
}

TEST_F(Memory, IsNotAllocatedToBringAViewToTheFront)
{
    view.addSubview(window);
    view.addSubview(label);
    const std::size_t before = allocations_so_far();

    view.addSubview(window);

    EXPECT_EQ(allocations_so_far(), before);
    EXPECT_EQ(window.superview(), view);
}

TEST_F(Memory, IsNotAllocatedToFitAnUnchangedShortText)
{
    const NSString text("00:12");
    label.setText(text);
    label.sizeToFit();
    const std::size_t before = allocations_so_far();

    label.setText(text);
    label.sizeToFit();

    EXPECT_EQ(allocations_so_far(), before);
    EXPECT_EQ(label.frame().width, 35);
}

TEST_F(Memory, IsNotAllocatedToDeliverANotification)
{
    const auto ear = std::make_shared<Ear>();
    NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
    center.addObserver(action<&Ear::hear>(ear.get(), "hear"), "news");
    const std::size_t before = allocations_so_far();

    center.deliver("news");

    EXPECT_EQ(allocations_so_far(), before);
    EXPECT_EQ(ear->heard, 1);
}
