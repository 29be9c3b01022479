#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// Records the ad's state at the moment its parent is notified of the close.
class LookingParent : public QoroPhoneGapViewController
{
public:
    explicit LookingParent(const AdSession& session) : session_(session) {}

    void closeVideoAdUnit(bool) override
    {
        ++closes;
        still_parent = session_->getParentViewController().get() == this;
        player_gone = !session_->qoroMoviePlayer;
        windows_gone = !session_->windowTempWindow && !session_->windowAddOnParent && !session_->appStoreWindow;
        off_screen = !session_->view().superview() && !session_->webView().superview();
    }

    int closes = 0;
    bool still_parent = false;
    bool player_gone = false;
    bool windows_gone = false;
    bool off_screen = false;

private:
    const AdSession& session_;
};

TEST(Close, RunsItsStepsInOrder)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.ad().arrayCloseTrackingUrls = NSArray::of_strings({"http://t/close"});
    session.ad().bNeedCloseParent = true;
    session.open();
    session.plays();
    session.forget();

    session.tap(session->btnClose);

    EXPECT_THAT(session.transcript(),
                ElementsAre("js onhide null 0", "kit removeExtraView", "player pause",
                            "request http://t/close tracking", "super updateStatusbar", "super stopUpdateTimer",
                            "volume 0.6", "player drop", "parent closeVideoAdUnit true"));
}

TEST(Close, LeavesNoPlayerNoControlsAndNoParent)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.open();
    session.plays();

    session.tap(session->btnClose);

    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_FALSE(session->playerViewController);
    EXPECT_FALSE(session->btnActionOne);
    EXPECT_FALSE(session->btnActionTwo);
    EXPECT_FALSE(session->btnClose);
    EXPECT_FALSE(session->btnPlayAndPause);
    EXPECT_FALSE(session->btnMute);
    EXPECT_FALSE(session->labelRemainderTime);
    EXPECT_FALSE(session->imgTopBackgroundColor);
    EXPECT_FALSE(session->viewTopBackground);
    EXPECT_FALSE(session->imgBottomBackgroundColor);
    EXPECT_FALSE(session->viewButtonBackground);
    EXPECT_FALSE(session->viewBottomBackground);
    EXPECT_FALSE(session->btnReplay);
    EXPECT_FALSE(session->btnClickListener);
    EXPECT_FALSE(session->btnBrandIcon);
    EXPECT_FALSE(session->labelBrandText);
    EXPECT_FALSE(session->viewBackground);
    EXPECT_FALSE(session->getParentViewController());
}

TEST(Close, TakesEachControlOffTheScreen)
{
    AdSession session;
    session.open();
    // Controls retained elsewhere are no longer in any superview.
    const UIView held[] = {
        session->btnActionOne,
        session->btnActionTwo,
        session->btnClose,
        session->btnPlayAndPause,
        session->btnMute,
        session->labelRemainderTime,
        session->imgTopBackgroundColor,
        session->viewTopBackground,
        session->imgBottomBackgroundColor,
        session->viewButtonBackground,
        session->viewBottomBackground,
        session->btnReplay,
        session->btnClickListener,
        session->btnBrandIcon,
        session->labelBrandText,
        session->viewBackground,
    };
    const UIView elsewhere = UIView::create();
    for (const UIView& control : held)
        elsewhere.addSubview(control);

    session.tap(session->btnClose);

    EXPECT_THAT(elsewhere.subviews(), IsEmpty());
}

TEST(Close, NotifiesTheParentLastAndThenReleasesIt)
{
    AdSession session;
    const auto parent = std::make_shared<LookingParent>(session);
    session->setParentViewController(parent);
    session->addOnParentWindow(UIWindow::create());
    session.ad().strStoreId = "42";
    session.open();

    session.tap(session->btnClose);

    EXPECT_EQ(parent->closes, 1);
    EXPECT_TRUE(parent->still_parent);
    EXPECT_TRUE(parent->player_gone);
    EXPECT_TRUE(parent->windows_gone);
    EXPECT_TRUE(parent->off_screen);
    EXPECT_FALSE(session->getParentViewController());
}

TEST(Close, TakesTheStorePagesWindowDown)
{
    AdSession session;
    session.ad().strStoreId = "42";
    session.open();
    const UIWindow window = session->appStoreWindow;
    ASSERT_TRUE(window);

    session.tap(session->btnClose);

    EXPECT_FALSE(session->appStoreWindow);
    EXPECT_TRUE(window.isHidden());
}

TEST(Close, LeavesTheScaleAndReturnButtons)
{
    AdSession session;
    session.open();

    session.tap(session->btnClose);

    EXPECT_TRUE(session->btnScreenScale);
    EXPECT_TRUE(session->btnReturnToVideo);
}

TEST(Close, LeavesNoObserverNoListenerAndNoTrackingState)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    session.open();
    session.plays();

    session.tap(session->btnClose);

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(&session.controller()), 0U);
    EXPECT_FALSE(session->dicEventListener);
    EXPECT_FALSE(session->dicSendTrackingState);
}

TEST(Close, StopsThePlaybackAndControlTimers)
{
    AdSession session;
    session.open();
    session.plays();

    session.tap(session->btnClose);

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
    EXPECT_FALSE(session->timerUpdateRemainderTime);
    EXPECT_FALSE(session->timerCloseBtnCountdown);
    EXPECT_FALSE(session->timerSendTrackingToServer);
    EXPECT_FALSE(session->timerSetControllerButtonHide);
}

TEST(Close, LeavesTheBufferingWatchdogAndTheLoadedTimerRunning)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 3;
    session.open();
    session.let_pass(1);

    session.tap(session->btnClose);
    session.forget();
    session.let_pass(10);

    EXPECT_THAT(session.transcript(), ElementsAre("volume 0.6", "js video_loaded null 0",
                                                  "log 4 Buffer Suffer Time's up, show close button."));
}

TEST(Close, MakesTheHostsWindowKeyAgain)
{
    AdSession session;
    session.open();
    const UIWindow temporary = session->windowTempWindow;

    session.tap(session->btnClose);

    EXPECT_FALSE(session->windowTempWindow);
    EXPECT_EQ(temporary.windowLevel(), UIWindowLevelNormal);
    EXPECT_FALSE(temporary.isKeyWindow());
    EXPECT_TRUE(session->windowDefaultWindow.isKeyWindow());
}

TEST(Close, TakesThePageAndTheViewOffTheScreen)
{
    AdSession session;
    session.open();
    const UIWindow held = session->windowTempWindow;

    session.tap(session->btnClose);

    EXPECT_FALSE(session->webView().superview());
    EXPECT_FALSE(session->view().superview());
}

TEST(Close, RestoresTheVolumeOfTheStart)
{
    AdSession session;
    session.open();
    session.plays();
    session.tap(session->btnMute);
    session.forget();

    session.tap(session->btnClose);

    EXPECT_EQ(session.lines("volume"), std::vector<std::string>{"0.6"});
}

TEST(Close, WithoutTheAudioPlumbingTheVolumeStaysAsItIs)
{
    AdSession session;
    session.open();
    session.plays();
    session.tap(session->btnMute);
    session->musicPlayer = nullptr;
    session.forget();

    session.tap(session->btnClose);

    EXPECT_THAT(session.lines("volume"), IsEmpty());
    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(Close, SendsTheTrackersOnce)
{
    AdSession session;
    session.ad().arrayCloseTrackingUrls = NSArray::of_strings({"http://t/close"});
    session.open();
    session.plays();

    session.tap(session->btnClose);
    session.let_pass(60);

    EXPECT_EQ(session.count_of("request http://t/close tracking"), 1U);
}

TEST(Close, TheParentStaysOpenUnlessTheAdWantsItClosed)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.ad().bNeedCloseParent = false;
    session.open();

    session.tap(session->btnClose);

    EXPECT_EQ(session.lines("parent"), std::vector<std::string>{"closeVideoAdUnit false"});
}

TEST(Close, WithoutAParentNoCloseIsReported)
{
    AdSession session;
    session.open();

    session.tap(session->btnClose);

    EXPECT_TRUE(session.lines("parent").empty());
}

TEST(Close, AButtonThatHidesTheVideoSendsOnhideAndLeavesTheAdOpen)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    show_hide_button(session);
    session.ad().arrayCloseTrackingUrls = NSArray::of_strings({"http://t/close"});
    session.open();
    session.plays();
    session.forget();

    session.tap(session->btnClose);

    EXPECT_EQ(session.transcript().at(0), "js onhide null 0");
    EXPECT_EQ(session.transcript().at(1), "kit removeExtraView");
    EXPECT_TRUE(session->bHideVideoToShowWebViewInLandscapeMode);
    EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_TRUE(session->btnClose);
    EXPECT_TRUE(session.fetched().empty());
    EXPECT_TRUE(session.lines("parent").empty());
}

TEST(Close, AFullVideoIsClosedWhateverTheHideButton)
{
    AdSession session;
    show_hide_button(session);
    session.ad().portraitVideoPos = FULL;
    session.open();

    session.tap(session->btnClose);

    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(Close, WithoutTheHideButtonALandscapeVideoIsClosed)
{
    AdSession session;
    show_hide_button(session);
    session.ad().bShowHideVideoBtn = false;
    session.open();

    session.tap(session->btnClose);

    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(Close, DismissesThePresentedStorePageBeforeTheTrackers)
{
    AdSession session;
    session.ad().arrayCloseTrackingUrls = NSArray::of_strings({"http://t/close"});
    session.open();
    session.plays();
    session->qoroAppStoreMockViewController =
        QoroAppStoreMockViewController::initWithStoreId("1", nullptr, nullptr, nullptr);
    session->presentViewController(session->qoroAppStoreMockViewController, true, nullptr);
    session.forget();

    session.tap(session->btnClose);

    const std::vector<std::string> first(session.transcript().begin(), session.transcript().begin() + 5);
    EXPECT_THAT(first, ElementsAre("js onhide null 0", "kit removeExtraView", "kit store.dismiss", "player pause",
                                   "request http://t/close tracking"));
    EXPECT_FALSE(session->qoroAppStoreMockViewController->isBeingPresented());
}

TEST(Close, AStorePageThatIsNotPresentedIsLeftAlone)
{
    AdSession session;
    session.open();
    session->qoroAppStoreMockViewController =
        QoroAppStoreMockViewController::initWithStoreId("1", nullptr, nullptr, nullptr);

    session.tap(session->btnClose);

    EXPECT_EQ(session.count_of("kit store.dismiss"), 0U);
}

TEST(Close, TheScriptsCloseCallsTheSuperclassFirst)
{
    AdSession session;
    session.open();
    session.forget();

    session->MRAIDClose();

    EXPECT_EQ(session.transcript().at(0), "super MRAIDClose");
    EXPECT_EQ(session.transcript().at(1), "js onhide null 0");
    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(Close, IsEmittedOnceWhenTheAdIsClosedAgain)
{
    AdSession session;
    session.open();

    session.tap(session->btnClose);
    session->closeAction();
    session->MRAIDClose();

    EXPECT_THAT(session.closes(), ElementsAre(ClosedBy::Viewer));
}

TEST(Close, HidingTheVideoIsNoClose)
{
    AdSession session;
    show_hide_button(session);
    session.open();
    session.plays();

    session.tap(session->btnClose);
    EXPECT_THAT(session.events(), testing::Contains("onhide"));
    EXPECT_THAT(session.closes(), IsEmpty());
    EXPECT_FALSE(session->has_closed());

    session->closeAction();
    EXPECT_THAT(session.closes(), ElementsAre(ClosedBy::Viewer));
    EXPECT_TRUE(session->has_closed());
}

TEST(Close, ByThePageIsEmittedAsThePages)
{
    AdSession session;
    session.open();

    session.script_says("MRAIDClose");

    EXPECT_THAT(session.closes(), ElementsAre(ClosedBy::Page));
}

TEST(Close, AfterThePageHidTheVideoIsEmittedAsTheViewers)
{
    AdSession session;
    show_hide_button(session);
    session.open();
    session.plays();

    session.script_says("MRAIDClose");
    ASSERT_THAT(session.closes(), IsEmpty());
    session->closeAction();

    EXPECT_THAT(session.closes(), ElementsAre(ClosedBy::Viewer));
}

TEST(Close, AtTheVideosEndIsEmittedAsTheVideos)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    session.open();
    session.plays();

    session.ends();

    EXPECT_THAT(session.closes(), ElementsAre(ClosedBy::Video));
}

TEST(Close, ByTheHostIsEmittedAsTheHosts)
{
    AdSession session;
    session.open();

    {
        const ClosingBy host(session.controller(), ClosedBy::Host);
        session->closeAction();
    }

    EXPECT_THAT(session.closes(), ElementsAre(ClosedBy::Host));
}

TEST(Close, NothingReachesTheScriptAfterwards)
{
    AdSession session;
    session.open();
    session.plays();
    session.tap(session->btnClose);
    session.forget();

    session.set_volume(0.1F);
    session.return_to_app();
    session.let_pass(30);

    EXPECT_TRUE(session.events().empty());
}

TEST(Close, EmptiesTheTablesThatOthersMayHold)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    session.open();
    session->addEventListener("video_play", "1", "1");
    const NSDictionary states = session->dicSendTrackingState;
    const NSDictionary listeners = session->dicEventListener;

    session.tap(session->btnClose);

    EXPECT_EQ(states.count(), 0U);
    EXPECT_EQ(listeners.count(), 0U);
}

TEST(Close, TakesThePlayersPictureOffTheScreen)
{
    AdSession session;
    session.open();
    const UIView page = session->webView();
    const UIView picture = session->qoroMoviePlayer.view();
    page.addSubview(picture);

    session.tap(session->btnClose);

    EXPECT_FALSE(picture.superview());
}

TEST(Close, WithoutAHostWindowTheTemporaryOneStillResignsTheKey)
{
    AdSession session;
    session.open();
    const UIWindow temporary = session->windowTempWindow;
    session->windowDefaultWindow = nullptr;

    session.tap(session->btnClose);

    EXPECT_FALSE(temporary.isKeyWindow());
}

TEST(Close, ReleasesTheParentsWindow)
{
    AdSession session;
    session->addOnParentWindow(UIWindow::create());
    session.open();
    EXPECT_TRUE(session->windowAddOnParent);

    session.tap(session->btnClose);

    EXPECT_FALSE(session->windowAddOnParent);
}

TEST(Close, ASecondCloseSendsItsTrackersButFindsNothingToTakeDown)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.ad().arrayCloseTrackingUrls = NSArray::of_strings({"http://t/close"});
    session.open();
    session.plays();
    session.tap(session->btnClose);
    session.forget();

    session->closeAction();

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/close"));
    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_THAT(session.lines("volume"), IsEmpty());
    EXPECT_THAT(session.lines("parent"), IsEmpty());
}

} // namespace
} // namespace qoro
