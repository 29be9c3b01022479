#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Views = std::vector<UIView>;

struct Tree : testing::Test {
    RecordingPlatform platform;
    UIView root = UIView::create();
    UIView a = UIView::create();
    UIView b = UIView::create();
};

} // namespace

TEST_F(Tree, AddsViewsOnTop)
{
    root.addSubview(a);
    root.addSubview(b);

    EXPECT_EQ(root.subviews(), (Views{a, b}));
    EXPECT_EQ(a.superview(), root);
}

TEST_F(Tree, MovesAViewFromItsParentToTheNextOne)
{
    root.addSubview(a);

    b.addSubview(a);

    EXPECT_EQ(root.subviews(), Views{});
    EXPECT_EQ(b.subviews(), Views{a});
    EXPECT_EQ(a.superview(), b);
}

TEST_F(Tree, MovesAViewThatIsAddedAgainToTheTop)
{
    root.addSubview(a);
    root.addSubview(b);

    root.addSubview(a);

    EXPECT_EQ(root.subviews(), (Views{b, a}));
}

TEST_F(Tree, ChangesNothingForATopmostViewThatIsAddedAgain)
{
    root.addSubview(a);
    const std::uint64_t revision = root.node()->revision;
    const int requests = platform.display_requests;

    root.addSubview(a);

    EXPECT_EQ(root.node()->revision, revision);
    EXPECT_EQ(platform.display_requests, requests);
}

TEST_F(Tree, PutsNoViewIntoItself)
{
    root.addSubview(a);
    a.addSubview(b);

    b.addSubview(root);
    b.addSubview(b);

    EXPECT_EQ(b.subviews(), Views{});
    EXPECT_FALSE(root.superview());
}

TEST_F(Tree, TakesViewsOut)
{
    root.addSubview(a);
    const std::uint64_t revision = root.node()->revision;

    a.removeFromSuperview();
    b.removeFromSuperview();

    EXPECT_EQ(root.subviews(), Views{});
    EXPECT_FALSE(a.superview());
    EXPECT_EQ(root.node()->revision, revision + 1);
}

TEST_F(Tree, BringsOnlyItsSubviewsToTheFront)
{
    root.addSubview(a);
    root.addSubview(b);

    root.bringSubviewToFront(a);
    a.bringSubviewToFront(b);

    EXPECT_EQ(root.subviews(), (Views{b, a}));
}

TEST_F(Tree, LosesAnUnreferencedView)
{
    const std::weak_ptr<ViewNode> node = a.node();
    root.addSubview(a);

    a = nullptr;
    EXPECT_FALSE(node.expired());
    root.subviews().front().removeFromSuperview();

    EXPECT_TRUE(node.expired());
}

TEST_F(Tree, LeavesTheSubviewsOfALostViewInNoParent)
{
    root.addSubview(a);

    root = nullptr;

    EXPECT_FALSE(a.superview());
}

TEST_F(Tree, TakesAViewFromAParentThatOnlyItsHandleHeld)
{
    root.addSubview(UIView::create());
    const UIView& inner = root;

    b.addSubview(inner.subviews().front());

    EXPECT_EQ(root.subviews().size(), 0U);
    EXPECT_EQ(b.subviews().size(), 1U);
}

TEST_F(Tree, HasNothingBehindANullHandle)
{
    const UIView none;

    none.addSubview(a);
    root.addSubview(none);
    none.removeFromSuperview();
    none.bringSubviewToFront(a);
    none.setHidden(true);
    none.setAlpha(0.5);

    EXPECT_EQ(none.subviews(), Views{});
    EXPECT_EQ(root.subviews(), Views{});
    EXPECT_FALSE(none.superview());
    EXPECT_FALSE(none.isHidden());
    EXPECT_FALSE(none.isOpaque());
    EXPECT_EQ(none.alpha(), 0);
    EXPECT_FALSE(none.backgroundColor());
}

TEST_F(Tree, MakesViewsThatAreShownAndTakeTouches)
{
    EXPECT_FALSE(a.isHidden());
    EXPECT_EQ(a.alpha(), 1);
    EXPECT_TRUE(a.isUserInteractionEnabled());
    EXPECT_FALSE(a.backgroundColor());
    EXPECT_FALSE(UILabel::create().isUserInteractionEnabled());
    EXPECT_FALSE(UIImageView::create().isUserInteractionEnabled());
    EXPECT_TRUE(UIButton::create().isUserInteractionEnabled());
}

TEST_F(Tree, CountsEachChangeOfAnAppearanceOnce)
{
    const std::uint64_t revision = a.node()->revision;

    a.setHidden(true);
    a.setHidden(true);
    a.setAlpha(0.5);
    a.setAlpha(0.5);
    a.setBackgroundColor(UIColor::blackColor());
    a.setBackgroundColor(UIColor::blackColor());
    a.setOpaque(false);
    a.setOpaque(false);
    a.setContentMode(UIViewContentModeScaleAspectFit);
    a.setContentMode(UIViewContentModeScaleAspectFit);

    EXPECT_EQ(a.node()->revision, revision + 5);
    EXPECT_EQ(platform.display_requests, 5);
}

TEST_F(Tree, KeepsAutoresizingMasksAndMovesNothingByThem)
{
    root.setFrame({0, 0, 100, 100});
    a.setFrame({0, 0, 50, 50});
    a.setAutoresizingMask(63);
    root.addSubview(a);

    root.setFrame({0, 0, 200, 200});

    EXPECT_EQ(a.autoresizingMask(), 63);
    EXPECT_EQ(a.frame(), (CGRect{0, 0, 50, 50}));
}

TEST_F(Tree, NumbersViewsInTheOrderOfCreation)
{
    EXPECT_LT(root.node()->serial, a.node()->serial);
    EXPECT_LT(a.node()->serial, b.node()->serial);
}

TEST_F(Tree, KeepsPresentedViewsAboveViewsAddedLater)
{
    const UIWindow window = UIWindow::create({0, 0, 375, 812});
    const UIView sheet = UIView::create();
    window.addSubview(a);

    present_over(sheet, a);
    window.addSubview(b);
    window.addSubview(a);
    EXPECT_EQ(window.subviews(), (Views{b, a, sheet}));

    end_presentation_of(sheet);
    window.addSubview(sheet);
    window.addSubview(b);
    EXPECT_EQ(window.subviews(), (Views{a, sheet, b}));
}

TEST_F(Tree, PresentsTheLatestAboveTheOthers)
{
    const UIWindow window = UIWindow::create({0, 0, 375, 812});
    const UIView sheet = UIView::create();
    window.addSubview(a);

    present_over(b, a);
    present_over(sheet, a);

    EXPECT_EQ(window.subviews(), (Views{a, b, sheet}));
}

TEST_F(Tree, PresentsNothingOverAViewInNoWindow)
{
    root.addSubview(a);

    present_over(b, a);
    present_over(b, UIView());

    EXPECT_FALSE(b.superview());
}

TEST_F(Tree, ResizesAViewThatFillsItsParent)
{
    root.setFrame({10, 10, 100, 50});
    a.node()->fills_parent = true;

    root.addSubview(a);
    EXPECT_EQ(a.frame(), (CGRect{0, 0, 100, 50}));

    root.setFrame({0, 0, 30, 40});
    EXPECT_EQ(a.frame(), (CGRect{0, 0, 30, 40}));
}

TEST_F(Tree, ReportsOnlyNewSizes)
{
    int resizes = 0;
    a.node()->on_resize = [&] { ++resizes; };

    a.setFrame({0, 0, 30, 40});
    EXPECT_EQ(resizes, 1);
    a.setFrame({10, 20, 30, 40});
    a.setTransform(CGAffineTransformMakeRotation(QuarterTurn));
    EXPECT_EQ(resizes, 1);
}
