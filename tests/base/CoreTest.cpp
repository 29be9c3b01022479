#include "tests/support/AdSession.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::SizeIs;

World world_without_screen()
{
    World world = AdSession::manual_world();
    world.device.facts.screen.reset();
    return world;
}

World world_with_status_bar(int orientation)
{
    World world = AdSession::manual_world();
    world.device.status_bar_orientation = orientation;
    return world;
}

HostApp host_without_key_window()
{
    HostApp host;
    host.key_window = false;
    return host;
}

std::string_view first_target(const UIButton& button)
{
    return button.targets().front().name();
}

TEST(Core, PostsThatAnAdWillBeOpenThenForcesPortrait)
{
    AdSession session;

    EXPECT_EQ(session.transcript().at(0), "notification zulixInAppADWillBeOpen null");
    EXPECT_EQ(session.transcript().at(1), "device 1");
    EXPECT_EQ(session->getDeviceOriengation(), UIDeviceOrientationPortrait);
}

TEST(Core, FlagsHaveTheirDefaultsAfterInit)
{
    AdSession session;

    EXPECT_TRUE(session->bIsMute);
    EXPECT_TRUE(session->bIsPortraitNow);
    EXPECT_TRUE(session->bOnlyOneSideVideo);
    EXPECT_TRUE(session->bIsTwoPartExpand);
    EXPECT_TRUE(session->bIsVideoViewController);
    EXPECT_FALSE(session->bIsPlay);
    EXPECT_FALSE(session->bIsLoaded);
    EXPECT_FALSE(session->bIsPlayFinish);
    EXPECT_FALSE(session->bIsFullScreen);
    EXPECT_FALSE(session->bIsAddOnWindow);
    EXPECT_FALSE(session->bCanOrientation);
    EXPECT_FALSE(session->bIsPortraitOnly);
    EXPECT_FALSE(session->bIsInitVideoBeginStep);
    EXPECT_FALSE(session->bIsUseVideoCustomClose);
    EXPECT_FALSE(session->bIsStopProgreeebar);
    EXPECT_FALSE(session->getBDoButtonAction());
    EXPECT_FALSE(session->getBIsOpenInAppApplication());
}

TEST(Core, FieldsHaveTheirDefaultsAfterInit)
{
    AdSession session;

    EXPECT_EQ(session->AdType, VIDEO_AD);
    EXPECT_EQ(session->videoState, VideoLoading);
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
    EXPECT_EQ(session->fScreenWidth, 375.0F);
    EXPECT_EQ(session->fScreenHeight, 812.0F);
    EXPECT_EQ(session->fPortraitModeVideoPosY, -1.0F);
    EXPECT_EQ(session->fDefaultVolume, 0.0F);
    EXPECT_EQ(session->fTotalTime, 0.0F);
    EXPECT_EQ(session->buttonPosMode, 0);
    EXPECT_EQ(session->changeModeOrientation, 0);
    EXPECT_EQ(session->miWatchDog, 0);
    EXPECT_FALSE(session->isShowMI);
    EXPECT_FALSE(session->dicSendTrackingState);
    EXPECT_FALSE(session->prePauseStatusDict);
    EXPECT_FALSE(session->timerUpdateRemainderTime);
    EXPECT_THAT(session->arrayVideoState,
                ElementsAre("video_loading", "video_loaded", "video_play", "video_pause", "video_ended"));
}

TEST(Core, ControlsStartWithTheirImages)
{
    AdSession session;

    EXPECT_EQ(session->btnMute.backgroundImage().data().length(), 1367U);
    EXPECT_EQ(session->btnPlayAndPause.backgroundImage().data().length(), 6483U);
    EXPECT_EQ(session->btnScreenScale.backgroundImage().data().length(), 650U);
    EXPECT_EQ(session->btnClose.backgroundImage().data().length(), 681U);
    EXPECT_EQ(session->btnReturnToVideo.backgroundImage().data().length(), 2510U);
    EXPECT_EQ(session->btnReplay.backgroundImage().data().length(), 8749U);
    EXPECT_FALSE(session->btnActionOne.backgroundImage());
}

TEST(Core, ControlsStartWithTheirActions)
{
    AdSession session;

    EXPECT_EQ(first_target(session->btnMute), "setMute");
    EXPECT_EQ(first_target(session->btnPlayAndPause), "setPlayOrPause");
    EXPECT_EQ(first_target(session->btnScreenScale), "setScreenScale");
    EXPECT_EQ(first_target(session->btnClose), "closeAction");
    EXPECT_EQ(first_target(session->btnReturnToVideo), "setVideoVisible");
    EXPECT_EQ(first_target(session->btnReplay), "videoReplay:");
    EXPECT_EQ(first_target(session->btnClickListener), "setControllerBarHiddenState");
    EXPECT_THAT(session->btnActionOne.targets(), SizeIs(0));
}

TEST(Core, OnlyTheReplayAndReturnButtonsStartHidden)
{
    AdSession session;

    EXPECT_TRUE(session->btnReplay.isHidden());
    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
    EXPECT_FALSE(session->btnMute.isHidden());
    EXPECT_FALSE(session->btnClose.isHidden());
}

TEST(Core, TheCloseButtonStartsAtTheTopLeftFiftyPointsWide)
{
    AdSession session;

    EXPECT_EQ(session->btnClose.frame(), (CGRect{0, 0, 50, 50}));
}

TEST(Core, TheClickCatcherIsSizedForTheLandscapeVideo)
{
    AdSession session;

    EXPECT_EQ(session->btnClickListener.frame(), (CGRect{0, 0, 812, 375}));
    EXPECT_EQ(session->btnClickListener.backgroundColor(), UIColor::clearColor());
}

TEST(Core, WithoutAMainScreenBothSizesAreZeroAndTheClickCatcherHasAZeroFrame)
{
    AdSession session(world_without_screen());

    EXPECT_EQ(session->fScreenWidth, 0.0F);
    EXPECT_EQ(session->fScreenHeight, 0.0F);
    EXPECT_EQ(session->btnClickListener.frame(), CGRect{});
}

TEST(Core, TheKeyWindowIsTheDefaultWindow)
{
    AdSession session;

    EXPECT_TRUE(session->windowDefaultWindow.isKeyWindow());
}

TEST(Core, WithoutAKeyWindowTheFirstWindowIsTheDefaultWindow)
{
    AdSession session(AdSession::manual_world(), host_without_key_window());

    EXPECT_TRUE(session->windowDefaultWindow);
    EXPECT_FALSE(session->windowDefaultWindow.isKeyWindow());
    EXPECT_EQ(session->windowDefaultWindow, UIApplication::sharedApplication().windows().front());
}

TEST(Core, WithoutAnyWindowThereIsNoDefaultWindow)
{
    SimulatedPlatform platform(AdSession::manual_world());
    const PlatformScope scope(platform);
    const auto controller = QoroVideoWebViewController::create();

    EXPECT_TRUE(controller->init());

    EXPECT_FALSE(controller->windowDefaultWindow);
}

TEST(Core, TheRemainingTimeLabelIsSmallAndWhite)
{
    AdSession session;

    EXPECT_EQ(session->labelRemainderTime.font(), (UIFont{"Arial", 13.5}));
    EXPECT_EQ(session->labelRemainderTime.textColor(), UIColor::whiteColor());
    EXPECT_EQ(session->labelRemainderTime.backgroundColor(), UIColor::clearColor());
    EXPECT_EQ(session->labelRemainderTime.lineBreakMode(), 1);
}

TEST(Core, TheBrandTextIsTwentyPointsHigh)
{
    AdSession session;

    EXPECT_EQ(session->labelBrandText.font(), (UIFont{"Arial", 20}));
    EXPECT_EQ(session->labelBrandText.textColor(), UIColor::whiteColor());
}

TEST(Core, AHiddenStatusBarIsRemembered)
{
    World world = AdSession::manual_world();
    world.device.status_bar_hidden = true;

    AdSession session(world);

    EXPECT_TRUE(session->bDefaultStatusBarHidden);
}

TEST(Core, AStatusBarInLandscapeLeftIsRecordedWhenTheViewLoads)
{
    AdSession session(world_with_status_bar(UIInterfaceOrientationLandscapeLeft));

    EXPECT_TRUE(session->getBIsLockLandscapeAndEnterLandscapeLeft());
    EXPECT_FALSE(session->bIsLockLandscapeAndEnterLandscapeLeft);
}

TEST(Core, AStatusBarInLandscapeRightIsNotRecorded)
{
    AdSession session(world_with_status_bar(UIInterfaceOrientationLandscapeRight));

    EXPECT_FALSE(session->getBIsLockLandscapeAndEnterLandscapeLeft());
}

TEST(Core, AppearingEndsBeingOutOfTheApp)
{
    AdSession session;
    session->bGoOutApp = true;

    session->viewDidAppear(false);

    EXPECT_FALSE(session->bGoOutApp);
}

TEST(Core, EnteringTheForegroundMarksThePlayerAsResuming)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(3);

    session.return_to_app();

    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusResuming);
}

TEST(Core, EnteringTheForegroundAfterTheVideoFinishedLeavesItFinished)
{
    AdSession session;
    session.open();
    session.plays();
    session.ends();

    session.return_to_app();

    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusFinishedVideo);
}

TEST(Core, BecomingActiveLaysTheAdOutAgain)
{
    AdSession session;
    session.open();
    session.forget();

    session.return_to_app();

    EXPECT_EQ(session.count_of("super checkViewSizeAfterOpenOtherApp"), 1U);
    EXPECT_EQ(session.count_of(R"(js video_orientation {"orientation":"portrait"} 0)"), 1U);
}

TEST(Core, AfterTheInAppApplicationClosedItsPropertyStillReadsOpen)
{
    AdSession session;
    session->setBIsOpenInAppApplication(true);
    session->bIsOpenInAppApplication = true;

    session->closeInAppApplication();

    EXPECT_TRUE(session->getBIsOpenInAppApplication());
    EXPECT_FALSE(session->bIsOpenInAppApplication);
}

TEST(Core, TheDelegatePropertyHasAStorageOfItsOwn)
{
    HostApp host;
    host.delegate = true;
    AdSession session(AdSession::manual_world(), host);

    session->setQoroDelegate({});

    EXPECT_FALSE(session->getQoroDelegate().lock());
    EXPECT_TRUE(session->qoroDelegate.lock());
}

TEST(Core, AControllerThatIsLetGoObservesNothing)
{
    AdSession session;
    const Object* gone = &session.controller();

    session.release();

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(gone), 0U);
}

TEST(Core, WithoutAnAdEveryReadingIsZeroAndWritingIsLost)
{
    AdSession session;
    session->ad().setStrVideoUrl("http://ad/v.mp4");
    session->ad().setBIsAutoClose(true);

    EXPECT_FALSE(session->ad().strVideoUrl);
    EXPECT_FALSE(session->ad().bIsAutoClose);
    EXPECT_EQ(session->ad().portraitVideoPos, 0);
}

TEST(Core, InitSetsEveryFlagWhateverItHeld)
{
    AdSession session;
    const auto controller = QoroVideoWebViewController::create();
    controller->bCanOrientation = true;
    controller->bIsFullScreen = true;
    controller->bIsAddOnWindow = true;
    controller->bIsPlay = true;
    controller->bIsPlayFinish = true;
    controller->bIsPortraitOnly = true;
    controller->bIsHideControlbutton = true;
    controller->bIsInitVideoBeginStep = true;
    controller->bIsUseVideoCustomClose = true;
    controller->bIsStopProgreeebar = true;
    controller->bIsVideoOrientationLandscape = true;
    controller->bHideVideoToShowWebViewInLandscapeMode = true;
    controller->bHideVideoToShowWebViewInPortraitMode = true;
    controller->bGoOutApp = true;
    controller->bPlayNextVideo = true;
    controller->isShowMI = true;
    controller->changeModeOrientation = 3;
    controller->setBDoButtonAction(true);
    controller->setBIsOpenInAppApplication(true);

    controller->init();

    EXPECT_FALSE(controller->bCanOrientation);
    EXPECT_FALSE(controller->bIsFullScreen);
    EXPECT_FALSE(controller->bIsAddOnWindow);
    EXPECT_FALSE(controller->bIsPlay);
    EXPECT_FALSE(controller->bIsPlayFinish);
    EXPECT_FALSE(controller->bIsPortraitOnly);
    EXPECT_FALSE(controller->bIsHideControlbutton);
    EXPECT_FALSE(controller->bIsInitVideoBeginStep);
    EXPECT_FALSE(controller->bIsUseVideoCustomClose);
    EXPECT_FALSE(controller->bIsStopProgreeebar);
    EXPECT_FALSE(controller->bIsVideoOrientationLandscape);
    EXPECT_FALSE(controller->bHideVideoToShowWebViewInLandscapeMode);
    EXPECT_FALSE(controller->bHideVideoToShowWebViewInPortraitMode);
    EXPECT_FALSE(controller->bGoOutApp);
    EXPECT_FALSE(controller->bPlayNextVideo);
    EXPECT_FALSE(controller->isShowMI);
    EXPECT_EQ(controller->changeModeOrientation, 0);
    EXPECT_FALSE(controller->getBDoButtonAction());
    EXPECT_FALSE(controller->getBIsOpenInAppApplication());
}

TEST(Core, LabelsAreHighlightedOverAPaleShadow)
{
    AdSession session;

    const ViewNode& label = *session->labelRemainderTime.node();

    EXPECT_TRUE(label.highlighted);
    EXPECT_EQ(label.number_of_lines, 1);
    EXPECT_EQ(label.text_shadow_offset, (CGSize{0.5, 0.5}));
    EXPECT_EQ(label.text_shadow_color, UIColor::colorWithRed(0, 0, 0, 0.3));
}

TEST(Core, ThePageIsScaledToFitOnceTheViewHasLoaded)
{
    AdSession session;

    EXPECT_TRUE(session->webView().node()->scales_page_to_fit);
}

} // namespace
} // namespace qoro
