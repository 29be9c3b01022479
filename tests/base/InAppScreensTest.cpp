#include "tests/support/AdSession.h"
#include "tests/support/AtEvent.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;

TEST(InAppBrowserScreen, TakesTheKitsSettings)
{
    HostSetup host = unguarded_host();
    host.delegate = true;
    AdSession session(AdSession::manual_world(), host);
    session->bUseAutoRotate = true;

    session->initInAppWebViewController();

    EXPECT_EQ(session->qoroInAppWebViewController->strMRAID2Expanded, "kit://script.js");
    EXPECT_EQ(session->qoroInAppWebViewController->qoroDelegate.lock(), session->qoroDelegate.lock());
    EXPECT_TRUE(session->qoroInAppWebViewController->bUseAutoRotate);
    EXPECT_EQ(QoroAdManager::sharedInstance().extra_view_count(), 1U);
}

TEST(InAppBrowserScreen, ASecondOneClosesTheFirstBeforeItIsMade)
{
    AdSession session;
    session->initInAppWebViewController();
    session.forget();

    session->initInAppWebViewController();

    EXPECT_THAT(session.transcript(), ElementsAre("kit browser.close", "kit browser.create", "kit addExtraView"));
}

TEST(InAppBrowserScreen, ClosedTheAdIsBackInItsOwnWindow)
{
    AdSession session;
    session.open();
    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});
    session.forget();

    session->closeInAppWebView();

    EXPECT_FALSE(session->getBDoButtonAction());
    EXPECT_FALSE(session->qoroInAppWebViewController);
    EXPECT_TRUE(session->windowTempWindow.isKeyWindow());
    EXPECT_TRUE(session->view().superview() == session->windowTempWindow);
    EXPECT_TRUE(session->qoroMoviePlayer.view().superview() == session->windowTempWindow);
    EXPECT_THAT(session.transcript(),
                ElementsAre("device 1", "log 1 Ad view add on custom window", "super checkViewSizeAfterOpenOtherApp",
                            R"(js video_orientation {"orientation":"portrait"} 0)",
                            R"(js video_visibilitychange {"e":{"visibility":1}} 0)",
                            R"(js video_orientation {"e":{"orientation":"portrait"}} 0)",
                            "super showProgressbar 167 85", "log 0 Added Video Close Button",
                            "log 0 Added Count Down View"));
}

TEST(InAppBrowserScreen, ClosedInLandscapeForcesPortrait)
{
    AdSession session;
    session.open();
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    session->closeInAppWebView();

    EXPECT_EQ(UIDevice::orientation(), UIDeviceOrientationPortrait);
    EXPECT_TRUE(session->qoroMoviePlayer.view().superview() == session->windowTempWindow);
}

TEST(InAppBrowserScreen, TheClickThroughHasEndedWhenPortraitIsForced)
{
    AdSession session;
    session.open();
    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});
    bool ended = false;
    const AtEvent looks(session, "device",
                        [&] { ended = !session->getBDoButtonAction() && !session->qoroInAppWebViewController; });

    session->closeInAppWebView();

    EXPECT_TRUE(ended);
}

TEST(InAppApplication, TheOrientationCheckHasStoppedBeforeItIsClosedAndTheClickThroughEndsAfterwards)
{
    AdSession session;
    session.open();
    session->checkLaunchType({{"action", "send_sms"}, {"data", NSDictionary{{"tel", "1"}}}});
    session->checkDeviceOrientation();
    bool stopped = false;
    bool going_on = false;
    const AtEvent looks(session, "super", [&] {
        // The close is reported first, the spinner of the following layout second.
        if (session.count_of("super closeInAppApplication") > 0)
            return;
        stopped = !session->timerCheckDeviceOrientation;
        going_on = session->getBDoButtonAction();
    });

    session->closeInAppApplication();

    EXPECT_TRUE(stopped);
    EXPECT_TRUE(going_on);
    EXPECT_FALSE(session->getBDoButtonAction());
}

TEST(InAppApplication, TheOpenPropertyStaysSetAfterAMessage)
{
    AdSession session;
    session.open();
    session->checkLaunchType({{"action", "send_sms"}, {"data", NSDictionary{{"tel", "1"}}}});

    session->closeInAppApplication();

    EXPECT_FALSE(session->getBDoButtonAction());
    EXPECT_TRUE(session->getBIsOpenInAppApplication());
    EXPECT_FALSE(session->bIsOpenInAppApplication);
}

TEST(InAppApplication, ClosedTheOrientationCheckStopsAndTheAdIsLaidOutAgain)
{
    AdSession session;
    session.open();
    session->getOpenInAppApplicationController();
    session->setBDoButtonAction(true);
    session->bIsOpenInAppApplication = true;
    session->checkDeviceOrientation();
    session.forget();

    session->closeInAppApplication();

    EXPECT_FALSE(session->timerCheckDeviceOrientation);
    EXPECT_FALSE(session->openInAppApplicationViewController);
    EXPECT_FALSE(session->bIsOpenInAppApplication);
    EXPECT_EQ(session.transcript().front(), "super closeInAppApplication");
    session.let_pass(10);
    EXPECT_EQ(session.count_of(R"(js video_orientation {"orientation":"portrait"} 0)"), 1U);
}

TEST(InAppApplication, ASecondOneClosesTheFirst)
{
    AdSession session;
    const auto first = session->getOpenInAppApplicationController();
    session.forget();

    const auto second = session->getOpenInAppApplicationController();

    EXPECT_NE(first, second);
    EXPECT_EQ(session->openInAppApplicationViewController, second);
    EXPECT_EQ(session.count_of("super closeInAppApplication"), 1U);
    EXPECT_EQ(session.transcript().back(), "kit addExtraView");
}

TEST(InAppApplication, NotifiesTheAdWhenItsSheetEnds)
{
    AdSession session;
    session.open();
    const auto application = session->getOpenInAppApplicationController();
    session.forget();

    application->finished();

    EXPECT_EQ(session.count_of("super closeInAppApplication"), 1U);
    EXPECT_FALSE(session->openInAppApplicationViewController);
}

} // namespace
} // namespace qoro
