#include "tests/base/StartingPoints.h"
#include "tests/support/AtEvent.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::IsEmpty;

// ----------------------------------------------------------------------------------------------------------- no layout

TEST(CheckVideoSize, ChangesNothingDuringAClickThrough)
{
    AdSession session;
    session.open();
    session->setBDoButtonAction(true);
    session->viewBackground.setHidden(true);
    session.forget();

    session->checkVideoSize();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_TRUE(session->viewBackground.isHidden());
}

TEST(CheckVideoSize, ChangesNothingUnderAnInAppBrowser)
{
    AdSession session;
    session.open();
    session->initInAppWebViewController();
    session->viewBackground.setHidden(true);
    session.forget();

    session->checkVideoSize();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_TRUE(session->viewBackground.isHidden());
}

// ------------------------------------------------------------------------------------------------------- chosen layout

TEST(CheckVideoSize, ALandscapeLaunchWinsOverAnUprightDevice)
{
    AdSession session;
    has_both_modes(session);
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;

    session.open();

    EXPECT_FALSE(session->bIsPortraitNow);
    EXPECT_EQ(session.count_of(LandscapeLayout), 1U);
    EXPECT_EQ(session.count_of(PortraitLayout), 0U);
}

TEST(CheckVideoSize, ALaunchInTheOtherLandscapeDoesNotCount)
{
    AdSession session;
    has_both_modes(session);
    session.ad().launchOrientation = UIDeviceOrientationLandscapeRight;

    session.open();

    EXPECT_TRUE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, ALandscapeDeviceGetsTheLandscapeModeThatTheAdHas)
{
    AdSession session;
    has_both_modes(session);
    session.rotate(UIDeviceOrientationLandscapeRight);

    session.open();

    EXPECT_FALSE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, APortraitOnlyAdHeldInLandscapeGetsThePortraitLayout)
{
    AdSession session;
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session.open();

    EXPECT_TRUE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, AnAdWithoutPortraitModeGetsTheLandscapeLayout)
{
    AdSession session;
    session.ad().portraitModeType = VideoAdMode{};
    session.ad().landscapeModeType = ONLY_VIDEO;

    session.open();

    EXPECT_FALSE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, AFullPortraitVideoIsLaidOutInPortraitEvenForALandscapeLaunch)
{
    AdSession session;
    has_both_modes(session);
    session.ad().portraitVideoPos = FULL;
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;

    session.open();

    EXPECT_TRUE(session->bIsPortraitNow);
    EXPECT_EQ(session.count_of(LandscapeLayout), 0U);
}

TEST(CheckVideoSize, ADeviceThatLiesFlatGetsThePortraitLayout)
{
    AdSession session;
    has_both_modes(session);
    session.rotate(UIDeviceOrientationFaceUp);

    session.open();

    EXPECT_TRUE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, AnUnknownDeviceOrientationGetsThePortraitLayout)
{
    AdSession session;
    has_both_modes(session);
    session.rotate(UIDeviceOrientationUnknown);

    session.open();

    EXPECT_TRUE(session->bIsPortraitNow);
}

/// Inputs of the choice, and the chosen layout.
struct Choice {
    const char* of;
    UIDeviceOrientation launch{};
    int device = UIDeviceOrientationPortrait;
    UIInterfaceOrientation status_bar = UIInterfaceOrientationPortrait;
    bool locked = false;
    bool has_portrait = true;
    bool has_landscape = true;
    ViewPosition position = TOP;
    bool portrait = false;
};

constexpr Choice choices[] = {
    {.of = "launched in landscape", .launch = UIDeviceOrientationLandscapeLeft},
    {.of = "launched in landscape, without a landscape mode",
     .launch = UIDeviceOrientationLandscapeLeft,
     .has_landscape = false},
    {.of = "launched in landscape, full in portrait",
     .launch = UIDeviceOrientationLandscapeLeft,
     .position = FULL,
     .portrait = true},
    {.of = "launched in the other landscape", .launch = UIDeviceOrientationLandscapeRight, .portrait = true},
    {.of = "held to the left", .device = UIDeviceOrientationLandscapeLeft},
    {.of = "held to the right", .device = UIDeviceOrientationLandscapeRight},
    {.of = "held to the left, full in portrait",
     .device = UIDeviceOrientationLandscapeLeft,
     .position = FULL,
     .portrait = true},
    {.of = "held to the left, without a landscape mode",
     .device = UIDeviceOrientationLandscapeLeft,
     .has_landscape = false,
     .portrait = true},
    {.of = "held to the right, without a landscape mode",
     .device = UIDeviceOrientationLandscapeRight,
     .has_landscape = false,
     .portrait = true},
    {.of = "without a portrait mode", .has_portrait = false},
    {.of = "without a portrait mode, full in portrait", .has_portrait = false, .position = FULL, .portrait = true},
    {.of = "without any mode", .has_portrait = false, .has_landscape = false},
    {.of = "upright", .portrait = true},
    {.of = "upside down", .device = UIDeviceOrientationPortraitUpsideDown, .portrait = true},
    {.of = "face up", .device = UIDeviceOrientationFaceUp, .portrait = true},
    {.of = "face down", .device = UIDeviceOrientationFaceDown, .portrait = true},
    {.of = "held unknown", .device = UIDeviceOrientationUnknown, .portrait = true},
    {.of = "status bar to the right", .status_bar = UIInterfaceOrientationLandscapeRight, .portrait = true},
    {.of = "locked, status bar upright", .locked = true, .portrait = true},
    {.of = "locked, status bar upside down",
     .status_bar = UIInterfaceOrientationPortraitUpsideDown,
     .locked = true,
     .portrait = true},
    {.of = "locked, status bar to the right", .status_bar = UIInterfaceOrientationLandscapeRight, .locked = true},
    {.of = "locked, status bar to the left", .status_bar = UIInterfaceOrientationLandscapeLeft, .locked = true},
    {.of = "locked, status bar to the right, without a landscape mode",
     .status_bar = UIInterfaceOrientationLandscapeRight,
     .locked = true,
     .has_landscape = false},
    {.of = "locked, status bar to the right, full in portrait",
     .status_bar = UIInterfaceOrientationLandscapeRight,
     .locked = true,
     .position = FULL,
     .portrait = true},
};

TEST(CheckVideoSize, TheFirstRuleThatAppliesChoosesTheLayout)
{
    for (const Choice& choice : choices) {
        SCOPED_TRACE(choice.of);
        World world = AdSession::manual_world();
        world.device.status_bar_orientation = choice.status_bar;
        AdSession session(world);
        session.ad().launchOrientation = choice.launch;
        session.ad().portraitModeType = choice.has_portrait ? ONLY_VIDEO : VideoAdMode{};
        session.ad().landscapeModeType = choice.has_landscape ? ONLY_VIDEO : VideoAdMode{};
        session.ad().portraitVideoPos = choice.position;
        session->bIsLockOneSide = choice.locked;
        session.rotate(choice.device);

        session.open();

        EXPECT_EQ(session.count_of(PortraitLayout), choice.portrait ? 1U : 0U);
        EXPECT_EQ(session.count_of(LandscapeLayout), choice.portrait ? 0U : 1U);
    }
}

TEST(CheckVideoSize, WithoutAnAdItChoosesTheLandscapeLayout)
{
    AdSession session;

    session->checkVideoSize();

    EXPECT_EQ(session.count_of(LandscapeLayout), 1U);
}

// --------------------------------------------------------------------------------------------------------- locked host

/// A host locked to landscape on a device held upright.
World locked_host()
{
    World world = screen_of(812, 375);
    world.device.status_bar_orientation = UIInterfaceOrientationLandscapeRight;
    return world;
}

TEST(CheckVideoSize, ALandscapeStatusBarOverAnUprightDeviceOnAWideScreenIsALockedHost)
{
    AdSession session(locked_host());
    has_both_modes(session);

    session.open();

    EXPECT_TRUE(session->bIsLockOneSide);
    EXPECT_TRUE(session->bIsLockOneSideAndIsLandscape);
    EXPECT_FALSE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, ASquareScreenIsNoLockedHost)
{
    World world = screen_of(400, 400);
    world.device.status_bar_orientation = UIInterfaceOrientationLandscapeRight;
    AdSession session(world);
    has_both_modes(session);

    session.open();

    EXPECT_FALSE(session->bIsLockOneSide);
    EXPECT_FALSE(session->bIsLockOneSideAndIsLandscape);
}

TEST(CheckVideoSize, ANarrowScreenIsNoLockedHost)
{
    World world = AdSession::manual_world();
    world.device.status_bar_orientation = UIInterfaceOrientationLandscapeLeft;
    AdSession session(world);

    session.open();

    EXPECT_FALSE(session->bIsLockOneSide);
    EXPECT_FALSE(session->bIsLockOneSideAndIsLandscape);
}

TEST(CheckVideoSize, ALandscapeDeviceIsNoLockedHost)
{
    AdSession session(locked_host());
    has_both_modes(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session.open();

    EXPECT_FALSE(session->bIsLockOneSide);
}

TEST(CheckVideoSize, ALockedHostStaysLocked)
{
    AdSession session(locked_host());
    has_both_modes(session);
    session.open();

    session.turn_status_bar(UIInterfaceOrientationPortrait);

    EXPECT_TRUE(session->bIsLockOneSide);
    EXPECT_TRUE(session->bIsLockOneSideAndIsLandscape);
}

TEST(CheckVideoSize, ALockedHostWithAnUprightStatusBarGetsThePortraitLayout)
{
    AdSession session;
    has_both_modes(session);
    session->bIsLockOneSide = true;

    session.open();

    EXPECT_TRUE(session->bIsPortraitNow);
}

TEST(CheckVideoSize, AnUprightDeviceWithoutAWideScreenIsInNoLockedHost)
{
    AdSession session;
    session.open();
    session.turn_status_bar(UIInterfaceOrientationLandscapeRight);
    session->bIsLockOneSide = false;
    session->fScreenWidth = 375;
    session->fScreenHeight = 812;

    session->checkVideoSize();

    EXPECT_FALSE(session->bIsLockOneSide);
}

TEST(CheckVideoSize, AWideScreenUnderAnUprightStatusBarIsInNoLockedHost)
{
    AdSession session;
    session.open();
    session->bIsLockOneSide = false;
    session->fScreenWidth = 812;
    session->fScreenHeight = 375;

    session->checkVideoSize();

    EXPECT_FALSE(session->bIsLockOneSide);
}

// -------------------------------------------------------------------------------------------------------- side effects

TEST(CheckVideoSize, ShowsTheBackgroundInPortrait)
{
    AdSession session;
    session.open();
    session->viewBackground.setHidden(true);

    session->checkVideoSize();

    EXPECT_FALSE(session->viewBackground.isHidden());
}

TEST(CheckVideoSize, EndsWithTheBarsShownAndTheLabelBroughtUpToDate)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->setControlBottonInVisible(true);

    session->checkVideoSize();

    EXPECT_FALSE(session->bIsHideControlbutton);
    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 3.0);
    EXPECT_EQ(session->labelRemainderTime.text(), "00:30");
}

TEST(CheckVideoSize, ReportsTheTimeTwiceWhileItPlaysOnceForTheLayoutAndOnceForItself)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session->checkVideoSize();

    EXPECT_EQ(session.count_of(R"(js video_timeupdate {"e":{"current_time":"0"}} 0)"), 2U);
}

TEST(CheckVideoSize, ShowsTheBarsBeforeItReportsTheTime)
{
    AdSession session;
    session.open();
    session.plays();
    session->setControlBottonInVisible(true);
    bool bars_hidden = true;
    const AtEvent looks(session, "js", [&] { bars_hidden = session->bIsHideControlbutton; });

    session->checkVideoSize();

    EXPECT_FALSE(bars_hidden);
}

} // namespace
} // namespace qoro
