#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/base/StartingPoints.h"
#include "tests/support/AtEvent.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;

constexpr const char* VideoIsVisible = R"(js video_visibilitychange {"e":{"visibility":1}} 0)";

// --------------------------------------------------------------------------------------------------- reports and state

TEST(PortraitLayout, SendsAScriptEventThenShowsTheSpinnerThenPlacesTheCloseButton)
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

TEST(PortraitLayout, AfterALandscapeVideoThatMayBeHiddenNoVisibilityEventIsSent)
{
    AdSession session;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.open();
    session->setLandscapeFullScreenVideo();
    session.forget();

    session->setPortraitModeScreen();

    EXPECT_EQ(session.count_of(VideoIsVisible), 0U);
}

TEST(PortraitLayout, AfterAHiddenLandscapeVideoTheVideoIsShownAndTheHiddenFlagCleared)
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

// ------------------------------------------------------------------------------------------------------ stacking order

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

TEST(PortraitLayout, PutsEverythingOverOtherViewsOfTheWindow)
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

TEST(PortraitLayout, WithoutAWindowVideoAndHiddenImageHaveNoParent)
{
    AdSession session;
    session.open();
    const UIWindow window = session->windowTempWindow;
    session->windowTempWindow = nullptr;

    session->setPortraitModeScreen();

    EXPECT_THAT(window.subviews(), ElementsAre(UIView(session->view())));
}

// ------------------------------------------------------------------------------------------------------------ controls

TEST(PortraitLayout, TheBrandTextIsHidden)
{
    AdSession session;
    session.ad().strBrandText = "Brand";

    session.open();

    EXPECT_TRUE(session->labelBrandText.isHidden());
    EXPECT_EQ(session->btnBrandIcon.frame(), (CGRect{51, 0, 41, 41}));
}

TEST(PortraitLayout, ACloseButtonTakenOverByTheScriptIsRestored)
{
    AdSession session;
    session.open();
    session->MRAIDUseCustomClose(true);
    EXPECT_FALSE(session->btnClose.superview());

    session->setPortraitModeScreen();

    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
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

TEST(PortraitLayout, APageInFrontRemovesTheControls)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().bIsWebViewInFront = true;

    session.open();

    EXPECT_FALSE(session->btnClose);
    EXPECT_FALSE(session->btnMute);
}

TEST(PortraitLayout, APageInFrontRemovesTheControlsBeforeTheTimeIsReported)
{
    AdSession session;
    session.open();
    session.plays();
    session.ad().bIsWebViewInFront = true;
    bool mute_there = true;
    const AtEvent looks(session, "js", [&] { mute_there = static_cast<bool>(session->btnMute); });

    session->setPortraitModeScreen();

    EXPECT_FALSE(mute_there);
}

// ---------------------------------------------------------------------------------------------------- pending rotation

TEST(PortraitLayout, ExpectsADeviceInAnotherOrientationToBeTurned)
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

} // namespace
} // namespace qoro
