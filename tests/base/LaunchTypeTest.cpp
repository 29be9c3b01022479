#include "tests/support/AdSession.h"
#include "tests/support/AtEvent.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// An open ad; its opening is not part of the transcript.
struct OpenAd : AdSession {
    explicit OpenAd(World world = manual_world()) : AdSession(std::move(world))
    {
        open();
        forget();
    }
};

World without_calls()
{
    World world = AdSession::manual_world();
    world.device.can_open = {"http:"};
    return world;
}

// ----------------------------------------------------------------------------------------------------- before dispatch

TEST(LaunchType, WithoutAButtonDoesNothing)
{
    OpenAd session;

    session->checkLaunchType(nullptr);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(LaunchType, WithoutDataOnlyItsTrackersAreSent)
{
    OpenAd session;

    session->checkLaunchType({{"btn_tracking_urls", NSArray::of_strings({"http://t/1", "http://t/2"})},
                              {"action", "place_call"},
                              {"app_u", "app://x"}});

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/1 tracking", "request http://t/2 tracking"));
    EXPECT_FALSE(session->getBDoButtonAction());
}

TEST(LaunchType, TrackersGivenAsATextAreIgnored)
{
    OpenAd session;

    session->checkLaunchType({{"btn_tracking_urls", "http://t/1"}});

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(LaunchType, TheTrackersComeFirst)
{
    OpenAd session;

    session->checkLaunchType(
        {{"btn_tracking_urls", NSArray::of_strings({"http://t/1"})}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/1 tracking", "openURL http://l/", "player pause",
                                                  "super qoroPresent", "super qoroLeaveApplication"));
}

TEST(LaunchType, WithDataHidesTheBackground)
{
    OpenAd session;

    session->checkLaunchType({{"data", NSDictionary::dictionary()}});

    EXPECT_TRUE(session->viewBackground.isHidden());
    EXPECT_TRUE(session->getBDoButtonAction());
    EXPECT_THAT(session.transcript(), IsEmpty());
}

// --------------------------------------------------------------------------------------------------------- phone calls

TEST(PlaceCall, OpensTheFormattedNumberAndNothingElse)
{
    OpenAd session;

    session->checkLaunchType({{"action", "place_call"},
                              {"app_u", "app://x"},
                              {"data", NSDictionary{{"tel", "+49 (30) 123"}, {"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(),
                ElementsAre("openURL tel:+4930123", "player pause", "super qoroPresent", "super qoroLeaveApplication"));
    EXPECT_TRUE(session->bGoOutApp);
    EXPECT_TRUE(session->getBDoButtonAction());
}

TEST(PlaceCall, OnADeviceWithoutCallsOnlySendsItsTrackersAndHidesTheBackground)
{
    OpenAd session(without_calls());

    session->checkLaunchType({{"btn_tracking_urls", NSArray::of_strings({"http://t/1"})},
                              {"action", "place_call"},
                              {"app_u", "app://x"},
                              {"data", NSDictionary{{"tel", "123"}, {"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/1 tracking"));
    EXPECT_TRUE(session->viewBackground.isHidden());
    EXPECT_FALSE(session->getBDoButtonAction());
    EXPECT_FALSE(session->bGoOutApp);
}

// ------------------------------------------------------------------------------------------------------- text messages

TEST(SendSms, ComposesTheMessage)
{
    OpenAd session;

    session->checkLaunchType({{"action", "send_sms"}, {"data", NSDictionary{{"tel", "0 30-12"}, {"b", "Hi%20there"}}}});

    EXPECT_THAT(session.transcript(), ElementsAre("player pause", "kit application.create", "kit addExtraView",
                                                  "kit sendSms tel:03012 Hi there"));
    EXPECT_TRUE(session->getBDoButtonAction());
    EXPECT_TRUE(session->getBIsOpenInAppApplication());
}

TEST(SendSms, WithAnAddressOpensItToo)
{
    OpenAd session;

    session->checkLaunchType({{"action", "send_sms"}, {"data", NSDictionary{{"tel", "1"}, {"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(),
                ElementsAre("player pause", "kit application.create", "kit addExtraView", "kit sendSms tel:1 null",
                            "openURL http://l/", "player pause", "super qoroPresent", "super qoroLeaveApplication"));
}

TEST(SendSms, WithAnAddressForTheInAppBrowserOpensItThere)
{
    OpenAd session;

    session->checkLaunchType(
        {{"action", "send_sms"}, {"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_TRUE(session->openInAppApplicationViewController);
    EXPECT_TRUE(session->qoroInAppWebViewController);
    EXPECT_THAT(session.lines("openURL"), IsEmpty());
}

TEST(SendSms, WithAnAppsAddressOpensItTooAndEndsTheClickThrough)
{
    OpenAd session;

    session->checkLaunchType({{"action", "send_sms"},
                              {"launch_type", "inapp"},
                              {"app_u", "app://x"},
                              {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_TRUE(session->openInAppApplicationViewController);
    EXPECT_FALSE(session->qoroInAppWebViewController);
    EXPECT_THAT(session.lines("openURL"), ElementsAre("app://x"));
    EXPECT_FALSE(session->getBDoButtonAction());
}

TEST(SendSms, ASecondOneEndsTheFirstOnesClickThroughAndItsOwn)
{
    OpenAd session;
    const NSDictionary message{{"action", "send_sms"}, {"data", NSDictionary{{"tel", "1"}}}};
    session->checkLaunchType(message);
    session.forget();

    session->checkLaunchType(message);

    EXPECT_THAT(session.lines("kit"), ElementsAre("application.create", "addExtraView", "sendSms tel:1 null"));
    EXPECT_EQ(session.count_of("super closeInAppApplication"), 1U);
    EXPECT_FALSE(session->getBDoButtonAction());
}

// -------------------------------------------------------------------------------------------------- store and calendar

TEST(OpenStore, ShowsTheItem)
{
    OpenAd session;

    session->checkLaunchType(
        {{"action", "open_store"}, {"app_u", "store://x"}, {"id", "42"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(), ElementsAre("player pause", "kit application.create", "kit addExtraView",
                                                  "kit openStore store://x 42"));
    EXPECT_TRUE(session->getBDoButtonAction());
    EXPECT_FALSE(session->getBIsOpenInAppApplication());
}

TEST(OpenStore, TakesTheItemAsANumberTooAndNoAddress)
{
    OpenAd session;

    session->checkLaunchType({{"action", "open_store"}, {"id", 42}, {"data", NSDictionary::dictionary()}});

    EXPECT_EQ(session.count_of("kit openStore null 42"), 1U);
}

TEST(OpenStore, ShowsAnItemAboveThirtyTwoBits)
{
    OpenAd session;
    const NSDictionary data = NSDictionary::dictionary();

    session->checkLaunchType({{"action", "open_store"}, {"id", "6443914720"}, {"data", data}});
    session->checkLaunchType({{"action", "open_store"}, {"id", std::int64_t{2'147'483'648}}, {"data", data}});
    session->checkLaunchType({{"action", "open_store"}, {"id", 6443914721.0}, {"data", data}});

    EXPECT_EQ(session.count_of("kit openStore null 6443914720"), 1U);
    EXPECT_EQ(session.count_of("kit openStore null 6443914721"), 1U);
    EXPECT_EQ(session.count_of("kit openStore null 2147483648"), 1U);
}

TEST(CalendarEvent, IsPassedOnAndDoneAtOnce)
{
    OpenAd session;

    session->checkLaunchType(
        {{"action", "cre_cal_event"},
         {"app_u", "app://x"},
         {"data", NSDictionary{{"e", NSDictionary{{"description", "Sale"}, {"start", "2027-03-24"}}}}}});

    EXPECT_THAT(
        session.transcript(),
        ElementsAre(R"(super createCalendarEvent {"description":"Sale","start":"2027-03-24"})", "kit calendar.add"));
    EXPECT_FALSE(session->getBDoButtonAction());
}

// ----------------------------------------------------------------------------------------------------- leaving the app

TEST(OutOfApp, TheAppsAddressWinsOverThePages)
{
    OpenAd session;

    session->checkLaunchType(
        {{"launch_type", "inapp"}, {"app_u", "app://x"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(),
                ElementsAre("openURL app://x", "player pause", "super qoroPresent", "super qoroLeaveApplication"));
    EXPECT_FALSE(session->getBDoButtonAction());
    EXPECT_TRUE(session->bGoOutApp);
}

TEST(OutOfApp, AnEmptyAppAddressOpensNothingButStillCountsAsLeaving)
{
    OpenAd session;

    session->checkLaunchType({{"app_u", ""}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_THAT(session.transcript(), ElementsAre("player pause", "super qoroPresent", "super qoroLeaveApplication"));
}

TEST(OutOfApp, EveryLaunchTypeButTheInAppBrowserIsTheSameToTheSystem)
{
    const Value launch_types[] = {nullptr, "app", "browser", "Inapp", ""};
    for (const Value& launch_type : launch_types) {
        SCOPED_TRACE(as_text(launch_type));
        OpenAd session;

        session->checkLaunchType({{"launch_type", launch_type}, {"data", NSDictionary{{"u", "http://l/"}}}});

        EXPECT_THAT(session.transcript(), ElementsAre("openURL http://l/", "player pause", "super qoroPresent",
                                                      "super qoroLeaveApplication"));
        EXPECT_FALSE(session->getBDoButtonAction());
    }
}

TEST(OutOfApp, AnUnknownActionOpensTheAddress)
{
    OpenAd session;

    session->checkLaunchType({{"action", "PLACE_CALL"}, {"data", NSDictionary{{"tel", "1"}, {"u", "http://l/"}}}});

    EXPECT_THAT(session.lines("openURL"), ElementsAre("http://l/"));
}

/// What is reported about the click-through and about leaving the app, for each opened address.
std::vector<std::pair<bool, bool>> said_at_opening(const NSDictionary& button)
{
    OpenAd session;
    std::vector<std::pair<bool, bool>> said;
    const AtEvent looks(session, "openURL",
                        [&] { said.emplace_back(session->getBDoButtonAction(), session->bGoOutApp); });
    session->checkLaunchType(button);
    return said;
}

TEST(OutOfApp, TheClickThroughHasEndedWhenAnAddressIsOpenedButNotWhenACallIsPlaced)
{
    using testing::Pair;
    EXPECT_THAT(said_at_opening({{"app_u", "app://x"}, {"data", NSDictionary::dictionary()}}),
                ElementsAre(Pair(false, false)));
    EXPECT_THAT(said_at_opening({{"data", NSDictionary{{"u", "http://l/"}}}}), ElementsAre(Pair(false, false)));
    EXPECT_THAT(said_at_opening({{"action", "place_call"}, {"data", NSDictionary{{"tel", "1"}}}}),
                ElementsAre(Pair(true, false)));
}

TEST(OutOfApp, IsRememberedBeforeTheVideoIsPaused)
{
    OpenAd session;
    bool out_at_pause = false;
    const AtEvent looks(session, "player", [&] { out_at_pause = session->bGoOutApp; });

    session->doOutAppNotify();

    EXPECT_TRUE(out_at_pause);
}

TEST(OutOfApp, WithoutAnAddressNothingHappensAndTheClickThroughStaysOpen)
{
    OpenAd session;

    session->checkLaunchType({{"data", NSDictionary{{"u", ""}}}});
    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", ""}}}});
    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary::dictionary()}});

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_TRUE(session->getBDoButtonAction());
}

TEST(OutOfApp, AnEmptyAddressIsNotOpened)
{
    OpenAd session;

    session->openOutAppAction("", true);
    session->openOutAppAction(nullptr, false);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(OutOfApp, TheUserIsBackWhenTheAdAppearsAgain)
{
    OpenAd session;
    session->doOutAppNotify();

    session->viewDidAppear(false);

    EXPECT_FALSE(session->bGoOutApp);
}

// ------------------------------------------------------------------------------------------------------ in-app browser

TEST(InAppBrowser, IsConfiguredThenOpenedThenPresented)
{
    OpenAd session;

    session->checkLaunchType({{"launch_type", "inapp"},
                              {"data", NSDictionary{{"u", "http://l/"},
                                                    {"custom_close", true},
                                                    {"show_nav_bar", "1"},
                                                    {"show_prog_bar", 1},
                                                    {"bk_c", 4278255360.0}}}});

    EXPECT_THAT(session.transcript(),
                ElementsAre("kit browser.create", "kit addExtraView",
                            "kit browser.expand http://l/ true true true 812 375 [0,1,0,1] 1700000000 7",
                            "player pause", "super qoroPresent"));
    EXPECT_TRUE(session->getBDoButtonAction());
    EXPECT_TRUE(session->qoroInAppWebViewController->bIsUseCustomClose);
    EXPECT_FALSE(session->bGoOutApp);
}

TEST(InAppBrowser, IsDarkGreyWithoutBarsByDefault)
{
    OpenAd session;

    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_EQ(session.count_of("kit browser.expand http://l/ false false false 812 375 "
                               "[0.12549019607843137,0.12549019607843137,0.12549019607843137,0.8] 1700000000 7"),
              1U);
}

TEST(InAppBrowser, ItsSettingsAreIndependent)
{
    struct Setting {
        const char* key;
        const char* flags;
    };
    // Custom close, navigation bar, progress bar.
    constexpr Setting settings[] = {
        {"custom_close", "true false false"},
        {"show_nav_bar", "false true false"},
        {"show_prog_bar", "false false true"},
    };
    for (const auto& [key, flags] : settings) {
        SCOPED_TRACE(key);
        OpenAd session;

        session->openInAppAction({{"u", "http://l/"}, {key, true}, {"bk_c", 4278255360.0}});

        EXPECT_EQ(
            session.count_of("kit browser.expand http://l/ " + std::string(flags) + " 812 375 [0,1,0,1] 1700000000 7"),
            1U);
        EXPECT_EQ(session->qoroInAppWebViewController->bIsUseCustomClose, std::string_view(key) == "custom_close");
    }
}

TEST(InAppBrowser, ReceivesTheHostsRootController)
{
    OpenAd session;

    session->openInAppAction({{"u", "http://l/"}});

    EXPECT_TRUE(session->rootViewController);
    EXPECT_EQ(session->qoroInAppWebViewController->rootViewController, session->rootViewController);
}

TEST(InAppBrowser, IsPresentedInTheHostsWindow)
{
    OpenAd session;

    session->openInAppAction({{"u", "http://l/"}});

    EXPECT_FALSE(session->windowTempWindow);
    EXPECT_TRUE(session->windowDefaultWindow.isKeyWindow());
    EXPECT_TRUE(session->qoroInAppWebViewController->view().superview() == session->windowDefaultWindow);
}

World before_ios8()
{
    World world = AdSession::manual_world();
    world.device.facts.ios8 = false;
    return world;
}

TEST(InAppBrowser, BeforeIOS8StaysWhereItOpened)
{
    OpenAd session(before_ios8());

    session->openInAppAction({{"u", "http://l/"}});

    EXPECT_TRUE(session->windowTempWindow);
    EXPECT_TRUE(session->qoroInAppWebViewController->view().superview() == session->windowTempWindow);
}

TEST(InAppBrowser, BeforeIOS8IsPresentedInTheHostsWindowInALockedUprightHost)
{
    OpenAd session(before_ios8());
    session->bIsLockOneSide = true;

    session->openInAppAction({{"u", "http://l/"}});

    EXPECT_FALSE(session->windowTempWindow);
    EXPECT_TRUE(session->qoroInAppWebViewController->view().superview() == session->windowDefaultWindow);
}

TEST(InAppBrowser, BeforeIOS8StaysWhereItOpenedInALockedHostThatIsNotUpright)
{
    OpenAd session(before_ios8());
    session.turn_status_bar(UIInterfaceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->openInAppAction({{"u", "http://l/"}});

    EXPECT_TRUE(session->windowTempWindow);
    EXPECT_TRUE(session->qoroInAppWebViewController->view().superview() == session->windowTempWindow);
}

TEST(InAppBrowser, WithoutDataDoesNotOpen)
{
    OpenAd session;

    session->openInAppAction(nullptr);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(InAppBrowser, OnALandscapeDeviceTakesTheVideoOffTheScreen)
{
    for (const int side : {UIDeviceOrientationLandscapeLeft, UIDeviceOrientationLandscapeRight}) {
        SCOPED_TRACE(side);
        OpenAd session;
        // Retained, since otherwise the window and the video in it would be destroyed.
        const UIWindow window = session->windowTempWindow;
        session.rotate(side);

        session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});

        EXPECT_FALSE(session->qoroMoviePlayer.view().superview());
    }
}

TEST(InAppBrowser, TheOrientationAtTheTapCountsNotTheOneOnceOpen)
{
    OpenAd session;
    const UIWindow window = session->windowTempWindow;
    session.rotate(UIDeviceOrientationLandscapeLeft);
    const AtEvent turns(session, "kit", [&] { session.rotate(UIDeviceOrientationPortrait); });

    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_FALSE(session->qoroMoviePlayer.view().superview());
}

TEST(InAppBrowser, OnAnUprightDeviceLeavesTheVideoInItsWindow)
{
    OpenAd session;
    const UIWindow window = session->windowTempWindow;

    session->checkLaunchType({{"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://l/"}}}});

    EXPECT_TRUE(session->qoroMoviePlayer.view().superview() == window);
}

} // namespace
} // namespace qoro
