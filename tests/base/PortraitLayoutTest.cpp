#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/support/AdSession.h"
#include "tests/support/Views.h"
#include "tests/support/WhenTold.h"

#include <gmock/gmock.h>

#include <cmath>

namespace qoro
{
namespace
{

using testing::ElementsAre;

World screen_of(double width, double height)
{
    World world = AdSession::manual_world();
    world.device.facts.screen = CGSize{width, height};
    return world;
}

HostApp rotating_host()
{
    HostApp host;
    host.autorotates = {UIInterfaceOrientationPortrait, UIInterfaceOrientationLandscapeRight};
    return host;
}

CGRect video_frame(const AdSession& session)
{
    return session->playerViewController.view().frame();
}

TEST(PortraitLayout, TellsTheScriptThenShowsTheSpinnerThenPlacesTheCloseButton)
{
    AdSession session;
    session.open();
    session.forget();

    session->setPortraitModeScreen();

    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_orientation {"orientation":"portrait"} 0)",
                                                  R"(js video_visibilitychange {"e":{"visibility":1}} 0)",
                                                  R"(js video_orientation {"e":{"orientation":"portrait"}} 0)",
                                                  "super showProgressbar 167 85", "log 0 Added Video Close Button",
                                                  "log 0 Added Count Down View"));
}

TEST(PortraitLayout, AFullVideoIsNotShownByIt)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session->qoroMoviePlayer.view().setHidden(true);
    session.forget();

    session->setPortraitModeScreen();

    EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_orientation {"orientation":"portrait"} 0)",
                                                  R"(js video_orientation {"e":{"orientation":"portrait"}} 0)",
                                                  "super showProgressbar 167 347", "log 0 Added Video Close Button",
                                                  "log 0 Added Count Down View"));
}

constexpr const char* VideoIsVisible = R"(js video_visibilitychange {"e":{"visibility":1}} 0)";

TEST(PortraitLayout, AfterALandscapeVideoThatMayBeHiddenTheScriptHearsNothingOfVisibility)
{
    AdSession session;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.open();
    session->setLandscapeFullScreenVideo();
    session.forget();

    session->setPortraitModeScreen();

    EXPECT_EQ(session.count_of(VideoIsVisible), 0U);
}

TEST(PortraitLayout, AfterAHiddenLandscapeVideoTheVideoIsShownAndTheHidingForgotten)
{
    AdSession session;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.open();
    session->setLandscapeFullScreenVideo();
    session->setVideoInvisible();
    session.forget();

    session->setPortraitModeScreen();

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_FALSE(session->bHideVideoToShowWebViewInLandscapeMode);
    EXPECT_EQ(session.count_of(VideoIsVisible), 1U);
}

TEST(PortraitLayout, AHiddenBandIsShown)
{
    AdSession session;
    session.open();
    session->qoroMoviePlayer.view().setHidden(true);

    session->setPortraitModeScreen();

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
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
    const WhenTold looks(session, "js", [&] {
        page = session->webView().frame();
        video = video_frame(session);
    });

    session->setPortraitModeScreen();

    EXPECT_EQ(page, (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(video, (CGRect{0, 0, 375, 210.9375}));
}

TEST(PortraitLayout, ACloseButtonThatTheScriptTookOverIsPutBack)
{
    AdSession session;
    session.open();
    session->MRAIDUseCustomClose(true);
    EXPECT_FALSE(session->btnClose.superview());

    session->setPortraitModeScreen();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(PortraitLayout, IsRememberedAsPortrait)
{
    AdSession session;
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;
    session.open();
    session.rotate(UIDeviceOrientationFaceUp);

    session->setPortraitModeScreen();

    EXPECT_TRUE(session->bIsPortraitNow);
    EXPECT_FALSE(session->bIsVideoOrientationLandscape);
    EXPECT_FALSE(session->bIsFullScreen);
    EXPECT_EQ(session->currentOrientation, UIDeviceOrientationFaceUp);
}

TEST(PortraitLayout, AVideoAtTheTopOfATallScreenStandsBelowTheHousingAndAboveThePage)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->fVideoHeight, 210.9375F);
    EXPECT_EQ(video_frame(session), (CGRect{0, 44, 375, 210.9375}));
    EXPECT_EQ(session->webView().frame(), (CGRect{0, 254.9375, 375, 523.0625}));
}

TEST(PortraitLayout, AVideoAtTheBottomStandsBelowThePage)
{
    AdSession session;
    session.ad().portraitVideoPos = BOTTOM;

    session.open();

    EXPECT_EQ(session->webView().frame(), (CGRect{0, 44, 375, 523.0625}));
    EXPECT_EQ(video_frame(session), (CGRect{0, 567.0625, 375, 210.9375}));
}

TEST(PortraitLayout, AVideoInTheMiddleStandsOverThePage)
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

TEST(PortraitLayout, AVideoAtASideOrNowhereStandsAtTheTopOverAPageOfItsHeight)
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

TEST(PortraitLayout, ABandAtTheVeryTopHasBeenPlacedToo)
{
    AdSession session(screen_of(375, 811));
    session.open();
    EXPECT_EQ(session->fPortraitModeVideoPosY, 0);
    session.ad().portraitVideoPos = MIDDLE;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->fPortraitModeVideoPosY, 0);
}

TEST(PortraitLayout, AForgottenPlaceIsFoundAnew)
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

TEST(PortraitLayout, TheTapCatcherCoversTheVideo)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 375, 210.9375}));
}

TEST(PortraitLayout, TheBrandTextIsHidden)
{
    AdSession session;
    session.ad().strBrandText = "Brand";

    session.open();

    EXPECT_TRUE(session->labelBrandText.isHidden());
    EXPECT_EQ(session->btnBrandIcon.frame(), (CGRect{51, 0, 41, 41}));
}

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

TEST(PortraitLayout, TheVideoFitsItsBand)
{
    AdSession session;
    session.open();
    session->qoroMoviePlayer.setScalingMode(MPMovieScalingModeNone);
    session->qoroMoviePlayer.setFullscreen(true);
    session->qoroMoviePlayer.view().setAutoresizingMask(5);

    session->setPortraitModeScreen();

    EXPECT_EQ(session->qoroMoviePlayer.settings().scaling_mode, MPMovieScalingModeAspectFit);
    EXPECT_FALSE(session->qoroMoviePlayer.settings().fullscreen);
    EXPECT_EQ(session->qoroMoviePlayer.view().autoresizingMask(), 0);
}

TEST(PortraitLayout, PutsTheVideoOverThePageAndTheHiddenImageOnTop)
{
    AdSession session;

    session.open();

    EXPECT_THAT(session->windowTempWindow.subviews(),
                ElementsAre(UIView(session->view()), session->qoroMoviePlayer.view(), UIView(session->miImageView)));
    EXPECT_EQ(session->miImageView.frame(), (CGRect{0, 44, 375, 210.9375}));
}

TEST(PortraitLayout, PutsEverythingOverWhatElseTheWindowHolds)
{
    AdSession session;
    session.open();
    const UIView other = UIView::create();
    session->windowTempWindow.addSubview(other);

    session->setPortraitModeScreen();

    EXPECT_THAT(
        session->windowTempWindow.subviews(),
        ElementsAre(other, UIView(session->view()), session->qoroMoviePlayer.view(), UIView(session->miImageView)));
}

TEST(PortraitLayout, WithoutAWindowVideoAndHiddenImageStandNowhere)
{
    AdSession session;
    session.open();
    const UIWindow window = session->windowTempWindow;
    session->windowTempWindow = nullptr;

    session->setPortraitModeScreen();

    EXPECT_THAT(window.subviews(), ElementsAre(UIView(session->view())));
}

TEST(PortraitLayout, AFullVideoHasTheAdsCloseButton)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.ad().closeBtnSize = BIG;

    session.open();

    EXPECT_EQ(picture_of(session->btnClose), arrayVideoBigCloseButton);
}

TEST(PortraitLayout, OffersTheFullScreenAgainAfterTheLandscapeLayout)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;
    session.open();
    session->btnScreenScale.setHidden(true);

    session->setPortraitModeScreen();

    EXPECT_FALSE(session->btnScreenScale.isHidden());
    EXPECT_EQ(picture_of(session->btnScreenScale), arrayVideoFullscreenButton);
}

TEST(PortraitLayout, OffersTheFullScreenInAPortraitOnlyHost)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;

    session.open();

    EXPECT_FALSE(session->btnScreenScale.isHidden());
    EXPECT_EQ(picture_of(session->btnScreenScale), arrayVideoFullscreenButton);
}

TEST(PortraitLayout, OffersNoFullScreenInAHostThatRotates)
{
    AdSession session(AdSession::manual_world(), rotating_host());
    session.ad().landscapeModeType = ONLY_VIDEO;

    session.open();

    EXPECT_TRUE(session->btnScreenScale.isHidden());
}

TEST(PortraitLayout, OffersNoFullScreenForAnAdWithoutLandscapeMode)
{
    AdSession session;

    session.open();

    EXPECT_TRUE(session->btnScreenScale.isHidden());
}

TEST(PortraitLayout, OffersNoFullScreenForAFullVideo)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.ad().portraitVideoPos = FULL;

    session.open();

    EXPECT_TRUE(session->btnScreenScale.isHidden());
}

// -------------------------------------------------------------------------------- a host locked to landscape, sideways

/// A full-screen portrait ad in a host that is locked.
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

// ---------------------------------------------------------------------------------------------------------- the rest

TEST(PortraitLayout, ExpectsADeviceThatIsHeldOtherwiseToBeTurned)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.rotate(UIDeviceOrientationFaceUp);

    session.open();

    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationPortrait);
    EXPECT_EQ(session->timerCheckDeviceOrientation.fireDate(), 5.0);
}

TEST(PortraitLayout, ExpectsNothingOfAnUprightDevice)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;

    session.open();

    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationUnknown);
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(PortraitLayout, ExpectsNothingOfAnAdWithOneArrangement)
{
    AdSession session;
    session.rotate(UIDeviceOrientationFaceUp);

    session.open();

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(PortraitLayout, ExpectsNothingOfALockedHost)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.rotate(UIDeviceOrientationFaceUp);
    session->bIsLockOneSide = true;

    session.open();

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(PortraitLayout, APageInFrontTakesTheControlsAway)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().bIsWebViewInFront = true;

    session.open();

    EXPECT_FALSE(session->btnClose);
    EXPECT_FALSE(session->btnMute);
}

TEST(PortraitLayout, APageInFrontHasTakenTheControlsAwayWhenTheTimeIsReported)
{
    AdSession session;
    session.open();
    session.plays();
    session.ad().bIsWebViewInFront = true;
    bool mute_there = true;
    const WhenTold looks(session, "js", [&] { mute_there = static_cast<bool>(session->btnMute); });

    session->setPortraitModeScreen();

    EXPECT_FALSE(mute_there);
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

TEST(PortraitLayout, WithoutViewsThePageBeginsAtTheTop)
{
    AdSession session;
    session.open();
    session->playerViewController = nullptr;

    session->setPortraitModeScreen();

    EXPECT_EQ(session->webView().frame(), (CGRect{0, 0, 375, 778}));
    EXPECT_EQ(session->miImageView.frame(), CGRect{});
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

TEST(PortraitLayout, AFullVideoInAHostThatTurnsIsNotTurnedBack)
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
