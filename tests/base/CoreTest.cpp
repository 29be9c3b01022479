#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/support/AdSession.h"
#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

#include <array>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::SizeIs;
using Ad = QoroVideoWebViewController;

World world_without_screen()
{
    World world = AdSession::manual_world();
    world.device.facts.screen.reset();
    return world;
}

World world_with_status_bar(UIInterfaceOrientation orientation)
{
    World world = AdSession::manual_world();
    world.device.status_bar_orientation = orientation;
    return world;
}

struct SilentDelegate : QoroAdDelegate {
    bool responds_to_ad_failed() const override { return false; }
    void onZulixAdFailed(const UIView&, const NSError&) override {}
};

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

/// A flag and its value after init.
struct Flag {
    const char* name;
    bool Ad::*field;
    bool initial;
    /// False: init leaves its initial value.
    bool set = true;
};

constexpr Flag Flags[] = {
    {"bIsMute", &Ad::bIsMute, true},
    {"bIsPlay", &Ad::bIsPlay, false},
    {"bIsLoaded", &Ad::bIsLoaded, false, false},
    {"bDefaultStatusBarHidden", &Ad::bDefaultStatusBarHidden, false},
    {"bIsHideControlbutton", &Ad::bIsHideControlbutton, false},
    {"bIsInitVideoBeginStep", &Ad::bIsInitVideoBeginStep, false},
    {"bGoOutApp", &Ad::bGoOutApp, false},
    {"bIsPortraitOnly", &Ad::bIsPortraitOnly, false},
    {"bIsPortraitNow", &Ad::bIsPortraitNow, true},
    {"bIsPlayFinish", &Ad::bIsPlayFinish, false},
    {"bIsStopProgreeebar", &Ad::bIsStopProgreeebar, false},
    {"bDoButtonAction", &Ad::bDoButtonAction, false, false},
    {"bIsOpenInAppApplication", &Ad::bIsOpenInAppApplication, false, false},
    {"bOnlyOneSideVideo", &Ad::bOnlyOneSideVideo, true},
    {"bIsVideoOrientationLandscape", &Ad::bIsVideoOrientationLandscape, false},
    {"bHideVideoToShowWebViewInLandscapeMode", &Ad::bHideVideoToShowWebViewInLandscapeMode, false},
    {"bHideVideoToShowWebViewInPortraitMode", &Ad::bHideVideoToShowWebViewInPortraitMode, false},
    {"bIsLockLandscapeAndEnterLandscapeLeft", &Ad::bIsLockLandscapeAndEnterLandscapeLeft, false, false},
    {"bUseVASTTracking", &Ad::bUseVASTTracking, false, false},
    {"bPlayNextVideo", &Ad::bPlayNextVideo, false},
    {"bIsUseVideoCustomClose", &Ad::bIsUseVideoCustomClose, false},
    {"isShowMI", &Ad::isShowMI, false},
    // Backing fields of the properties.
    {"_bDoButtonAction", &Ad::_bDoButtonAction, false},
    {"_bIsOpenInAppApplication", &Ad::_bIsOpenInAppApplication, false},
    {"_bIsLockLandscapeAndEnterLandscapeLeft", &Ad::_bIsLockLandscapeAndEnterLandscapeLeft, false, false},
    // Fields of the superclass.
    {"bCanOrientation", &Ad::bCanOrientation, false},
    {"bIsTwoPartExpand", &Ad::bIsTwoPartExpand, true},
    {"bIsFullScreen", &Ad::bIsFullScreen, false},
    {"bIsAddOnWindow", &Ad::bIsAddOnWindow, false},
    {"bIsVideoViewController", &Ad::bIsVideoViewController, true},
};

TEST(Core, FlagsHaveTheirDefaultsAfterInit)
{
    AdSession session;
    const auto controller = Ad::create();

    controller->init();

    for (const Flag& flag : Flags)
        EXPECT_EQ(controller.get()->*flag.field, flag.initial) << flag.name;
}

TEST(Core, InitSetsOnlyItsFlagsWhateverTheirValues)
{
    AdSession session;
    const auto controller = Ad::create();
    for (const Flag& flag : Flags)
        controller.get()->*flag.field = !flag.initial;

    controller->init();

    for (const Flag& flag : Flags)
        EXPECT_EQ(controller.get()->*flag.field, flag.set ? flag.initial : !flag.initial) << flag.name;
}

TEST(Core, NumbersHaveTheirDefaultsAfterInit)
{
    AdSession session;

    EXPECT_EQ(session->AdType, VIDEO_AD);
    EXPECT_EQ(session->buttonPosMode, 0);
    EXPECT_EQ(session->fDefaultVolume, 0.0F);
    EXPECT_EQ(session->fScreenWidth, 375.0F);
    EXPECT_EQ(session->fScreenHeight, 812.0F);
    EXPECT_EQ(session->fVideoStopTime, 0.0F);
    EXPECT_EQ(session->fVideoHeight, 0.0F);
    EXPECT_EQ(session->fVideoWidth, 0.0F);
    EXPECT_EQ(session->fPortraitModeVideoPosY, -1.0F);
    EXPECT_EQ(session->iCountdownCount, 0.0F);
    EXPECT_EQ(session->iBufferingSufferTime, 0);
    EXPECT_EQ(session->iShowProgressWheel, 0);
    EXPECT_EQ(session->fTotalTime, 0.0F);
    EXPECT_EQ(session->changeModeOrientation, UIDeviceOrientationUnknown);
    EXPECT_EQ(session->currentOrientation, 0);
    EXPECT_EQ(session->videoState, VideoLoading);
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
    EXPECT_EQ(session->miWatchDog, 0);
    EXPECT_THAT(session->arrayVideoState,
                ElementsAre("video_loading", "video_loaded", "video_play", "video_pause", "video_ended"));
}

TEST(Core, InitSetsItsNumbersWhateverTheirValues)
{
    AdSession session;
    const auto controller = Ad::create();
    controller->changeModeOrientation = UIDeviceOrientationLandscapeLeft;
    controller->fPortraitModeVideoPosY = 7;
    controller->qoroMoviePlayerStatus = QoroMoviePlayerStatusResuming;
    controller->miWatchDog = 5;

    controller->init();

    EXPECT_EQ(controller->changeModeOrientation, UIDeviceOrientationUnknown);
    EXPECT_EQ(controller->fPortraitModeVideoPosY, -1.0F);
    EXPECT_EQ(controller->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
    EXPECT_EQ(controller->miWatchDog, 0);
}

TEST(Core, ObjectsOfAnOpenAdAreNullAfterInit)
{
    AdSession session;

    EXPECT_FALSE(session->qoroVideoAdInfo);
    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_FALSE(session->parentControllerView);
    EXPECT_FALSE(session->playerViewController);
    EXPECT_FALSE(session->musicPlayer);
    EXPECT_FALSE(session->volumeSlider);
    EXPECT_FALSE(session->dicButtonOneActionInfo);
    EXPECT_FALSE(session->dicButtonTwoActionInfo);
    EXPECT_FALSE(session->windowTempWindow);
    EXPECT_FALSE(session->windowAddOnParent);
    EXPECT_FALSE(session->countDownView);
    EXPECT_FALSE(session->dicSendTrackingState);
    EXPECT_FALSE(session->prePauseStatusDict);
    EXPECT_FALSE(session->appStoreWindow);
    EXPECT_FALSE(session->qoroAppStoreMockViewController);
    EXPECT_FALSE(session->qoroInAppWebViewController);
}

TEST(Core, NoTimerRunsAfterInit)
{
    AdSession session;

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
    EXPECT_FALSE(session->timerUpdateRemainderTime);
    EXPECT_FALSE(session->timerCloseBtnCountdown);
    EXPECT_FALSE(session->timerBufferSufferTime);
    EXPECT_FALSE(session->timerCheckVideoPlay);
    EXPECT_FALSE(session->timerSendTrackingToServer);
    EXPECT_FALSE(session->timerSetControllerButtonHide);
    EXPECT_FALSE(session->timerVideoLoaded);
    EXPECT_EQ(session.platform().loop().pending(), 0U);
}

TEST(Core, TheControlsAreMadeButHaveNoParentYet)
{
    AdSession session;
    const UIView made[] = {
        session->viewTopBackground,
        session->viewBottomBackground,
        session->viewButtonBackground,
        session->imgTopBackgroundColor,
        session->imgBottomBackgroundColor,
        session->btnMute,
        session->btnPlayAndPause,
        session->btnScreenScale,
        session->btnClose,
        session->btnActionOne,
        session->btnActionTwo,
        session->btnReplay,
        session->btnReturnToVideo,
        session->btnClickListener,
        session->labelRemainderTime,
        session->labelBrandText,
        session->btnBrandIcon,
    };

    for (const UIView& control : made) {
        EXPECT_TRUE(control);
        EXPECT_FALSE(control.superview());
    }
    EXPECT_FALSE(session->imgTopBackgroundColor.image());
    EXPECT_FALSE(session->imgBottomBackgroundColor.image());
}

TEST(Core, ControlsStartWithTheirPictures)
{
    AdSession session;

    EXPECT_EQ(picture_of(session->btnMute), arrayVideoSoundOffButton);
    EXPECT_EQ(picture_of(session->btnPlayAndPause), arrayVideoPlayButton);
    EXPECT_EQ(picture_of(session->btnScreenScale), arrayVideoFullscreenButton);
    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);
    EXPECT_EQ(picture_of(session->btnReturnToVideo), arrayShowVideo);
    EXPECT_EQ(picture_of(session->btnReplay), arrayVideoReplayButton);
    for (const UIButton& plain :
         {session->btnActionOne, session->btnActionTwo, session->btnClickListener, session->btnBrandIcon})
        EXPECT_FALSE(plain.backgroundImage());
}

TEST(Core, APictureIsDecodedAgainForEachChange)
{
    test::RecordingPlatform platform;
    const auto controller = Ad::create();
    controller->init();
    EXPECT_EQ(platform.decodings, 6);
    controller->musicPlayer = MPMusicPlayerController::applicationMusicPlayer();

    controller->volumeChanged();
    controller->volumeChanged();

    EXPECT_EQ(platform.decodings, 8);
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
    for (const UIButton& seen :
         {session->btnMute, session->btnPlayAndPause, session->btnScreenScale, session->btnClose, session->btnActionOne,
          session->btnActionTwo, session->btnClickListener, session->btnBrandIcon})
        EXPECT_FALSE(seen.isHidden());
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

TEST(Core, WithoutAKeyWindowTheFirstWindowIsTheDefaultWindow)
{
    SimulatedPlatform platform(AdSession::manual_world());
    const PlatformScope scope(platform);
    const UIWindow first = UIWindow::create();
    const UIWindow second = UIWindow::create();
    const auto controller = Ad::create();

    controller->init();

    EXPECT_EQ(controller->windowDefaultWindow, first);
    EXPECT_FALSE(first.isKeyWindow());
}

TEST(Core, TheKeyWindowIsTheDefaultWindowEvenWhenItIsNotTheFirst)
{
    SimulatedPlatform platform(AdSession::manual_world());
    const PlatformScope scope(platform);
    const UIWindow first = UIWindow::create();
    const UIWindow second = UIWindow::create();
    second.makeKeyAndVisible();
    const auto controller = Ad::create();

    controller->init();

    EXPECT_EQ(controller->windowDefaultWindow, second);
}

TEST(Core, WithoutAnyWindowThereIsNoDefaultWindow)
{
    SimulatedPlatform platform(AdSession::manual_world());
    const PlatformScope scope(platform);
    const auto controller = QoroVideoWebViewController::create();

    EXPECT_TRUE(controller->init());

    EXPECT_FALSE(controller->windowDefaultWindow);
}

/// White on a clear background with a pale shadow, for any font size.
void expect_label_over_video(const UILabel& label, double size)
{
    EXPECT_EQ(label.font(), (UIFont{"Arial", size}));
    EXPECT_EQ(label.textColor(), UIColor::whiteColor());
    EXPECT_EQ(label.backgroundColor(), UIColor::clearColor());
    EXPECT_EQ(label.lineBreakMode(), 1);
    EXPECT_EQ(label.node()->number_of_lines, 1);
    EXPECT_TRUE(label.node()->highlighted);
    EXPECT_EQ(label.node()->text_shadow_offset, (CGSize{0.5, 0.5}));
    EXPECT_EQ(label.node()->text_shadow_color, UIColor::colorWithRed(0, 0, 0, 0.3));
}

TEST(Core, TheLabelsDifferOnlyInTheSizeOfTheirLetters)
{
    AdSession session;

    expect_label_over_video(session->labelRemainderTime, 13.5);
    expect_label_over_video(session->labelBrandText, 20.0);
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

TEST(Core, EnteringTheForegroundMarksThePlayerAsResumingWhateverItDidButFinish)
{
    AdSession session;
    session.open();
    for (const auto status : {QoroMoviePlayerStatusNone, QoroMoviePlayerStatusResuming, QoroMoviePlayerStatusPlaying,
                              QoroMoviePlayerStatusSeeking, QoroMoviePlayerStatusTerminating}) {
        session->qoroMoviePlayerStatus = status;

        session.return_to_app();

        EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusResuming) << "from " << status;
    }
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
    HostSetup host = unguarded_host();
    host.delegate = true;
    AdSession session(AdSession::manual_world(), host);

    session->setQoroDelegate({});

    EXPECT_FALSE(session->getQoroDelegate().lock());
    EXPECT_TRUE(session->qoroDelegate.lock());
}

TEST(Core, ADelegateThatIsSetReachesThePropertyAlone)
{
    AdSession session;
    const auto delegate = std::make_shared<SilentDelegate>();

    session->setQoroDelegate(delegate);

    EXPECT_EQ(session->getQoroDelegate().lock(), delegate);
    EXPECT_FALSE(session->qoroDelegate.lock());
}

TEST(Core, ObservesTheAppTheStatusBarAndTheVolume)
{
    AdSession session;

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(&session.controller()), 4U);
}

TEST(Core, PresentsAControllerAndRunsTheCompletion)
{
    AdSession session;
    const auto sheet = std::make_shared<UIViewController>();
    bool completed = false;

    session->presentViewController(sheet, true, [&completed] { completed = true; });
    session.let_pass(0);

    EXPECT_TRUE(sheet->isBeingPresented());
    EXPECT_TRUE(completed);
}

TEST(Core, KeepsItsParentAndTheParentsWindow)
{
    AdSession session;
    auto parent = std::make_shared<QoroPhoneGapViewController>();
    const QoroPhoneGapViewController* given = parent.get();
    const UIWindow window = UIWindow::create();

    session->setParentViewController(parent);
    session->addOnParentWindow(window);
    parent.reset();

    EXPECT_EQ(session->getParentViewController().get(), given);
    EXPECT_EQ(session->windowAddOnParent, window);
}

TEST(Core, AReleasedControllerObservesNothing)
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

TEST(Core, ThePageIsScaledToFitOnceTheViewHasLoaded)
{
    AdSession session;

    EXPECT_TRUE(session->webView().node()->scales_page_to_fit);
}

TEST(Core, AnUninitialisedControllerIsEmpty)
{
    AdSession session;
    const auto made = QoroVideoWebViewController::create();

    EXPECT_THAT(
        (std::array{made->bIsPlay, made->bIsPlayFinish, made->bIsInitVideoBeginStep, made->bPlayNextVideo,
                    made->bIsMute, made->bIsPortraitOnly, made->bIsPortraitNow, made->bOnlyOneSideVideo,
                    made->bIsVideoOrientationLandscape, made->bHideVideoToShowWebViewInLandscapeMode,
                    made->bHideVideoToShowWebViewInPortraitMode, made->bDefaultStatusBarHidden,
                    made->bIsStopProgreeebar, made->bIsHideControlbutton, made->bIsUseVideoCustomClose,
                    made->getBDoButtonAction(), made->getBIsOpenInAppApplication(), made->bGoOutApp, made->isShowMI}),
        testing::Each(false));
    EXPECT_THAT((std::array{made->fScreenWidth, made->fScreenHeight, made->fPortraitModeVideoPosY}),
                testing::Each(0.0F));
    EXPECT_EQ(made->changeModeOrientation, 0);
    EXPECT_EQ(made->miWatchDog, 0);
}

} // namespace
} // namespace qoro
