#include "tests/base/StartingPoints.h"
#include "tests/support/AtEvent.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

#include <cmath>

namespace qoro
{
namespace
{

CGRect video_frame(const AdSession& session)
{
    return session->playerViewController.view().frame();
}

// -------------------------------------------------------------------------------------------------------------- frames

TEST(PortraitLayout, AVideoAtTheTopOfATallScreenIsBelowTheHousingAndAboveThePage)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->fVideoHeight, 210.9375F);
    EXPECT_EQ(video_frame(session), (CGRect{0, 44, 375, 210.9375}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 254.9375, 375, 523.0625}));
}

TEST(PortraitLayout, AVideoAtTheBottomIsBelowThePage)
{
    AdSession session;
    session.ad().portraitVideoPos = BOTTOM;

    session.open();

    EXPECT_EQ(session->webView().frame(), (CGRect{0, 44, 375, 523.0625}));
    EXPECT_EQ(video_frame(session), (CGRect{0, 567.0625, 375, 210.9375}));
}

TEST(PortraitLayout, AVideoInTheMiddleIsOverThePage)
{
    AdSession session;
    session.ad().portraitVideoPos = MIDDLE;

    session.open();

    EXPECT_EQ(session->fPortraitModeVideoPosY, 300.53125F);
    EXPECT_EQ(video_frame(session), (CGRect{0, 300.53125, 375, 210.9375}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 44, 375, 734}));
}

TEST(PortraitLayout, AFullVideoFillsASmallScreen)
{
    AdSession session(screen_of(320, 568));
    session.ad().portraitVideoPos = FULL;

    session.open();

    EXPECT_EQ(session->fVideoHeight, 568);
    EXPECT_EQ(video_frame(session), (CGRect{0, 0, 320, 568}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 0, 320, 568}));
    EXPECT_EQ(session->btnBrandIcon.frame(), (CGRect{51, 0, 35, 35}));
    EXPECT_TRUE(session->bIsFullScreen);
    EXPECT_TRUE(session->qoroMoviePlayer.settings().fullscreen);
}

TEST(PortraitLayout, AFullVideoStaysWithinATallScreensInsets)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;

    session.open();

    EXPECT_EQ(video_frame(session), (CGRect{0, 44, 375, 734}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 44, 375, 734}));
}

TEST(PortraitLayout, AVideoAtASideOrWithoutAPositionIsAtTheTopOverAPageOfItsHeight)
{
    for (const ViewPosition position : {LEFT, RIGHT, ViewPosition{}}) {
        SCOPED_TRACE(position);
        AdSession session;
        session.ad().portraitVideoPos = position;

        session.open();

        EXPECT_EQ(video_frame(session), (CGRect{0, 44, 375, 210.9375}));
        EXPECT_EQ(session->webView().frame(), (CGRect{0, 44, 375, 210.9375}));
    }
}

TEST(PortraitLayout, AScreenHalfAPointTallerHasNoInsets)
{
    AdSession session(screen_of(375, 812.5));

    session.open();

    EXPECT_EQ(video_frame(session), (CGRect{0, 0, 375, 210.9375}));
}

TEST(PortraitLayout, AScreenOnePointShorterHasNoInsets)
{
    AdSession session(screen_of(375, 811));

    session.open();

    EXPECT_EQ(video_frame(session), (CGRect{0, 0, 375, 210.9375}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 210.9375, 375, 600.0625}));
}

TEST(PortraitLayout, InsetsAreThoseOfTheMainScreenNotOfTheScreenAsItIsTurned)
{
    World world = AdSession::manual_world();
    world.device.facts.current_screen = CGSize{375, 700};
    AdSession tall(world);
    tall.open();
    EXPECT_EQ(tall->webView().frame(), (CGRect{0, 254.9375, 375, 523.0625}));

    world.device.facts.screen = CGSize{375, 700};
    world.device.facts.current_screen = CGSize{375, 812};
    AdSession low(world);
    low.open();
    EXPECT_EQ(low->webView().frame(), (CGRect{0, 210.9375, 375, 489.0625}));
}

TEST(PortraitLayout, TheBandStaysWhereItWasPlacedEvenWhenThePageHasMoved)
{
    AdSession session;
    session.ad().portraitVideoPos = BOTTOM;
    session.open();
    session.ad().fVideoHeight = 1280;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->webView().frame(), (CGRect{0, 44, 375, 359}));
    EXPECT_EQ(video_frame(session), (CGRect{0, 567.0625, 375, 375}));
}

TEST(PortraitLayout, ABandAtTheVeryTopCountsAsPlaced)
{
    AdSession session(screen_of(375, 811));
    session.open();
    EXPECT_EQ(session->fPortraitModeVideoPosY, 0);
    session.ad().portraitVideoPos = MIDDLE;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->fPortraitModeVideoPosY, 0);
}

TEST(PortraitLayout, AClearedPlaceIsComputedAgain)
{
    AdSession session;
    session.open();
    session.ad().portraitVideoPos = MIDDLE;
    session->fPortraitModeVideoPosY = -1;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->fPortraitModeVideoPosY, 300.53125F);
}

TEST(PortraitLayout, AVideoWithoutWidthHasNoFiniteBand)
{
    AdSession session;
    session.ad().fVideoWidth = 0;

    session.open();

    EXPECT_TRUE(std::isinf(session->fVideoHeight));
}

TEST(PortraitLayout, PageAndVideoFillTheScreenFromItsTopUntilTheTimeHasBeenReported)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();
    session.plays();
    session->setLandscapeFullScreenVideo();
    CGRect page;
    CGRect video;
    const AtEvent looks(session, "js", [&] {
        page = session->webView().frame();
        video = video_frame(session);
    });

    session->setPortraitModeScreen();

    EXPECT_EQ(page, (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(video, (CGRect{0, 0, 375, 210.9375}));
}

TEST(PortraitLayout, TheTapCatcherCoversTheVideo)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 375, 210.9375}));
}

TEST(PortraitLayout, OnAPhoneTheStorePageTakesEverythingBelowTheVideo)
{
    AdSession session;
    session.ad().strStoreId = "42";

    session.open();

    EXPECT_EQ(session->appStoreWindow.frame(), (CGRect{0, 254.9375, 375, 557.0625}));
}

TEST(PortraitLayout, OnATabletNoWindowIsPlacedBelowTheVideo)
{
    World world = AdSession::manual_world();
    world.device.facts.phone = false;
    AdSession session(world);
    session->appStoreWindow = UIWindow::create();

    session.open();

    EXPECT_EQ(session->appStoreWindow.frame(), CGRect{});
}

TEST(PortraitLayout, WithoutAVideoViewThePageBeginsAtTheTop)
{
    AdSession session;
    session.open();
    session->playerViewController = nullptr;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->webView().frame(), (CGRect{0, 0, 375, 778}));
    EXPECT_EQ(session->miImageView.frame(), CGRect{});
}

// ----------------------------------------------------------------------------------------------------------- rotations

TEST(PortraitLayout, TheRootFillsTheScreenAndNothingIsTurned)
{
    AdSession session;
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;
    session.open();

    session->setPortraitModeScreen();

    EXPECT_EQ(session->view().frame(), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(session->webView().transform().angle, 0);
    EXPECT_EQ(session->playerViewController.view().transform().angle, 0);
    EXPECT_EQ(session->miImageView.transform().angle, 0);
}

TEST(PortraitLayout, TheRootKeepsTheTurnThatALockedHostGaveIt)
{
    AdSession session;
    session.open();
    session->view().setTransform(CGAffineTransformMakeRotation(HalfTurn));

    session->setPortraitModeScreen();

    EXPECT_EQ(session->view().transform().angle, HalfTurn);
    EXPECT_EQ(session->view().frame(), (CGRect{0, 0, 375, 812}));
}

// ----------------------------------------------------------------------------------- host locked to landscape, rotated

/// A full-screen portrait ad in a locked host.
void open_full_locked(AdSession& session)
{
    session.ad().portraitVideoPos = FULL;
    session->bIsLockOneSide = true;
    session.open();
}

TEST(SidewaysPortraitLayout, AFullVideoInALockedHostIsTurnedBack)
{
    for (const int held : {UIDeviceOrientationPortrait, UIDeviceOrientationLandscapeLeft, UIDeviceOrientationFaceUp}) {
        SCOPED_TRACE(held);
        AdSession session;
        session.rotate(held);

        open_full_locked(session);

        EXPECT_EQ(session->webView().transform().angle, -QuarterTurn);
        EXPECT_EQ(session->playerViewController.view().transform().angle, -QuarterTurn);
        EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 812, 375}));
    }
}

TEST(SidewaysPortraitLayout, ItIsTurnedTheOtherWayForLandscapeRight)
{
    AdSession session;
    session.rotate(UIDeviceOrientationLandscapeRight);

    open_full_locked(session);

    EXPECT_EQ(session->webView().transform().angle, QuarterTurn);
    EXPECT_EQ(session->playerViewController.view().transform().angle, QuarterTurn);
}

TEST(SidewaysPortraitLayout, AHostLockedToPortraitTurnsNothing)
{
    AdSession session;
    session->bIsLockOneSideAndIsPortrait = true;

    open_full_locked(session);

    EXPECT_EQ(session->webView().transform().angle, 0);
    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 375, 734}));
}

TEST(SidewaysPortraitLayout, BeforeIOS8NothingIsTurned)
{
    World world = AdSession::manual_world();
    world.device.facts.ios8 = false;
    AdSession session(world);

    open_full_locked(session);

    EXPECT_EQ(session->webView().transform().angle, 0);
}

TEST(PortraitLayout, BeforeIOS8AFullVideoInALockedHostIsNotTurnedBack)
{
    World world = AdSession::manual_world();
    world.device.facts.ios8 = false;
    AdSession session(world);
    session.ad().portraitVideoPos = FULL;
    session.open();
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsPortrait = false;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->webView().transform().angle, 0);
}

TEST(PortraitLayout, AFullVideoInAHostThatRotatesIsNotTurnedBack)
{
    AdSession session(AdSession::manual_world(), rotating_host());
    session.ad().portraitVideoPos = FULL;
    session.open();
    session->bIsLockOneSide = false;
    session->bIsLockOneSideAndIsPortrait = false;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->webView().transform().angle, 0);
    EXPECT_EQ(session->playerViewController.view().transform().angle, 0);
}

} // namespace
} // namespace qoro
