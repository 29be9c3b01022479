#include "platform/QoroPhoneGapViewController.h"
#include "formats/JsonText.h"
#include "platform/ZulixOpenInAppApplicationViewController.h"
#include "tests/support/RecordingPlatform.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

using Texts = std::vector<std::string>;

/// The kit's controller with the overrides of an ad's controller.
struct Controller : QoroPhoneGapViewController {
    void checkVideoSize() override { ++layouts; }
    void closeAction() override { ++closes; }
    using QoroPhoneGapViewController::failAdRequest;
    void failAdRequest(const NSError& error) override { failures.push_back(error.text.text()); }

    int layouts = 0;
    int closes = 0;
    Texts failures;
};

struct PhoneGapTest : testing::Test {
    test::RecordingPlatform platform;
    std::shared_ptr<Controller> controller = made();

    static std::shared_ptr<Controller> made()
    {
        auto controller = std::make_shared<Controller>();
        controller->init();
        controller->loadView();
        return controller;
    }
    bool goes_on(const std::string& address, int navigation_type)
    {
        return controller->webView(controller->webView(), NSURL::URLWithString(address), navigation_type);
    }
};

// --------------------------------------------------------------------------------------------------------- listeners

TEST_F(PhoneGapTest, KeepsOneListenerOfANameAndId)
{
    controller->addEventListener("onhide", "a", "cb-1");
    controller->addEventListener("onhide", "a", "cb-2");
    controller->addEventListener("onhide", "b", "cb-3");

    EXPECT_EQ(controller->dicEventListener["onhide"].array().count(), 2U);
}

TEST_F(PhoneGapTest, ReportsTheNumberOfListenersAndSendsNothingWithoutOne)
{
    controller->addEventListener("onhide", "a", "cb-1");
    platform.transcript.clear();

    controller->listenerCallbackToJS("onhide", nullptr);
    controller->listenerCallbackToJS("video_play", NSDictionary{{"e", 1}});

    EXPECT_EQ(platform.transcript.at(0), "js event=onhide data=null listeners=1");
    EXPECT_EQ(platform.transcript.size(), 2U);
    EXPECT_EQ(platform.web->events, Texts{"onhide"});
}

TEST_F(PhoneGapTest, ReturnsWhetherAListenerWasRemovedAndDropsNamesWithoutListeners)
{
    controller->addEventListener("onhide", "a", "cb");

    EXPECT_EQ(controller->removeEventListener("onhide", "b"), 0);
    EXPECT_EQ(controller->removeEventListener("onhide", "a"), 1);
    EXPECT_EQ(controller->removeEventListener("onhide", "a"), 0);
    EXPECT_FALSE(controller->dicEventListener.contains("onhide"));
}

TEST_F(PhoneGapTest, RecordsNothingWithoutTheTable)
{
    controller->dicEventListener = nullptr;

    controller->addEventListener("onhide", "a", "cb");

    EXPECT_FALSE(controller->dicEventListener);
    EXPECT_EQ(controller->removeEventListener("onhide", "a"), 0);
}

TEST_F(PhoneGapTest, RecordsNoListenerWithoutANameOrAnId)
{
    controller->addEventListener(nullptr, "a", "cb");
    controller->addEventListener("onhide", nullptr, "cb");

    EXPECT_EQ(controller->dicEventListener.count(), 0U);
}

TEST_F(PhoneGapTest, CallsAListenerByItsIdWhenTheScriptGivesNoCallback)
{
    controller->callFromScript({"addEventListener", NSArray{"onhide", "a"}});

    EXPECT_EQ(controller->dicEventListener["onhide"].array()[0], Value(NSArray{"a", "a"}));
}

TEST_F(PhoneGapTest, RefusesAnUnknownCommand)
{
    EXPECT_EQ(controller->callFromScript({"format", {}}).error, NSString("unknown command format"));
    EXPECT_FALSE(controller->callFromScript({"MRAIDClose", {}}).error);
}

// ------------------------------------------------------------------------------------------------------ close button

TEST_F(PhoneGapTest, TheCloseButtonClosesUntilTheScriptTakesItsTaps)
{
    const UIButton button = UIButton::create();

    controller->setCloseButtonAction(button);
    button.sendTouchUpInside();
    EXPECT_EQ(controller->closes, 1);

    controller->bIsClickCloseButton = true;
    controller->setCloseButtonAction(button);
    platform.transcript.clear();
    button.sendTouchUpInside();

    EXPECT_EQ(controller->closes, 1);
    EXPECT_EQ(platform.transcript, Texts{"js event=onclick_closebtn data=null listeners=0"});
}

TEST_F(PhoneGapTest, TheCloseButtonHasOneActionHoweverOftenItIsSet)
{
    const UIButton button = UIButton::create();

    controller->setCloseButtonAction(button);
    controller->setCloseButtonAction(button);

    EXPECT_EQ(button.targets().size(), 1U);
    EXPECT_EQ(button.targets()[0].name(), "closeAction");
}

// -------------------------------------------------------------------------------------------------------------- page

TEST_F(PhoneGapTest, ThePagesOwnLoadIsAllowed)
{
    controller->strBaseUrl = "http://ad/page.html";
    controller->webView().loadHTMLString("page", NSURL::URLWithString("http://ad/page.html"));

    EXPECT_TRUE(goes_on("http://ad/page.html", 5));
    EXPECT_TRUE(goes_on("about:blank", 5));
}

TEST_F(PhoneGapTest, APageMayMoveWithinItself)
{
    controller->strBaseUrl = "http://ad/page.html";

    EXPECT_TRUE(goes_on("http://ad/page.html#end", 0));
}

TEST_F(PhoneGapTest, NavigationAwayIsRefusedAndReported)
{
    controller->strBaseUrl = "http://ad/page.html";
    platform.transcript.clear();

    EXPECT_FALSE(goes_on("http://shop/", 0));
    EXPECT_FALSE(goes_on("http://shop/", 5));
    EXPECT_FALSE(goes_on("file:///etc/passwd", 5));
    EXPECT_FALSE(goes_on("about:blank", 0));

    EXPECT_EQ(platform.transcript.size(), 4U);
    EXPECT_EQ(platform.transcript[0], "web do=refused kind=navigation detail=http://shop/ times=1");
}

TEST_F(PhoneGapTest, AFloodOfAddressesIsABoundedNumberOfBoundedLines)
{
    platform.transcript.clear();

    for (int n = 0; n < 1000; ++n)
        EXPECT_FALSE(goes_on("http://shop/" + std::string(5000, 'x'), 5));

    EXPECT_EQ(platform.transcript.size(), 100U);
    for (const std::string& line : platform.transcript)
        EXPECT_LT(line.size(), 1100U);
}

TEST_F(PhoneGapTest, AFailedPageRequestIsReportedAndReachesTheAdsHandler)
{
    QoroAdRequest request;
    request.error.text = "not found";
    platform.transcript.clear();

    controller->failAdRequest(request);

    EXPECT_EQ(platform.transcript, Texts{"super do=failAdRequest"});
    EXPECT_EQ(controller->failures, Texts{"not found"});
}

TEST_F(PhoneGapTest, ThePageMayOutliveItsController)
{
    const UIView web = controller->webView();

    controller.reset();

    EXPECT_EQ(web.node()->web, nullptr);
}

// ------------------------------------------------------------------------------------------------------------ device

TEST_F(PhoneGapTest, TheCurrentScreenIsUprightUntilDeviceOrStatusBarAreLandscape)
{
    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{375, 812}));
    platform.device_orientation = 4;
    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{812, 375}));
    platform.device_orientation = 5;
    platform.bar_orientation = 3;
    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{812, 375}));
    platform.bar_orientation = 2;
    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{375, 812}));
}

TEST_F(PhoneGapTest, AScreenThatIsWiderThanHighIsUprightWithItsShortEdgeAsWidth)
{
    platform.device_facts.screen = CGSize{812, 375};

    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{375, 812}));
}

TEST_F(PhoneGapTest, AGivenCurrentScreenIsReturnedUnchanged)
{
    platform.device_facts.current_screen = CGSize{1, 2};
    platform.device_orientation = 3;

    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{1, 2}));
}

TEST_F(PhoneGapTest, WithoutAScreenTheCurrentOneHasNoSize)
{
    platform.device_facts.screen = std::nullopt;

    EXPECT_EQ(controller->getCurrnetScreenSize(), (CGSize{0, 0}));
}

TEST_F(PhoneGapTest, AllowsTheInterfaceOrientationsOfItsHost)
{
    controller->allowedInterfaceOrientations = {1, 3};

    EXPECT_TRUE(controller->shouldAutorotateToInterfaceOrientation(3));
    EXPECT_FALSE(controller->shouldAutorotateToInterfaceOrientation(4));
}

TEST(Colours, AreDecimalArgbNumbers)
{
    EXPECT_EQ(QoroPhoneGapViewController::formatColor("3424657440"),
              UIColor::colorWithRed(32.0 / 255, 32.0 / 255, 32.0 / 255, 204.0 / 255));
    EXPECT_EQ(QoroPhoneGapViewController::formatColor("4278190335"), UIColor::colorWithRed(0, 0, 1, 1));
    EXPECT_EQ(QoroPhoneGapViewController::formatColor("0"), UIColor::colorWithRed(0, 0, 0, 0));
}

TEST(Colours, AreWhiteAndOpaqueForAnInvalidText)
{
    EXPECT_EQ(QoroPhoneGapViewController::formatColor(nullptr), UIColor::whiteColor());
    EXPECT_EQ(QoroPhoneGapViewController::formatColor(""), UIColor::whiteColor());
    EXPECT_EQ(QoroPhoneGapViewController::formatColor("#ff0000"), UIColor::whiteColor());
    EXPECT_EQ(QoroPhoneGapViewController::formatColor("12 "), UIColor::whiteColor());
    EXPECT_EQ(QoroPhoneGapViewController::formatColor("4294967296"), UIColor::whiteColor());
}

TEST(PhoneNumbers, AreTheDigitsAndPlusSigns)
{
    EXPECT_EQ(QoroPhoneGapViewController::formatPhoneNumber("+49 (30) 12-34"), NSString("tel:+49301234"));
    EXPECT_EQ(QoroPhoneGapViewController::formatPhoneNumber("none"), NSString("tel:"));
    EXPECT_EQ(QoroPhoneGapViewController::formatPhoneNumber(nullptr), NSString());
}

// ----------------------------------------------------------------------------------------------------- ad life cycle

TEST_F(PhoneGapTest, LaysNothingOutWhileNoAdIsOpen)
{
    controller->checkViewSizeAfterOpenOtherApp();
    EXPECT_EQ(controller->layouts, 0);

    controller->dicEventListener = nullptr;
    controller->checkViewSizeAfterOpenOtherApp();
    EXPECT_EQ(controller->layouts, 0);
}

TEST_F(PhoneGapTest, ShowsOneSpinnerAtTheRequestedPlaceAndRemovesIt)
{
    const UIView first = UIView::create();
    const UIView second = UIView::create();

    controller->showProgressbarPosX(10, 20, first);
    controller->showProgressbarPosX(30, 40, second);
    EXPECT_TRUE(first.subviews().empty());
    ASSERT_EQ(second.subviews().size(), 1U);
    EXPECT_EQ(second.subviews()[0].frame(), (CGRect{30, 40, 40, 40}));

    controller->stopProgressbar();
    EXPECT_TRUE(second.subviews().empty());
}

TEST_F(PhoneGapTest, ReportsWhenItsFieldLosesAPlayer)
{
    const auto one = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/1"));
    const auto two = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/2"));
    platform.transcript.clear();

    controller->setQoroMoviePlayer(nullptr);
    controller->setQoroMoviePlayer(one.moviePlayer());
    controller->setQoroMoviePlayer(one.moviePlayer());
    EXPECT_TRUE(platform.transcript.empty());

    controller->setQoroMoviePlayer(two.moviePlayer());
    controller->setQoroMoviePlayer(nullptr);
    EXPECT_EQ(platform.transcript, (Texts{"player do=drop", "player do=drop"}));
}

TEST_F(PhoneGapTest, ForgetsTheApplicationScreenThatItCloses)
{
    controller->openInAppApplicationViewController = ZulixOpenInAppApplicationViewController::create();
    QoroAdManager::sharedInstance().addExtraView(controller->openInAppApplicationViewController);
    const std::weak_ptr<UIViewController> screen = controller->openInAppApplicationViewController;
    platform.transcript.clear();

    controller->closeInAppApplication();

    EXPECT_EQ(platform.transcript, Texts{"super do=closeInAppApplication"});
    EXPECT_TRUE(screen.expired());
}

TEST_F(PhoneGapTest, ItsNoticesOnlyWriteTheirTraceLine)
{
    platform.transcript.clear();

    controller->updateStatusbar();
    controller->qoroPresent();
    controller->qoroLeaveApplication();
    controller->sendImpression();
    controller->stopUpdateTimer();
    controller->MRAIDClose();

    EXPECT_EQ(platform.transcript,
              (Texts{"super do=updateStatusbar", "super do=qoroPresent", "super do=qoroLeaveApplication",
                     "super do=sendImpression", "super do=stopUpdateTimer", "super do=MRAIDClose"}));
}

TEST_F(PhoneGapTest, PassesACalendarEventToTheCalendar)
{
    platform.transcript.clear();

    controller->MRAIDCreateCalendarEvent(
        NSDictionary{{"summary", "Party"}, {"start", "2027-03-24T20:00Z"}, {"end", "2027-03-24T22:00Z"}});

    ASSERT_EQ(platform.calendar_events.size(), 1U);
    const CalendarEvent& event = platform.calendar_events[0];
    EXPECT_EQ(event.title, "Party");
    EXPECT_EQ(event.clock.offset, 0);
    EXPECT_EQ(event.end.value_or(0) - event.start, 2 * 3600);
    EXPECT_EQ(platform.transcript,
              (Texts{"super do=createCalendarEvent event=summary:Party,start:2027-03-24T20:00Z,end:2027-03-24T22:00Z",
                     "kit do=calendar.add"}));
}

TEST_F(PhoneGapTest, TheCalendarReceivesNoInvalidEvent)
{
    platform.transcript.clear();

    controller->MRAIDCreateCalendarEvent("party");

    EXPECT_TRUE(platform.calendar_events.empty());
    EXPECT_EQ(platform.transcript, (Texts{"super do=createCalendarEvent event=party",
                                          "kit do=calendar.refused why=the event is \"party\": expected a record"}));
}

TEST_F(PhoneGapTest, ARefusalByTheCalendarIsReported)
{
    platform.calendar_answer = "no room";
    const NSDictionary party{{"summary", "Party"}, {"start", "2027-03-24"}};
    platform.transcript.clear();

    controller->MRAIDCreateCalendarEvent(party);
    platform.has_calendar = false;
    controller->MRAIDCreateCalendarEvent(party);

    EXPECT_EQ(platform.calendar_events.size(), 1U) << "a device without a calendar is not asked";
    EXPECT_EQ(platform.transcript, (Texts{"super do=createCalendarEvent event=summary:Party,start:2027-03-24",
                                          "kit do=calendar.refused why=no room",
                                          "super do=createCalendarEvent event=summary:Party,start:2027-03-24",
                                          "kit do=calendar.refused why=this device has no calendar"}));
}

} // namespace
} // namespace qoro
