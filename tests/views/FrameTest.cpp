#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

struct Frames : testing::Test {
    RecordingPlatform platform;
    UIView view = UIView::create();

    void turn(double angle) const { view.setTransform(CGAffineTransformMakeRotation(angle)); }
};

} // namespace

TEST_F(Frames, AreZeroForANewView)
{
    EXPECT_EQ(view.frame(), (CGRect{0, 0, 0, 0}));
    EXPECT_EQ(view.transform().angle, 0);
}

TEST_F(Frames, ReadBackExactlyAsTheyWereSet)
{
    view.setFrame({0.1, 0.2, 0.7, 210.9375});

    EXPECT_EQ(view.frame(), (CGRect{0.1, 0.2, 0.7, 210.9375}));
    EXPECT_EQ(view.bounds(), (CGSize{0.7, 210.9375}));
}

TEST_F(Frames, OfAQuarterTurnSwapTheirExtentsAboutTheCentre)
{
    view.setFrame({0, 0, 375, 812});

    turn(QuarterTurn);

    EXPECT_EQ(view.frame(), (CGRect{-218.5, 218.5, 812, 375}));
    EXPECT_EQ(view.bounds(), (CGSize{375, 812}));
    EXPECT_EQ(view.center(), (CGPoint{187.5, 406}));
}

TEST_F(Frames, SetOnAQuarterTurnedViewSwapItsExtents)
{
    turn(-QuarterTurn);

    view.setFrame({0, 0, 375, 812});

    EXPECT_EQ(view.frame(), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(view.bounds(), (CGSize{812, 375}));
    EXPECT_EQ(view.transform().angle, -QuarterTurn);
}

TEST_F(Frames, SetOnAQuarterTurnedViewReadBackExactly)
{
    turn(QuarterTurn);

    view.setFrame({0.1, 0.2, 0.7, 0.3});

    EXPECT_EQ(view.frame(), (CGRect{0.1, 0.2, 0.7, 0.3}));
}

TEST_F(Frames, OfAHalfTurnAreThoseOfTheUprightView)
{
    view.setFrame({10, 20, 30, 40});

    turn(HalfTurn);

    EXPECT_EQ(view.frame(), (CGRect{10, 20, 30, 40}));
    EXPECT_EQ(view.bounds(), (CGSize{30, 40}));
}

TEST_F(Frames, AreRestoredWhenAQuarterTurnIsUndone)
{
    view.setFrame({0, 300.53125, 375, 210.9375});

    turn(QuarterTurn);
    turn(0);

    EXPECT_EQ(view.frame(), (CGRect{0, 300.53125, 375, 210.9375}));
}

TEST_F(Frames, OfAnyOtherAngleAreTheUprightBoxOfTheTurnedBounds)
{
    view.setFrame({0, 0, 100, 50});

    turn(HalfTurn / 6);

    const double width = 100 * std::cos(HalfTurn / 6) + 50 * std::sin(HalfTurn / 6);
    const double height = 100 * std::sin(HalfTurn / 6) + 50 * std::cos(HalfTurn / 6);
    EXPECT_NEAR(view.frame().width, width, 1e-9);
    EXPECT_NEAR(view.frame().height, height, 1e-9);
    EXPECT_NEAR(view.frame().x, 50 - width / 2, 1e-9);
    EXPECT_NEAR(view.frame().y, 25 - height / 2, 1e-9);
}

TEST_F(Frames, SetAtAnyOtherAngleGiveTheExtentsTurnedBackToTheBounds)
{
    turn(HalfTurn / 4);

    view.setFrame({10, 10, 100, 100});

    EXPECT_NEAR(view.bounds().width, 100 * std::sqrt(2), 1e-9);
    EXPECT_EQ(view.center(), (CGPoint{60, 60}));
    EXPECT_NEAR(view.frame().width, 200, 1e-9);
}

TEST_F(Frames, MoveWithTheCentre)
{
    view.setFrame({0, 0, 375, 812});
    turn(QuarterTurn);

    view.setCenter({406, 187.5});

    EXPECT_EQ(view.frame(), (CGRect{0, 0, 812, 375}));
    EXPECT_EQ(view.bounds(), (CGSize{375, 812}));
}

TEST_F(Frames, KeepNegativeSizesAsTheyAre)
{
    view.setFrame({20, 100, -40, -50});

    EXPECT_EQ(view.frame(), (CGRect{20, 100, -40, -50}));
    EXPECT_EQ(CGRectGetMaxY(view.frame()), 50);
}

TEST_F(Frames, SetToTheSameValueChangeNothing)
{
    view.setFrame({1, 2, 3, 4});
    turn(QuarterTurn);
    view.setFrame({1, 2, 3, 4});
    const std::uint64_t revision = view.node()->revision;
    const int requests = platform.display_requests;

    view.setFrame({1, 2, 3, 4});
    view.setCenter({2.5, 4});
    turn(QuarterTurn);

    EXPECT_EQ(view.node()->revision, revision);
    EXPECT_EQ(platform.display_requests, requests);
}

TEST_F(Frames, ThatChangeRequestARedraw)
{
    const std::uint64_t revision = view.node()->revision;

    view.setFrame({1, 2, 3, 4});
    view.setCenter({9, 9});
    turn(QuarterTurn);

    EXPECT_EQ(view.node()->revision, revision + 3);
    EXPECT_EQ(platform.display_requests, 3);
}

TEST_F(Frames, OfANullViewAreZeroAndStaySo)
{
    const UIView none;

    none.setFrame({1, 2, 3, 4});
    none.setCenter({1, 2});
    none.setTransform({QuarterTurn});

    EXPECT_EQ(none.frame(), (CGRect{0, 0, 0, 0}));
    EXPECT_EQ(none.bounds(), (CGSize{0, 0}));
    EXPECT_EQ(none.center(), (CGPoint{0, 0}));
    EXPECT_EQ(none.transform().angle, 0);
    EXPECT_EQ(platform.display_requests, 0);
}

TEST_F(Frames, OfALabelFitItsTextAndKeepTheirOrigin)
{
    const UILabel label = UILabel::create();
    label.setFrame({12.5, 40, 1, 1});
    label.setText("00:30");

    label.sizeToFit();

    EXPECT_EQ(label.frame(), (CGRect{12.5, 40, 35, 16}));
}

TEST_F(Frames, AreOnTheScreenAtTheirParentsOffset)
{
    const UIView child = UIView::create();
    view.setFrame({100, 200, 50, 50});
    child.setFrame({10, 20, 4, 6});
    view.addSubview(child);

    const Placement placement = placement_on_screen(*child.node());

    EXPECT_EQ(placement.center, (CGPoint{112, 223}));
    EXPECT_EQ(placement.bounds, (CGSize{4, 6}));
    EXPECT_EQ(placement.angle, 0);
}

TEST_F(Frames, AreTurnedOnTheScreenWithTheirParents)
{
    const UIView child = UIView::create();
    turn(QuarterTurn);
    view.setFrame({0, 0, 375, 812});
    child.setFrame({0, 0, 50, 20});
    view.addSubview(child);

    const Placement placement = placement_on_screen(*child.node());

    EXPECT_EQ(placement.center, (CGPoint{365, 25}));
    EXPECT_EQ(placement.angle, QuarterTurn);
}

TEST_F(Frames, AreUprightOnTheScreenWhenTheirTurnsCancelOut)
{
    const UIView child = UIView::create();
    turn(QuarterTurn);
    child.setTransform(CGAffineTransformMakeRotation(-QuarterTurn));
    view.addSubview(child);

    EXPECT_EQ(placement_on_screen(*child.node()).angle, 0);
}
