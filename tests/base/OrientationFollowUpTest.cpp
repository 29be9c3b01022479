#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

/// Landscape layout on an upright device: expects landscape left.
void expect_landscape(AdSession& session)
{
    has_both_modes(session);
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;
    session.open();
    session.forget();
}

/// Portrait layout on a device lying flat: expects portrait.
void expect_portrait(AdSession& session)
{
    has_both_modes(session);
    session.rotate(UIDeviceOrientationFaceUp);
    session.open();
    session.forget();
}

TEST(OrientationFollowUp, RunsOnceAfterFiveSeconds)
{
    AdSession session;

    expect_landscape(session);

    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationLandscapeLeft);
    EXPECT_EQ(session->timerCheckDeviceOrientation.timeInterval(), 5.0);
    EXPECT_FALSE(session->timerCheckDeviceOrientation.repeats());
}

TEST(OrientationFollowUp, ANewCheckReplacesTheRunningOne)
{
    AdSession session;
    expect_landscape(session);
    session.let_pass(3);

    session->checkDeviceOrientation();

    EXPECT_EQ(session->timerCheckDeviceOrientation.fireDate(), 8.0);
    session.let_pass(2);
    EXPECT_EQ(session.count_of(LandscapeLayout), 0U);
}

TEST(OrientationFollowUp, IsNotRepeatedAfterAnEarlyCheck)
{
    AdSession session;
    expect_landscape(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session->checkIsDeviceOrientationEqualVideoOrientation();
    session.rotate(UIDeviceOrientationPortrait);

    session.let_pass(10);

    EXPECT_EQ(session.count_of(LandscapeLayout), 0U);
    EXPECT_EQ(session.count_of(PortraitLayout), 0U);
}

TEST(OrientationFollowUp, AcceptsTheExpectedSide)
{
    AdSession session;
    expect_landscape(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(LandscapeLayout), 0U);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationUnknown);
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(OrientationFollowUp, AcceptsLandscapeRightForLandscapeLeft)
{
    AdSession session;
    expect_landscape(session);
    session.rotate(UIDeviceOrientationLandscapeRight);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(LandscapeLayout), 0U);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationUnknown);
}

TEST(OrientationFollowUp, LaysOutAgainOnADeviceThatStaysUpright)
{
    AdSession session;
    expect_landscape(session);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(LandscapeLayout), 1U);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationLandscapeLeft);
    EXPECT_EQ(session->timerCheckDeviceOrientation.fireDate(), 10.0);
}

TEST(OrientationFollowUp, KeepsItsExpectationWhereNothingMayBeLaidOut)
{
    AdSession session;
    expect_landscape(session);
    session->setBDoButtonAction(true);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(LandscapeLayout), 0U);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationLandscapeLeft);
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(OrientationFollowUp, DoesNotAcceptUpsideDownForPortrait)
{
    AdSession session;
    expect_portrait(session);
    session.rotate(UIDeviceOrientationPortraitUpsideDown);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(PortraitLayout), 1U);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationPortrait);
}

TEST(OrientationFollowUp, DoesNotAcceptLandscapeRightForPortrait)
{
    AdSession session;
    expect_portrait(session);
    session.rotate(UIDeviceOrientationLandscapeRight);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(LandscapeLayout), 1U);
}

TEST(OrientationFollowUp, AcceptsPortraitForPortrait)
{
    AdSession session;
    expect_portrait(session);
    session.rotate(UIDeviceOrientationPortrait);

    session.let_pass(5);

    EXPECT_EQ(session.count_of(PortraitLayout), 0U);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationUnknown);
}

TEST(OrientationFollowUp, LaysOutAgainWhenNothingIsExpected)
{
    AdSession session;
    session.open();
    session->checkDeviceOrientation();
    session.forget();

    session.let_pass(5);

    EXPECT_EQ(session.count_of(PortraitLayout), 1U);
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

} // namespace
} // namespace qoro
