#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// An open ad whose page is below the video, at (0, 254.9375, 375, 523.0625).
class MraidTest : public testing::Test
{
protected:
    explicit MraidTest(World world = AdSession::manual_world()) : session(std::move(world))
    {
        session.ad().strVideoUrl = "http://ad/v.mp4";
        session.ad().fVideoWidth = 1280;
        session.ad().fVideoHeight = 720;
        session.ad().portraitModeType = VIDEO_AND_WEBVIEW;
        session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
        session.ad().portraitVideoPos = TOP;
        session.ad().strBackgroundColor = "4279704105";
        session.open();
        session.plays();
        session.forget();
    }

    std::string refusal(const std::string& command, const NSArray& arguments = {})
    {
        return session.script_says(command, arguments).error.text();
    }
    /// The page requests its initial state and receives it.
    void page_asks()
    {
        session.script_says("mraid.load", {"id"});
        session.forget();
    }
    void touch_page() { session.touch(187, 500); }

    static constexpr const char* NoTouch = "this needs a new touch of the page, not older than a second";
    AdSession session;
};

TEST_F(MraidTest, NothingIsSentBeforeThePageRegisters)
{
    session.set_volume(0.2F);
    session.rotate(3);
    session.script_says("changeOrientation", {"landscape"});
    session.let_pass(1);

    EXPECT_THAT(session.lines("mraid"), IsEmpty());
}

TEST_F(MraidTest, ARegisteringPageReceivesAllFacts)
{
    session.script_says("mraid.load", {"id"});

    EXPECT_THAT(session.lines("mraid"),
                ElementsAre("load", R"(tell {"supports":{"sms":false,"tel":true,"calendar":true,"storePicture":false,)"
                                    R"("inlineVideo":true,"vpaid":false,"location":false},)"
                                    R"("orientation":{"orientation":"portrait","locked":true},)"
                                    R"("screen":{"width":375,"height":812},)"
                                    R"("position":{"x":0,"y":254.9375,"width":375,"height":523.0625},)"
                                    R"("exposure":{"exposedPercentage":100,)"
                                    R"("visibleRectangle":{"x":0,"y":0,"width":375,"height":523.0625}},)"
                                    R"("viewable":true,"volume":60,"state":"default"})"));
}

TEST_F(MraidTest, APageThatRegistersAgainReceivesAllFactsAgain)
{
    session.script_says("mraid.load", {"first"});
    session.forget();

    session.script_says("mraid.load", {"second"});

    EXPECT_EQ(session.lines("mraid").size(), 2U);
    EXPECT_THAT(session.lines("mraid")[1], testing::HasSubstr(R"("supports")"));
}

TEST_F(MraidTest, AVideoOverThePageHidesItAtTheMomentOfTheTurn)
{
    page_asks();

    session.script_says("changeOrientation", {"landscape"});
    session.let_pass(0);

    EXPECT_THAT(session.lines("mraid"),
                ElementsAre(R"(tell {"orientation":{"orientation":"landscape","locked":true},)"
                            R"("screen":{"width":812,"height":375},)"
                            R"("position":{"x":44,"y":0,"width":812,"height":375},)"
                            R"("exposure":{"exposedPercentage":0,"visibleRectangle":null},"viewable":false})"));
}

TEST_F(MraidTest, ALayoutThatChangesNothingSendsNothing)
{
    page_asks();

    session.script_says("changeOrientation", {"portrait"});
    session.let_pass(1);

    EXPECT_THAT(session.lines("mraid"), IsEmpty());
}

TEST_F(MraidTest, TheVolumeIsSentInPercent)
{
    page_asks();

    session.set_volume(0.25F);

    EXPECT_THAT(session.lines("mraid"), ElementsAre(R"(tell {"volume":25})"));
}

TEST_F(MraidTest, NothingIsExposedWhileTheViewerIsAway)
{
    page_asks();

    session.leave_app();
    EXPECT_THAT(session.lines("mraid"),
                ElementsAre(R"(tell {"exposure":{"exposedPercentage":0,"visibleRectangle":null},"viewable":false})"));
    session.forget();
    session.return_to_app();

    EXPECT_THAT(session.lines("mraid"),
                ElementsAre(R"(tell {"exposure":{"exposedPercentage":100,)"
                            R"("visibleRectangle":{"x":0,"y":0,"width":375,"height":523.0625}},"viewable":true})"));
}

TEST_F(MraidTest, ClosingHidesTheAdAndIsTheLastFactSent)
{
    page_asks();

    EXPECT_EQ(refusal("mraid.close"), "");
    session.let_pass(1);
    session.set_volume(0.1F);

    EXPECT_THAT(session.lines("super"), Contains("MRAIDClose"));
    EXPECT_THAT(session.lines("mraid"),
                ElementsAre("close", R"(tell {"exposure":{"exposedPercentage":0,"visibleRectangle":null},)"
                                     R"("viewable":false,"state":"hidden"})"));
}

TEST_F(MraidTest, UnloadingClosesToo)
{
    session.script_says("mraid.unload");

    EXPECT_FALSE(session->dicEventListener);
}

TEST_F(MraidTest, AClosedAdRefusesEverything)
{
    session.script_says("mraid.close");
    session.forget();

    EXPECT_EQ(refusal("mraid.useCustomClose", {true}), "the ad has closed");
    EXPECT_THAT(session.lines("mraid"), ElementsAre("refused useCustomClose [true] the ad has closed 1"));
}

TEST_F(MraidTest, CustomCloseIsForwardedToTheController)
{
    EXPECT_EQ(refusal("mraid.useCustomClose", {true}), "");

    EXPECT_FALSE(session->btnClose.superview());
}

TEST_F(MraidTest, AForcedOrientationChangesTheLayout)
{
    EXPECT_EQ(refusal("mraid.setOrientationProperties", {NSDictionary{{"forceOrientation", "landscape"}}}), "");

    EXPECT_THAT(session.events(), Contains(R"(video_orientation {"e":{"orientation":"landscape"}})"));
}

TEST_F(MraidTest, AnOrientationThatTheDeviceDecidesChangesNothing)
{
    EXPECT_EQ(refusal("mraid.setOrientationProperties", {NSDictionary{{"forceOrientation", "none"}}}), "");

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST_F(MraidTest, ResizingAndStoringPicturesAreRefused)
{
    touch_page();

    EXPECT_EQ(refusal("mraid.expand", {nullptr}), "an interstitial neither expands nor resizes");
    EXPECT_EQ(refusal("mraid.resize"), "an interstitial neither expands nor resizes");
    EXPECT_EQ(refusal("mraid.storePicture", {"https://p/"}), "pictures are not stored");
}

TEST_F(MraidTest, AnInvalidRequestIsRefused)
{
    EXPECT_EQ(refusal("mraid.dance"), "unknown command mraid.dance");
    EXPECT_EQ(refusal("mraid."), "unknown command mraid.");
    EXPECT_EQ(refusal("mraid.open"), "mraid.open takes 1 arguments, not 0");
}

// ---------------------------------------------------------------------------------------------------- with a touch

TEST_F(MraidTest, AnAddressOpensOutsideTheAppAndPausesTheVideo)
{
    touch_page();
    session.forget();

    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), "");

    EXPECT_THAT(session.transcript(), ElementsAre("mraid open https://shop/", "openURL https://shop/", "player pause",
                                                  "super qoroPresent", "super qoroLeaveApplication"));
}

TEST_F(MraidTest, CallsAndVideosOpenLikeAddresses)
{
    touch_page();
    EXPECT_EQ(refusal("mraid.open", {"TEL:+4930"}), "nothing here opens TEL:+4930"); // the device can open "tel:" only
    touch_page();
    EXPECT_EQ(refusal("mraid.open", {"tel:+4930"}), "");
    touch_page();
    EXPECT_EQ(refusal("mraid.playVideo", {"https://v/"}), "");
    EXPECT_THAT(session.lines("openURL"), ElementsAre("tel:+4930", "https://v/"));
}

TEST_F(MraidTest, WithoutATouchNothingOpens)
{
    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), NoTouch);
    EXPECT_EQ(refusal("mraid.open", {"tel:1"}), NoTouch);
    EXPECT_EQ(refusal("mraid.playVideo", {"https://v/"}), NoTouch);
    EXPECT_EQ(refusal("mraid.createCalendarEvent", {NSDictionary{{"description", "party"}}}), NoTouch);

    EXPECT_THAT(session.lines("openURL"), IsEmpty());
    EXPECT_THAT(session.lines("super"), IsEmpty());
    EXPECT_EQ(session.lines("mraid")[0], "refused open [\"https://shop/\"] " + std::string(NoTouch) + " 1");
}

TEST_F(MraidTest, ATouchLastsASecond)
{
    touch_page();
    session.let_pass(1);
    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), "");

    touch_page();
    session.let_pass(1.001);
    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), NoTouch);
}

TEST_F(MraidTest, ATouchAllowsOneRequest)
{
    touch_page();
    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), "");

    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), NoTouch);
}

TEST_F(MraidTest, ARefusedRequestDoesNotUseTheTouch)
{
    touch_page();
    EXPECT_NE(refusal("mraid.open", {"myapp://offer"}), "");
    EXPECT_NE(refusal("mraid.playVideo", {"http://127.0.0.1/"}), "");

    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), "") << "what a page falls back to";
    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), NoTouch);
}

TEST_F(MraidTest, AnUnparsableHostIsRefused)
{
    for (const char* address :
         {"http://%6cocalhost/", "http://\xEF\xBD\x8Cocalhost/", "http://127\xE3\x80\x82\x30.0.1/"}) {
        touch_page();
        EXPECT_EQ(refusal("mraid.open", {address}), "this machine and private networks are out of reach") << address;
    }
    EXPECT_THAT(session.lines("openURL"), IsEmpty());
}

TEST_F(MraidTest, ATouchOfTheVideoDoesNotCountForThePage)
{
    session.touch(187, 150);

    EXPECT_EQ(refusal("mraid.open", {"https://shop/"}), NoTouch);
}

TEST_F(MraidTest, ACalendarEventIsPassedToTheKit)
{
    touch_page();

    session.forget();

    EXPECT_EQ(
        refusal("mraid.createCalendarEvent", {NSDictionary{{"description", "party"}, {"start", "2027-03-24T20:00Z"}}}),
        "");

    EXPECT_THAT(session.transcript(),
                ElementsAre("mraid createCalendarEvent",
                            R"(super createCalendarEvent {"description":"party","start":"2027-03-24T20:00Z"})",
                            "kit calendar.add"));
}

TEST_F(MraidTest, AnInvalidCalendarEventIsAnErrorOfThePage)
{
    session.script_says("mraid.load", {"id"});
    touch_page();
    session.forget();

    EXPECT_EQ(refusal("mraid.createCalendarEvent", {"party"}), "");

    EXPECT_THAT(session.transcript(),
                ElementsAre("mraid createCalendarEvent", R"(super createCalendarEvent "party")",
                            "kit calendar.refused the event is \"party\": expected a record",
                            R"(mraid tell {"error":{"message":"the event is \"party\": expected a record",)"
                            R"("action":"createCalendarEvent"}})"));
}

TEST_F(MraidTest, AnInvalidCalendarEventOfAnActionButtonIsAnErrorOfThePageToo)
{
    page_asks();

    session->checkLaunchType({{"action", "cre_cal_event"},
                              {"data", NSDictionary{{"e", NSDictionary{{"description", "Sale"}, {"start", "soon"}}}}}});

    EXPECT_THAT(session.lines("kit"),
                ElementsAre("calendar.refused start is \"soon\": expected a date that there is, such as 2027-03-24 or "
                            "2027-03-24T09:00-08:00"));
    EXPECT_THAT(session.lines("mraid"),
                ElementsAre(R"(tell {"error":{"message":"start is \"soon\": expected a date that there is, such as )"
                            R"(2027-03-24 or 2027-03-24T09:00-08:00","action":"createCalendarEvent"}})"));
}

TEST_F(MraidTest, AnUnregisteredPageReceivesNoCalendarError)
{
    touch_page();
    session.forget();

    EXPECT_EQ(refusal("mraid.createCalendarEvent", {"party"}), "");

    EXPECT_THAT(session.lines("mraid"), ElementsAre("createCalendarEvent"));
}

class WithoutCalendar : public MraidTest
{
protected:
    WithoutCalendar() : MraidTest(world()) {}

private:
    static World world()
    {
        World made = AdSession::manual_world();
        made.device.calendar = false;
        return made;
    }
};

TEST_F(WithoutCalendar, ADeviceSupportsNoEventsAndRefusesThem)
{
    session.script_says("mraid.load", {"id"});
    EXPECT_THAT(session.lines("mraid")[1], testing::HasSubstr(R"("calendar":false)"));
    touch_page();
    session.forget();

    session.script_says("mraid.createCalendarEvent",
                        {NSDictionary{{"description", "party"}, {"start", "2027-03-24T20:00Z"}}});

    EXPECT_THAT(session.lines("kit"), ElementsAre("calendar.refused this device has no calendar"));
    EXPECT_THAT(session.lines("mraid"), Contains(R"(tell {"error":{"message":"this device has no calendar",)"
                                                 R"("action":"createCalendarEvent"}})"));
}

TEST_F(MraidTest, OnlyTheWebAndTheTelephoneOpen)
{
    for (const char* address : {"file:///etc/passwd", "javascript:alert(1)", "intent:x", "ssh://host/", "shop", ""}) {
        touch_page();
        EXPECT_EQ(refusal("mraid.open", {address}), "an address begins with http:, https:, tel: or sms:") << address;
    }
    touch_page();
    EXPECT_EQ(refusal("mraid.playVideo", {"tel:1"}), "a video's address begins with http: or https:");
    EXPECT_THAT(session.lines("openURL"), IsEmpty());
}

TEST_F(MraidTest, ARemotePageOpensNothingOnThisMachine)
{
    session->strBaseUrl = "https://ads.example/page.html";
    touch_page();
    EXPECT_EQ(refusal("mraid.open", {"http://127.0.0.1:8080/"}), "this machine and private networks are out of reach");

    session->strBaseUrl = "http://127.0.0.1:4000/page.html";
    touch_page();
    EXPECT_EQ(refusal("mraid.open", {"http://127.0.0.1:8080/"}), "");
}

TEST_F(MraidTest, ADictionaryThatNamesThisMachineIsRefusedFromARemotePage)
{
    const NSDictionary file{{"v_u", "file:///home/viewer/film.mp4"}};
    const NSDictionary tracker{{"v_u", "http://ads.example/next.mp4"},
                               {"btns", NSArray{NSDictionary{{"data", NSDictionary{{"u", "http://localhost/x"}}}}}}};
    EXPECT_EQ(refusal("playNextVideo", {file}),
              "this machine and private networks are out of reach: file:///home/viewer/film.mp4");
    EXPECT_EQ(refusal("playNextVideo", {tracker}),
              "this machine and private networks are out of reach: http://localhost/x");
    EXPECT_THAT(session.lines("player"), Not(Contains(HasSubstr("film.mp4"))));

    session->strBaseUrl = "http://127.0.0.1:4000/page.html";
    EXPECT_EQ(refusal("playNextVideo", {tracker}), "");
}

TEST_F(MraidTest, ANextVideoReachesNoInnerAddressWhateverItIsUsedFor)
{
    session->strCookieGuid = "localhost";
    session->iSeqNo = 1;
    session.ad().strVideoUrl = "http://ads.example/first.mp4";
    const auto next = [](const char* key, const Value& value) { return NSDictionary{{key, value}}; };
    const auto button = [](const char* key, const Value& value) {
        return NSDictionary{{"btns", NSArray{NSDictionary{{key, value}}}}};
    };
    const auto target = [&](const char* address) { return button("data", NSDictionary{{"u", address}}); };
    for (const NSDictionary& record :
         {next("v_u", "http://localhost/next.mp4"), next("v_u", "http://192.168.1.1/next.mp4"),
          next("v_u", "http://{Zulix-Guid}.ads.example/next.mp4"), next("v_u", "FILE:/home/viewer/film.mp4"),
          next("v_tracking", NSDictionary{{"complete", NSArray{"c", "http://10.0.0.1/track"}}}),
          next("tracking_u", "http://[::1]/track"), next("tracking_u", "file:///etc/passwd"),
          next("replay_tracking_urls", NSArray{"http://2130706433/track"}), target("http://127.1/"),
          target("file:///etc/passwd"), button("app_u", "http://localhost:8080/"),
          button("btn_tracking_urls", NSArray{"http://169.254.169.254/latest"})})
        EXPECT_NE(refusal("playNextVideo", {record}), "") << as_text(record);
    for (const char* tracker :
         {"http://127.0.0.{Zulix-Seq}/track", "http://{Zulix-Guid}/track", "http://0x7f.{Zulix-Seq}",
          "http://{CurrentTime}.1/track", "http://127.{TotalTime}.example/", "http://{host}/",
          "http://{Zulix-{TotalTime}Seq}/track", "{scheme}://localhost/"})
        EXPECT_NE(refusal("playNextVideo", {next("tracking_u", tracker)}), "") << tracker;
    session.let_pass(10);

    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_THAT(session.lines("request"), IsEmpty());
    EXPECT_EQ(session.ad().strVideoUrl, NSString("http://ads.example/first.mp4"));
}

TEST_F(MraidTest, ANextVideoMaySayWhatIsNoAddress)
{
    const NSDictionary call{{"btn_text", "Only {2} left // now"},
                            {"data", NSDictionary{{"tel", "tel:+1 {555} // 0100"}, {"b", "http://localhost/"}}}};

    EXPECT_EQ(refusal("playNextVideo", {NSDictionary{{"v_u", "http://ads.example/next.mp4"},
                                                     {"btns", NSArray{call}},
                                                     {"note", "http://localhost/"}}}),
              "");

    EXPECT_EQ(session->btnActionOne.title(), NSString("Only {2} left // now"));
}

TEST_F(MraidTest, ATrackerMayHaveAMacroInItsHost)
{
    session->strCookieGuid = "g-1";
    session->iSeqNo = 7;

    EXPECT_EQ(
        refusal("playNextVideo",
                {NSDictionary{{"v_u", "http://ads.example/next.mp4"},
                              {"v_tracking", NSDictionary{{"start", NSArray{"http://{Zulix-Guid}.t.example/{TotalTime}",
                                                                            "http://127.0.0.{Zulix-Seq}.example"}}}}}}),
        "");
    session.plays(20);
    session.let_pass(1);

    EXPECT_THAT(session.fetched(), ElementsAre("http://g-1.t.example/20.000000", "http://127.0.0.7.example"));
}

TEST_F(MraidTest, ACommandThatUsesNoAddressMayNameOne)
{
    const ScriptAnswer can_play = session.script_says("checkCanPlayNextVideo", {"http://localhost/next.mp4"});

    EXPECT_FALSE(can_play.error) << can_play.error.text();
    EXPECT_EQ(can_play.value, Value(true));
    EXPECT_EQ(refusal("addEventListener", {"video_play", "http://localhost/"}), "");
}

TEST_F(MraidTest, ListenersAreBoundedInNumberAndInTheLengthOfTheirIds)
{
    EXPECT_EQ(refusal("addEventListener", {"video_play", std::string(129, 'x')}),
              "a listener's id is a number, or a text of at most 128 bytes");
    EXPECT_EQ(refusal("addEventListener", {"video_play", "a", NSArray{"b"}}),
              "a listener's id is a number, or a text of at most 128 bytes");
    for (int n = 0; n < 256; ++n)
        ASSERT_EQ(refusal("addEventListener", {"video_play", n}), "");
    EXPECT_EQ(refusal("addEventListener", {"video_pause", 256}), "a page has at most 256 listeners");
}

TEST_F(MraidTest, ALongRefusedArgumentIsOmittedFromTheTrace)
{
    refusal("mraid.open", {std::string(60'000, 'x'), "short"});
    EXPECT_EQ(session.lines("mraid")[0], "refused open [\"(too long)\"] " + std::string(NoTouch) + " 1");
}

// ------------------------------------------------------------------------------------------------------------- floods

TEST_F(MraidTest, AFloodOfMessagesIsRefused)
{
    for (int n = 0; n < 300; ++n)
        ASSERT_EQ(refusal("getVideoIsMute"), "");
    EXPECT_EQ(refusal("getVideoIsMute"), "too many messages");
    EXPECT_EQ(refusal("mraid.close"), "too many messages");
    EXPECT_THAT(session.lines("web"), ElementsAre("refused message too many 1", "refused message too many 1"));

    session.let_pass(0.1);
    for (int n = 0; n < 10; ++n)
        EXPECT_EQ(refusal("getVideoIsMute"), "");
    EXPECT_EQ(refusal("getVideoIsMute"), "too many messages");
    session.let_pass(60);
    for (int n = 0; n < 300; ++n)
        ASSERT_EQ(refusal("getVideoIsMute"), "");
    EXPECT_EQ(refusal("getVideoIsMute"), "too many messages");
}

TEST_F(MraidTest, AFloodDoesNotFloodTheTrace)
{
    for (int n = 0; n < 450; ++n)
        session.script_says("getVideoIsMute");
    EXPECT_EQ(session.lines("web").size(), 100U);
    session.forget();

    session.let_pass(1);
    for (int n = 0; n < 101; ++n)
        session.script_says("getVideoIsMute");

    EXPECT_THAT(session.lines("web"), ElementsAre("refused message too many 51"));
}

} // namespace
} // namespace qoro
