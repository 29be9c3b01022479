#include "desktop/screen/HeldScreen.h"

#include <gtest/gtest.h>

namespace qoro::test
{
namespace
{

constexpr CGSize Phone{375, 812};

TEST(HeldScreen, HeldInLandscapeSwapsItsExtents)
{
    EXPECT_EQ((HeldScreen{Phone, 0}.extents()), (CGSize{375, 812}));
    EXPECT_EQ((HeldScreen{Phone, -QuarterTurn}.extents()), (CGSize{812, 375}));
    EXPECT_EQ((HeldScreen{Phone, HalfTurn}.extents()), (CGSize{375, 812}));
}

TEST(HeldScreen, HeldLandscapeLeftHasItsTopOnTheLeft)
{
    const HeldScreen left{Phone, -QuarterTurn};
    EXPECT_EQ(left.to_window({0, 0}), (CGPoint{0, 375}));
    EXPECT_EQ(left.to_window({375, 0}), (CGPoint{0, 0}));
    EXPECT_EQ(left.to_window({375, 812}), (CGPoint{812, 0}));
}

TEST(HeldScreen, HeldLandscapeRightHasItsTopOnTheRight)
{
    const HeldScreen right{Phone, QuarterTurn};
    EXPECT_EQ(right.to_window({0, 0}), (CGPoint{812, 0}));
    EXPECT_EQ(right.to_window({375, 0}), (CGPoint{812, 375}));
}

TEST(HeldScreen, MapsPointsToTheScreenAndBack)
{
    EXPECT_EQ((HeldScreen{Phone, -QuarterTurn}.to_screen({10, 20})), (CGPoint{355, 10}));
    EXPECT_EQ((HeldScreen{Phone, QuarterTurn}.to_screen({10, 20})), (CGPoint{20, 802}));
    EXPECT_EQ((HeldScreen{Phone, HalfTurn}.to_screen({10, 20})), (CGPoint{365, 792}));
    EXPECT_EQ((HeldScreen{Phone, 0}.to_screen({10, 20})), (CGPoint{10, 20}));
}

TEST(WidgetPlace, OfTurnsThatCancelOutIsNotTurned)
{
    const Placement landscape_ad{{187.5, 406}, {812, 375}, QuarterTurn};
    const WidgetPlace place = place_in_window(landscape_ad, {Phone, -QuarterTurn});
    EXPECT_EQ(place.angle, 0);
    EXPECT_EQ(place.around(), (CGRect{0, 0, 812, 375}));
    EXPECT_EQ(place.width, 812);
}

TEST(WidgetPlace, OfAnAdTurnedTheOtherWayIsUprightToo)
{
    const Placement landscape_ad{{187.5, 406}, {812, 375}, -QuarterTurn};
    EXPECT_EQ(place_in_window(landscape_ad, {Phone, QuarterTurn}).angle, 0);
}

TEST(WidgetPlace, KeepsATurnThatIsNotCancelledOut)
{
    const Placement landscape_ad{{187.5, 406}, {812, 375}, QuarterTurn};
    const WidgetPlace place = place_in_window(landscape_ad, {Phone, 0});
    EXPECT_EQ(place.angle, QuarterTurn);
    EXPECT_EQ(place.width, 812);
    EXPECT_EQ(place.height, 375);
    EXPECT_EQ(place.around(), (CGRect{0, 0, 375, 812}));
}

TEST(WidgetPlace, HasWholeEdgesThatNeighboursShare)
{
    const HeldScreen held{Phone, 0};
    const WidgetPlace band = place_in_window({{187.5, 105.46875}, {375, 210.9375}, 0}, held);
    const WidgetPlace page = place_in_window({{187.5, 511.46875}, {375, 601.0625}, 0}, held);
    EXPECT_EQ(band.around(), (CGRect{0, 0, 375, 211}));
    EXPECT_EQ(page.around(), (CGRect{0, 211, 375, 601}));
}

TEST(WidgetPlace, OfANegativeSizeIsEmpty)
{
    const WidgetPlace place = place_in_window({{0, 125}, {-40, 50}, 0}, {Phone, 0});
    EXPECT_EQ(place.width, 0);
    EXPECT_EQ(place.height, 50);
}

} // namespace
} // namespace qoro::test
