#include "views/HeldTurn.h"

#include "platform/UIKit.h"

#include <gtest/gtest.h>

using namespace qoro;

namespace
{
constexpr CGSize Phone{375, 812};
} // namespace

TEST(HeldTurn, FollowsTheDeviceOrientation)
{
    EXPECT_EQ(held_turn(UIDeviceOrientationPortrait, UIInterfaceOrientationPortrait, Phone, HalfTurn), 0);
    EXPECT_EQ(held_turn(UIDeviceOrientationPortraitUpsideDown, UIInterfaceOrientationPortrait, Phone, 0), HalfTurn);
    EXPECT_EQ(held_turn(UIDeviceOrientationLandscapeLeft, UIInterfaceOrientationPortrait, Phone, 0), -QuarterTurn);
    EXPECT_EQ(held_turn(UIDeviceOrientationLandscapeRight, UIInterfaceOrientationPortrait, Phone, 0), QuarterTurn);
}

TEST(HeldTurn, StaysWhileTheDeviceLiesFlat)
{
    EXPECT_EQ(held_turn(UIDeviceOrientationUnknown, UIInterfaceOrientationPortrait, Phone, QuarterTurn), QuarterTurn);
    EXPECT_EQ(held_turn(UIDeviceOrientationFaceUp, UIInterfaceOrientationPortrait, Phone, -QuarterTurn), -QuarterTurn);
    EXPECT_EQ(held_turn(UIDeviceOrientationFaceDown, UIInterfaceOrientationPortrait, Phone, 0), 0);
}

TEST(HeldTurn, OfAHostInLandscapeFollowsTheSideAlone)
{
    EXPECT_EQ(held_turn(UIDeviceOrientationPortrait, UIInterfaceOrientationLandscapeRight, {812, 375}, 0), 0);
    EXPECT_EQ(held_turn(UIDeviceOrientationPortrait, UIInterfaceOrientationLandscapeLeft, {812, 375}, 0), HalfTurn);
    EXPECT_EQ(held_turn(UIDeviceOrientationLandscapeLeft, UIInterfaceOrientationLandscapeRight, {812, 375}, 0), 0);
}
