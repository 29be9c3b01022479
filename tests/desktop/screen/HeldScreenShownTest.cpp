#include "tests/desktop/screen/ScreenTest.h"

namespace qoro::test
{
namespace
{

/// An ad after the landscape layout: rotated by 90 degrees, red at its upper left, blue at its lower right.
class HeldScreenShown : public ScreenTest
{
protected:
    void show_ad_turned_by(double angle)
    {
        const UIView ad = UIView::create();
        ad.setTransform(CGAffineTransformMakeRotation(angle));
        ad.setFrame({0, 0, 300, 400});
        ad.setBackgroundColor(color(White));
        ad.addSubview(colored({0, 0, 40, 20}, Red));
        ad.addSubview(colored({360, 280, 40, 20}, Blue));
        window.addSubview(ad);
    }
};

TEST_F(HeldScreenShown, AnAdTurnedForLandscapeLeftIsUprightThere)
{
    show_ad_turned_by(QuarterTurn);
    turn(UIDeviceOrientationLandscapeLeft);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 400);
    EXPECT_EQ(picture.height, 300);
    EXPECT_EQ(picture.box_of(Red), (CGRect{0, 0, 40, 20}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{360, 280, 40, 20}));
}

TEST_F(HeldScreenShown, AnAdTurnedForLandscapeRightIsUprightThere)
{
    show_ad_turned_by(-QuarterTurn);
    turn(UIDeviceOrientationLandscapeRight);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.box_of(Red), (CGRect{0, 0, 40, 20}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{360, 280, 40, 20}));
}

TEST_F(HeldScreenShown, AnAdTurnedOnAnUprightDeviceIsSideways)
{
    show_ad_turned_by(QuarterTurn);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 300);
    EXPECT_EQ(picture.box_of(Red), (CGRect{280, 0, 20, 40}));
    EXPECT_EQ(picture.box_of(Blue), (CGRect{0, 360, 20, 40}));
}

TEST_F(HeldScreenShown, AnUpsideDownDeviceShowsEverythingUpsideDown)
{
    window.addSubview(colored({0, 0, 40, 20}, Red));
    turn(UIDeviceOrientationPortraitUpsideDown);
    open();
    EXPECT_EQ(shown().box_of(Red), (CGRect{260, 380, 40, 20}));
}

TEST_F(HeldScreenShown, TheWindowFollowsTheTurn)
{
    open();
    EXPECT_EQ(surface_width(), 300);
    turn(UIDeviceOrientationLandscapeLeft);
    EXPECT_TRUE(platform.loop().run_until([&] { return surface_width() == 400; }, 10));
    turn(UIDeviceOrientationPortrait);
    EXPECT_TRUE(platform.loop().run_until([&] { return surface_width() == 300; }, 10));
}

TEST_F(HeldScreenShown, ADeviceLargerThanTheMonitorIsScaledDownAndItsSnapshotIsComplete)
{
    platform.device_facts.screen = CGSize{1500, 3000};
    window.setFrame({0, 0, 1500, 3000});
    window.addSubview(colored({1000, 1000, 400, 500}, Red));
    open();
    EXPECT_LT(surface_width(), 1500);
    const Shown picture = shown();
    EXPECT_EQ(picture.width, 1500);
    EXPECT_EQ(picture.box_of(Red), (CGRect{1000, 1000, 400, 500}));
}

// --------------------------------------------------------------------------------------------------------- safe areas

TEST_F(HeldScreenShown, SafeAreasAreMarkedOnTheUprightDevice)
{
    window.addSubview(colored({0, 0, 300, 400}, White));
    screen->mark_safe_areas({.top = 20, .bottom = 10}, {.left = 30});
    open();

    const Shown picture = shown();

    EXPECT_NE(picture.at(150, 19), White);
    EXPECT_EQ(picture.at(150, 20), White);
    EXPECT_EQ(picture.at(150, 389), White);
    EXPECT_NE(picture.at(150, 390), White);
    EXPECT_EQ(picture.at(0, 200), White);
}

TEST_F(HeldScreenShown, SafeAreasAreMarkedOnTheTurnedDevice)
{
    show_ad_turned_by(QuarterTurn);
    screen->mark_safe_areas({.top = 20}, {.left = 30, .right = 40});
    turn(UIDeviceOrientationLandscapeLeft);
    open();

    const Shown picture = shown();

    EXPECT_EQ(picture.at(200, 0), White);
    EXPECT_NE(picture.at(29, 150), White);
    EXPECT_EQ(picture.at(30, 150), White);
    EXPECT_EQ(picture.at(359, 150), White);
    EXPECT_NE(picture.at(360, 150), White);
}

} // namespace
} // namespace qoro::test
