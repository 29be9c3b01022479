#include "tests/support/RecordingPlatform.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

struct Finger : Object {
    void tap() { ++taps; }
    int taps = 0;
};

class Touches : public testing::Test
{
protected:
    Touches()
    {
        window.makeKeyAndVisible();
        window.addSubview(view);
        view.setFrame({0, 0, 375, 812});
    }

    /// Adds a view on top of the view's other subviews.
    void put(const UIView& subview, const CGRect& frame)
    {
        view.addSubview(subview);
        subview.setFrame(frame);
    }
    UIView at(double x, double y) { return UIView(hit_test(platform, {x, y})); }

    RecordingPlatform platform;
    UIWindow window = UIWindow::create({0, 0, 375, 812});
    UIView view = UIView::create();
    UIButton button = UIButton::create();
};

} // namespace

TEST_F(Touches, ReachTheTopmostView)
{
    const UIView above = UIView::create();
    put(button, {0, 0, 50, 50});
    put(above, {25, 0, 50, 50});

    EXPECT_EQ(at(10, 10), button);
    EXPECT_EQ(at(30, 10), above);
    EXPECT_EQ(at(200, 200), view);
}

TEST_F(Touches, CountLeftAndTopEdgesInRightAndBottomOut)
{
    put(button, {100.1, 200.2, 50.3, 50.4});

    EXPECT_EQ(at(100.1, 200.2), button);
    EXPECT_EQ(at(100.1 + 50.3, 220), view);
    EXPECT_EQ(at(120, 200.2 + 50.4), view);
    EXPECT_EQ(at(375, 10), UIView());
    EXPECT_EQ(at(0, 0), view);
}

TEST_F(Touches, SkipViewsThatAreHiddenFaintOrDisabled)
{
    put(button, {0, 0, 50, 50});

    button.setAlpha(0.009);
    EXPECT_EQ(at(10, 10), view);
    button.setAlpha(0.01);
    EXPECT_EQ(at(10, 10), button);
    button.setHidden(true);
    EXPECT_EQ(at(10, 10), view);
    button.setHidden(false);
    button.setUserInteractionEnabled(false);
    EXPECT_EQ(at(10, 10), view);
}

TEST_F(Touches, SkipTheSubviewsOfAHiddenView)
{
    const UIView bar = UIView::create();
    bar.setFrame({0, 0, 375, 50});
    bar.addSubview(button);
    button.setFrame({0, 0, 50, 50});
    view.addSubview(bar);

    bar.setHidden(true);

    EXPECT_EQ(at(10, 10), view);
}

TEST_F(Touches, SkipLabelsAndImageViews)
{
    const UILabel label = UILabel::create();
    const UIImageView image = UIImageView::create();
    put(label, {0, 0, 50, 50});
    put(image, {0, 100, 50, 50});

    EXPECT_EQ(at(10, 10), view);
    EXPECT_EQ(at(10, 110), view);
    image.setUserInteractionEnabled(true);
    EXPECT_EQ(at(10, 110), image);
}

TEST_F(Touches, ReachNothingOutsideAParent)
{
    const UIView bar = UIView::create();
    bar.setFrame({0, 0, 375, 50});
    bar.addSubview(button);
    button.setFrame({0, 40, 50, 50});
    view.addSubview(bar);

    EXPECT_EQ(at(10, 45), button);
    EXPECT_EQ(at(10, 60), view);
}

TEST_F(Touches, FollowATurnedView)
{
    view.setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    view.setFrame({0, 0, 375, 812});
    put(button, {0, 0, 50, 20});

    EXPECT_EQ(at(370, 10), button);
    EXPECT_EQ(at(370, 60), view);
    EXPECT_EQ(at(350, 10), view);
    EXPECT_EQ(at(10, 10), view);
}

TEST_F(Touches, FollowAViewTurnedTheOtherWay)
{
    view.setTransform(CGAffineTransformMakeRotation(-QuarterTurn));
    view.setFrame({0, 0, 375, 812});
    put(button, {0, 0, 50, 20});

    EXPECT_EQ(at(10, 800), button);
    EXPECT_EQ(at(30, 800), view);
    EXPECT_EQ(at(10, 750), view);
}

TEST_F(Touches, FollowAViewTurnedUpsideDown)
{
    view.setTransform(CGAffineTransformMakeRotation(HalfTurn));
    put(button, {0, 0, 50, 20});

    EXPECT_EQ(at(370, 800), button);
    EXPECT_EQ(at(10, 10), view);
}

TEST_F(Touches, FollowAViewAtAnyAngle)
{
    put(button, {100, 100, 100, 100});
    button.setTransform(CGAffineTransformMakeRotation(HalfTurn / 4));

    EXPECT_EQ(at(150, 82), button);
    EXPECT_EQ(at(102, 102), view);
}

TEST_F(Touches, ReachTheWindowOfTheHighestLevel)
{
    const UIWindow bar = UIWindow::create({0, 0, 375, 100});
    bar.setWindowLevel(UIWindowLevelStatusBar);
    bar.makeKeyAndVisible();
    window.makeKeyAndVisible();

    EXPECT_EQ(at(10, 10), bar);
    EXPECT_EQ(at(10, 110), view);
}

TEST_F(Touches, ReachTheWindowShownLastOfEqualLevels)
{
    const UIWindow other = UIWindow::create({0, 0, 375, 812});
    other.makeKeyAndVisible();
    EXPECT_EQ(at(10, 10), other);

    window.makeKeyAndVisible();

    EXPECT_EQ(at(10, 10), view);
}

TEST_F(Touches, SkipAHiddenWindow)
{
    const UIWindow other = UIWindow::create({0, 0, 375, 812});
    other.makeKeyAndVisible();

    other.setHidden(true);

    EXPECT_EQ(at(10, 10), view);
}

TEST_F(Touches, DoNotReachBelowTheTopmostWindow)
{
    const UIWindow other = UIWindow::create({0, 0, 375, 812});
    other.makeKeyAndVisible();

    other.setAlpha(0);

    EXPECT_EQ(at(10, 10), UIView());
}

TEST_F(Touches, RunTheTargetsOfTheButtonThatTheyReach)
{
    const auto finger = std::make_shared<Finger>();
    put(button, {0, 0, 50, 50});
    button.addTarget(action<&Finger::tap>(finger.get(), "tap"));

    EXPECT_EQ(touch(platform, {10, 10}), button.node());
    EXPECT_EQ(touch(platform, {60, 60}), view.node());
    EXPECT_EQ(touch(platform, {-1, 0}), nullptr);

    EXPECT_EQ(finger->taps, 1);
}

TEST_F(Touches, ReachTheWebViewWhereItsSubviewsDoNot)
{
    struct Page : WebListener {
        void did_start_load() override {}
        void did_finish_load() override {}
        bool should_start_load(const NSURL&, int) override { return true; }
        ScriptAnswer message(const ScriptMessage&) override { return {}; }
        void died(const std::string&) override {}
    } page;
    const UIWebView web = UIWebView::create(page);
    web.setFrame({0, 0, 375, 812});
    web.addSubview(button);
    button.setFrame({0, 0, 50, 50});
    view.addSubview(web);

    EXPECT_EQ(at(10, 10), button);
    EXPECT_EQ(at(100, 100), web);
}

TEST_F(Touches, AWindowThatWasGivenNoFrameFillsTheScreen)
{
    const UIWindow over = UIWindow::create();
    over.makeKeyAndVisible();
    const UIView sheet = UIView::create();
    sheet.setFrame({0, 0, 375, 100});
    over.addSubview(sheet);

    EXPECT_EQ(at(10, 10), sheet);
    EXPECT_EQ(at(10, 200), over);
    EXPECT_EQ(over.frame(), CGRect());
}

TEST_F(Touches, FindTheirPointInTheMiddleOfAnUncoveredView)
{
    put(button, {100, 200, 50, 40});

    EXPECT_EQ(touchable_point(*button.node()), (CGPoint{125, 220}));
}

TEST_F(Touches, FindTheirPointBesideAViewThatCoversTheMiddle)
{
    const UIView above = UIView::create();
    put(button, {0, 0, 300, 200});
    put(above, {120, 80, 60, 40});

    EXPECT_EQ(touchable_point(*button.node()), (CGPoint{45, 100}));
}

TEST_F(Touches, FindNoPointOfACoveredHiddenOrOffscreenView)
{
    const UIView above = UIView::create();
    put(button, {0, 0, 50, 50});
    EXPECT_TRUE(touchable_point(*button.node()));

    button.setHidden(true);
    EXPECT_FALSE(touchable_point(*button.node()));
    button.setHidden(false);
    button.setUserInteractionEnabled(false);
    EXPECT_FALSE(touchable_point(*button.node()));
    button.setUserInteractionEnabled(true);
    button.setFrame({-60, 0, 50, 50});
    EXPECT_FALSE(touchable_point(*button.node()));
    button.setFrame({0, 0, 50, 50});
    put(above, {0, 0, 375, 812});
    EXPECT_FALSE(touchable_point(*button.node()));
}
