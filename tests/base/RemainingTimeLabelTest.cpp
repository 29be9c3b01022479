#include "tests/support/AdSession.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

World turned_screen(bool ios8)
{
    World world = AdSession::manual_world();
    world.device.facts.current_screen = CGSize{812, 375};
    world.device.facts.ios8 = ios8;
    return world;
}

/// Opened in landscape on an upright device; the video's duration is known.
void open_full_screen(AdSession& session)
{
    session.ad().portraitModeType = VideoAdMode{};
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();
    session.player_lasts(30);
}

// ---------------------------------------------------------------------------------------------------------------- band

TEST(RemainingTimeLabel, IsInTheLowerLeftCornerOfTheBand)
{
    AdSession session;
    session.open();
    session.player_lasts(30);

    session->updateRemainderTime();

    // "00:30" measures 35 by 16.
    EXPECT_EQ(session->labelRemainderTime.frame(), (CGRect{10, 184.4375, 35, 16}));
}

TEST(RemainingTimeLabel, IsAsLargeAsItsTextAndNoWiderThan296Points)
{
    World world = AdSession::manual_world();
    world.text["00:30"] = {400, 20};
    AdSession session(world);
    session.open();
    session.player_lasts(30);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame(), (CGRect{10, 180.4375, 296, 20}));
}

TEST(RemainingTimeLabel, IsOnAnEdgeRoundedToSinglePrecision)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->qoroMoviePlayer.view().setFrame({0, 0, 375, 210.1});

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, static_cast<double>(210.1F) - 16 - 10.5);
}

TEST(RemainingTimeLabel, OfABandInALockedHostIsOnTheBandsLowerEdge)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session.rotate(UIDeviceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 184.4375);
}

TEST(RemainingTimeLabel, IsTheTopmostViewOfTheVideo)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->updateRemainderTime();
    session->qoroMoviePlayer.view().addSubview(session->btnMute);

    session->updateRemainderTime();

    EXPECT_TRUE(session->labelRemainderTime.superview() == session->qoroMoviePlayer.view());
    EXPECT_TRUE(is_on_top(session->labelRemainderTime));
}

TEST(RemainingTimeLabel, LeavesTheScreenWithThePlayer)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->updateRemainderTime();
    session->setQoroMoviePlayer(nullptr);

    session->updateRemainderTime();

    EXPECT_FALSE(session->labelRemainderTime.superview());
}

// --------------------------------------------------------------------------------------------------------- full screen

TEST(RemainingTimeLabel, InFullScreenIsOnTheScreensLowerEdge)
{
    AdSession session;
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InFullScreenInAHostLockedOtherwiseOnAnUprightDeviceIsOnTheScreensWidth)
{
    AdSession session;
    open_full_screen(session);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InFullScreenOnAnUprightDeviceIsOnTheScreensWidth)
{
    AdSession session;
    open_full_screen(session);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, TheLockedSideIsIgnoredWithoutTheLock)
{
    AdSession session(turned_screen(false));
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InAHostLockedToLandscapeIsOnTheScreensHeight)
{
    AdSession session(turned_screen(true));
    open_full_screen(session);
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InAHostLockedToLandscapeBeforeIOS8IsOnTheScreensWidth)
{
    AdSession session(turned_screen(false));
    open_full_screen(session);
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 785.5);
}

TEST(RemainingTimeLabel, InALockedHostOnALandscapeDeviceIsOnTheScreensWidth)
{
    AdSession session(turned_screen(true));
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 785.5);
}

TEST(RemainingTimeLabel, InALockedHostOnALandscapeDeviceBeforeIOS8IsOnTheScreensHeight)
{
    AdSession session(turned_screen(false));
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InALockedHostOnADeviceUpsideDownIsOnTheScreensHeight)
{
    AdSession session;
    session.open();
    session.plays();
    session.rotate(UIDeviceOrientationPortraitUpsideDown);
    session->bIsLockOneSide = true;
    session->bIsFullScreen = true;
    session->bIsLockOneSideAndIsLandscape = false;

    session->updateRemainderTime();

    const CGRect label = session->labelRemainderTime.frame();
    EXPECT_EQ(label.y + label.height, session->getCurrnetScreenSize().height - 10.5);
}

// ------------------------------------------------------------------------------------------------- full portrait video

TEST(RemainingTimeLabel, OfAFullPortraitVideoIsOnTheVideosLowerEdge)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 707.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoInAHostLockedOtherwiseIsOnTheVideosLowerEdge)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 707.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoWithTheLandscapeSideButNoLockIsOnTheVideosLowerEdge)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 707.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoInAHostLockedToLandscapeIsOnTheVideosWidth)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

} // namespace
} // namespace qoro
