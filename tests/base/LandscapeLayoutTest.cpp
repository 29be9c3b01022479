#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/base/StartingPoints.h"
#include "tests/support/AtEvent.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

#include <string>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

World small_screen()
{
    World world = AdSession::manual_world();
    world.device.facts.screen = CGSize{320, 568};
    return world;
}

/// A host locked to landscape: its screen is landscape while the device is upright.
World locked_host(UIInterfaceOrientation status_bar_orientation)
{
    World world = AdSession::manual_world();
    world.device.facts.screen = CGSize{812, 375};
    world.device.status_bar_orientation = status_bar_orientation;
    return world;
}

/// Opens an ad with a landscape layout only.
void open_landscape(AdSession& session)
{
    session.ad().portraitModeType = VideoAdMode{};
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();
}

/// Opens an ad with both layouts, launched in landscape.
void open_both_modes(AdSession& session)
{
    session.ad().portraitModeType = VIDEO_AND_WEBVIEW;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().launchOrientation = UIDeviceOrientationLandscapeLeft;
    session.open();
}

TEST(LandscapeLayout, SendsTwoScriptEventsThenShowsTheSpinnerThenPlacesTheCloseButton)
{
    AdSession session;
    open_landscape(session);
    session.forget();

    session->setLandscapeFullScreenVideo();

    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_orientation {"orientation":"landscape"} 0)",
                                                  R"(js video_orientation {"e":{"orientation":"landscape"}} 0)",
                                                  "super showProgressbar 167 386", "log 0 Added Video Close Button",
                                                  "log 0 Added Count Down View"));
}

TEST(LandscapeLayout, ReportsTheTimeBeforeTheCloseButtonWhileItPlays)
{
    AdSession session;
    open_landscape(session);
    session.plays();
    session.forget();

    session->setLandscapeFullScreenVideo();

    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_orientation {"orientation":"landscape"} 0)",
                                                  R"(js video_orientation {"e":{"orientation":"landscape"}} 0)",
                                                  R"(js video_timeupdate {"e":{"current_time":"0"}} 0)",
                                                  "log 0 Added Video Close Button", "log 0 Added Count Down View"));
}

TEST(LandscapeLayout, IsRememberedAsLandscapeAndFullScreen)
{
    AdSession session;

    open_landscape(session);

    EXPECT_FALSE(session->bIsPortraitNow);
    EXPECT_TRUE(session->bIsVideoOrientationLandscape);
    EXPECT_TRUE(session->bIsFullScreen);
    EXPECT_EQ(session->currentOrientation, UIDeviceOrientationPortrait);
    EXPECT_TRUE(session->viewBackground.isHidden());
}

TEST(LandscapeLayout, TheVideoIsAsLargeAsTheUprightScreen)
{
    AdSession session(small_screen());

    open_landscape(session);

    EXPECT_EQ(session->fVideoWidth, 320);
    EXPECT_EQ(session->fVideoHeight, 568);
    EXPECT_EQ(session->playerViewController.view().frame(), (CGRect{0, 0, 320, 568}));
    EXPECT_EQ(session->playerViewController.view().bounds(), (CGSize{568, 320}));
}

TEST(LandscapeLayout, TheVideoIsShownAtItsOwnScale)
{
    AdSession session;

    open_landscape(session);

    EXPECT_EQ(session->qoroMoviePlayer.settings().scaling_mode, MPMovieScalingModeNone);
}

TEST(LandscapeLayout, TheRootIsASquareOnTheLongEdge)
{
    AdSession session(small_screen());

    open_landscape(session);

    EXPECT_EQ(session->view().frame(), (CGRect{0, 0, 568, 568}));
}

TEST(LandscapeLayout, RootAndPageAreSquaresOnTheLongEdgeUntilTheTimeHasBeenReported)
{
    AdSession session(small_screen());
    open_landscape(session);
    session.plays();
    CGRect root;
    CGRect page;
    const AtEvent looks(session, "js", [&] {
        root = session->view().frame();
        page = session->webView().frame();
    });

    session->setLandscapeFullScreenVideo();

    EXPECT_EQ(root, (CGRect{0, 0, 568, 568}));
    EXPECT_EQ(page, (CGRect{0, 0, 568, 568}));
}

TEST(LandscapeLayout, ThePageIsAsLargeAsTheVideoInTheEnd)
{
    AdSession session(small_screen());

    open_landscape(session);

    EXPECT_EQ(session->webView().frame(), (CGRect{0, 0, 320, 568}));
    EXPECT_EQ(session->webView().bounds(), (CGSize{568, 320}));
}

TEST(LandscapeLayout, TheTapCatcherIsTurnedSideways)
{
    AdSession session(small_screen());
    open_landscape(session);
    session->btnClickListener.setFrame({1, 2, 3, 4});

    session->setLandscapeFullScreenVideo();

    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 568, 320}));
}

TEST(LandscapeLayout, TheBrandIsShown)
{
    AdSession session(small_screen());
    session.ad().strBrandText = "Brand";
    open_landscape(session);
    session->labelBrandText.setHidden(true);

    session->setLandscapeFullScreenVideo();

    EXPECT_EQ(session->btnBrandIcon.frame(), (CGRect{51, 0, 45, 45}));
    EXPECT_FALSE(session->labelBrandText.isHidden());
}

TEST(LandscapeLayout, TheBrandTextIsShownEvenWithoutABrand)
{
    AdSession session;

    open_landscape(session);

    EXPECT_FALSE(session->labelBrandText.isHidden());
}

TEST(LandscapeLayout, ACloseButtonTakenOverByTheScriptIsRestored)
{
    AdSession session;
    open_landscape(session);
    session->MRAIDUseCustomClose(true);
    EXPECT_FALSE(session->btnClose.superview());

    session->setLandscapeFullScreenVideo();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(LandscapeLayout, TheControlBarIsShown)
{
    AdSession session;
    open_landscape(session);
    session->setControlBottonInVisible(true);

    session->setLandscapeFullScreenVideo();

    EXPECT_FALSE(session->bIsHideControlbutton);
}

TEST(LandscapeLayout, PutsTheVideoOverThePageAndTheHiddenImageOverBoth)
{
    AdSession session;

    open_landscape(session);

    EXPECT_THAT(session->windowTempWindow.subviews(),
                ElementsAre(UIView(session->view()), session->qoroMoviePlayer.view(), UIView(session->miImageView)));
}

TEST(LandscapeLayout, TurnsPageAndVideoAQuarterOnAnUprightDevice)
{
    AdSession session;

    open_landscape(session);

    EXPECT_EQ(session->webView().transform().angle, QuarterTurn);
    EXPECT_EQ(session->playerViewController.view().transform().angle, QuarterTurn);
    EXPECT_EQ(session->view().transform().angle, 0);
}

TEST(LandscapeLayout, TurnsTheOtherWayForLandscapeRight)
{
    AdSession session;
    session.rotate(UIDeviceOrientationLandscapeRight);

    open_landscape(session);

    EXPECT_EQ(session->webView().transform().angle, -QuarterTurn);
    EXPECT_EQ(session->playerViewController.view().transform().angle, -QuarterTurn);
    EXPECT_EQ(session->miImageView.transform().angle, -QuarterTurn);
}

TEST(LandscapeLayout, TurnsAQuarterForLandscapeLeftAndForADeviceThatLiesFlat)
{
    AdSession left;
    left.rotate(UIDeviceOrientationLandscapeLeft);
    open_landscape(left);
    EXPECT_EQ(left->webView().transform().angle, QuarterTurn);

    AdSession flat;
    flat.rotate(UIDeviceOrientationFaceUp);
    open_landscape(flat);
    EXPECT_EQ(flat->webView().transform().angle, QuarterTurn);
}

TEST(LandscapeLayout, IsIdempotent)
{
    AdSession session;
    open_landscape(session);
    const CGRect page = session->webView().frame();

    session->setLandscapeFullScreenVideo();

    EXPECT_EQ(session->webView().transform().angle, QuarterTurn);
    EXPECT_EQ(session->webView().frame(), page);
    EXPECT_THAT(session->windowTempWindow.subviews(),
                ElementsAre(UIView(session->view()), session->qoroMoviePlayer.view(), UIView(session->miImageView)));
}

TEST(LandscapeLayout, TheHiddenImageHasTheVideosFrame)
{
    AdSession session(small_screen());

    open_landscape(session);

    EXPECT_EQ(session->miImageView.frame(), (CGRect{0, 0, 320, 568}));
}

TEST(LandscapeLayout, WithoutAWindowTheVideoHasNoFrameAndNoViewHasAParent)
{
    AdSession session;
    open_landscape(session);
    const UIWindow window = session->windowTempWindow;
    session->windowTempWindow = nullptr;

    session->setLandscapeFullScreenVideo();

    EXPECT_EQ(session->playerViewController.view().frame(), CGRect{});
    EXPECT_THAT(window.subviews(), IsEmpty());
}

// --------------------------------------------------------------------------------------- host locked to landscape

TEST(LockedLandscapeLayout, NothingIsTurnedForAStatusBarOnTheRight)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeRight));

    open_both_modes(session);

    EXPECT_EQ(session->view().transform().angle, 0);
    EXPECT_EQ(session->webView().transform().angle, 0);
    EXPECT_EQ(session->qoroMoviePlayer.view().transform().angle, 0);
    EXPECT_EQ(session->miImageView.transform().angle, 0);
}

TEST(LockedLandscapeLayout, TheTapCatcherIsASquareOnTheScreensWidth)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeRight));

    open_both_modes(session);

    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 812, 812}));
}

TEST(LockedLandscapeLayout, NothingIsTurnedForAStatusBarThatWasOnTheLeftFromTheStart)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeLeft));

    open_both_modes(session);

    EXPECT_EQ(session->view().transform().angle, 0);
}

TEST(LockedLandscapeLayout, EverythingIsTurnedAHalfWhenTheStatusBarCameToTheLeftLater)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeRight));
    open_both_modes(session);

    session.turn_status_bar(UIInterfaceOrientationLandscapeLeft);

    EXPECT_EQ(session->view().transform().angle, HalfTurn);
    EXPECT_EQ(session->webView().transform().angle, HalfTurn);
    EXPECT_EQ(session->qoroMoviePlayer.view().transform().angle, HalfTurn);
    EXPECT_EQ(session->miImageView.transform().angle, HalfTurn);
}

TEST(LockedLandscapeLayout, EverythingIsTurnedAHalfWhenTheStatusBarLeftTheLeft)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeLeft));
    open_both_modes(session);

    session.turn_status_bar(UIInterfaceOrientationLandscapeRight);

    EXPECT_EQ(session->view().transform().angle, HalfTurn);
}

TEST(LockedLandscapeLayout, IsTurnedAHalfByAStatusBarOnTheLeftOrByHavingEnteredThereButNotByBoth)
{
    struct Turn {
        UIInterfaceOrientation status_bar;
        bool entered_left;
        double angle;
    };
    constexpr Turn turns[] = {
        {UIInterfaceOrientationPortrait, false, 0},
        {UIInterfaceOrientationPortrait, true, HalfTurn},
        {UIInterfaceOrientationPortraitUpsideDown, false, 0},
        {UIInterfaceOrientationPortraitUpsideDown, true, HalfTurn},
        {UIInterfaceOrientationLandscapeRight, false, 0},
        {UIInterfaceOrientationLandscapeRight, true, HalfTurn},
        {UIInterfaceOrientationLandscapeLeft, false, HalfTurn},
        {UIInterfaceOrientationLandscapeLeft, true, 0},
    };
    for (const auto& [status_bar, entered_left, angle] : turns) {
        SCOPED_TRACE(std::to_string(status_bar) + (entered_left ? ", entered left" : ""));
        AdSession session(locked_host(status_bar));
        session->bIsLockOneSideAndIsLandscape = true;
        session->setBIsLockLandscapeAndEnterLandscapeLeft(entered_left);

        open_landscape(session);

        EXPECT_EQ(session->view().transform().angle, angle);
    }
}

TEST(LockedLandscapeLayout, TheRootAndTheVideoFillTheScreenAroundItsMiddle)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeRight));

    open_both_modes(session);

    EXPECT_EQ(session->view().frame(), (CGRect{0, 0, 812, 375}));
    EXPECT_EQ(session->playerViewController.view().frame(), (CGRect{0, 0, 812, 375}));
    EXPECT_EQ(session->playerViewController.view().center(), (CGPoint{406, 187.5}));
}

TEST(LockedLandscapeLayout, PutsTheVideoOverThePageAndTheHiddenImageOverBoth)
{
    AdSession session(locked_host(UIInterfaceOrientationLandscapeRight));

    open_both_modes(session);

    EXPECT_THAT(session->windowTempWindow.subviews(),
                ElementsAre(UIView(session->view()), session->qoroMoviePlayer.view(), UIView(session->miImageView)));
}

TEST(LockedLandscapeLayout, BeforeIOS8ItIsTurnedAsInAnyHost)
{
    World world = locked_host(UIInterfaceOrientationLandscapeRight);
    world.device.facts.ios8 = false;
    AdSession session(world);

    open_both_modes(session);

    EXPECT_EQ(session->webView().transform().angle, QuarterTurn);
    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 375, 812}));
}

// ------------------------------------------------------------------------------------------------------- other cases

TEST(LandscapeLayout, OffersTheReturnToPortraitInAPortraitOnlyHost)
{
    AdSession session;

    open_both_modes(session);

    EXPECT_TRUE(session->bIsPortraitOnly);
    EXPECT_EQ(picture_of(session->btnScreenScale), arrayVideoScaleToPortraitButton);
    EXPECT_FALSE(session->btnScreenScale.isHidden());
}

TEST(LandscapeLayout, AHiddenScaleButtonGetsItsPictureButStaysHidden)
{
    AdSession session;
    open_both_modes(session);
    session->btnScreenScale.setHidden(true);
    session->btnScreenScale.setBackgroundImage(nullptr);

    session->setLandscapeFullScreenVideo();

    EXPECT_TRUE(session->btnScreenScale.isHidden());
    EXPECT_EQ(picture_of(session->btnScreenScale), arrayVideoScaleToPortraitButton);
}

TEST(LandscapeLayout, OffersNoReturnToPortraitForAnAdWithoutPortraitMode)
{
    AdSession session;

    open_landscape(session);

    EXPECT_TRUE(session->btnScreenScale.isHidden());
}

TEST(LandscapeLayout, OffersNoReturnToPortraitInAHostThatRotates)
{
    AdSession session(AdSession::manual_world(), rotating_host());

    open_both_modes(session);

    EXPECT_FALSE(session->bIsPortraitOnly);
    EXPECT_TRUE(session->btnScreenScale.isHidden());
}

TEST(LandscapeLayout, ExpectsADeviceInAnotherOrientationToBeTurned)
{
    AdSession session;

    open_both_modes(session);

    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationLandscapeLeft);
    EXPECT_EQ(session->timerCheckDeviceOrientation.fireDate(), 5.0);
}

TEST(LandscapeLayout, ExpectsADeviceHeldToTheRightToBeTurnedToo)
{
    AdSession session;
    session.rotate(UIDeviceOrientationLandscapeRight);

    open_both_modes(session);

    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationLandscapeLeft);
    EXPECT_EQ(session->timerCheckDeviceOrientation.fireDate(), 5.0);
}

TEST(LandscapeLayout, ExpectsNothingOfADeviceHeldToTheLeft)
{
    AdSession session;
    session.rotate(UIDeviceOrientationLandscapeLeft);

    open_both_modes(session);

    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationUnknown);
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(LandscapeLayout, ExpectsNothingOfAnAdWithOneArrangement)
{
    AdSession session;

    open_landscape(session);

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(LandscapeLayout, ExpectsNothingOfALockedHost)
{
    AdSession session;
    session->bIsLockOneSide = true;

    open_both_modes(session);

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
}

TEST(LandscapeLayout, APageInFrontRemovesTheControls)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().bIsWebViewInFront = true;

    open_landscape(session);

    EXPECT_FALSE(session->btnClose);
    EXPECT_TRUE(is_on_top(session->view()));
}

TEST(LandscapeLayout, APageInFrontRemovesTheControlsBeforeTheTimeIsReported)
{
    AdSession session;
    open_landscape(session);
    session.plays();
    session.ad().bIsWebViewInFront = true;
    bool mute_there = true;
    const AtEvent looks(session, "js", [&] { mute_there = static_cast<bool>(session->btnMute); });

    session->setLandscapeFullScreenVideo();

    EXPECT_FALSE(mute_there);
}

} // namespace
} // namespace qoro
