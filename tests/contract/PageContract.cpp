#include "tests/contract/PageContract.h"

#include "views/ViewNode.h"

namespace qoro::test
{

namespace
{
/// Seconds to wait for an unexpected further report.
constexpr double Moment = 0.3;
const NSURL Base = NSURL::URLWithString("http://ad.example/creative/");
} // namespace

TEST_P(PageContract, ALoadReportsItsStartAndItsEndOnceEachAsEventsOfTheirOwn)
{
    engine().load_html("<p>hello</p>", Base);
    EXPECT_EQ(reports, Reports{});

    ASSERT_TRUE(until_reports({"start", "finish"}));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"start", "finish"}));
    EXPECT_EQ(engine().current_address().absoluteString(), NSString("http://ad.example/creative/"));
}

TEST_P(PageContract, ANullPageReportsLikeAnyOther)
{
    engine().load_html(nullptr, Base);

    EXPECT_TRUE(until_reports({"start", "finish"}));
}

TEST_P(PageContract, NoAddressIsShownBeforeTheFirstPage)
{
    EXPECT_FALSE(engine().current_address());
}

TEST_P(PageContract, AFurtherPageSuppressesTheEndOfTheUnfinishedOne)
{
    engine().load_html(world().slow_page(), Base);
    ASSERT_TRUE(until_reports({"start"}));

    engine().load_html("<p>second</p>", Base);
    ASSERT_TRUE(until_reports({"start", "start", "finish"}));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"start", "start", "finish"}));
}

TEST_P(PageContract, ADestroyedEngineReportsNothing)
{
    engine().load_html("<p>hello</p>", Base);
    drop();

    let_pass(Moment);

    EXPECT_EQ(reports, Reports{});
}

// ----------------------------------------------------------------------------------------------------------- browser

TEST_P(BrowserContract, AnAddressReportsItsStartAndItsEndAsEventsOfTheirOwnWithoutAskingTheListener)
{
    engine().load_address(found());
    EXPECT_EQ(reports, Reports{});

    ASSERT_TRUE(until_reports({"start", "finish"}));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"start", "finish"}));
    EXPECT_EQ(engine().current_address().absoluteString(), found().absoluteString());
}

TEST_P(BrowserContract, ALoadedPageReportsItsState)
{
    EXPECT_FALSE(engine().page_state().address);
    EXPECT_FALSE(engine().page_state().has_content);

    ASSERT_TRUE(visit(found()));
    const PageState state = engine().page_state();

    EXPECT_EQ(state.address.absoluteString(), found().absoluteString());
    EXPECT_TRUE(state.has_content);
    EXPECT_FALSE(state.loading);
    EXPECT_EQ(state.progress, 1);
    EXPECT_FALSE(state.secure) << "over plain http";
    EXPECT_FALSE(state.can_go_back);
    EXPECT_FALSE(state.can_go_forward);
}

TEST_P(BrowserContract, AnAddressThatDoesNotAnswerFailsOnceAndShowsNothing)
{
    engine().load_address(NSURL::URLWithString(world().address(Address::NobodyThere)));

    ASSERT_TRUE(until_reports({"start", "fail"}));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"start", "fail"}));
    EXPECT_FALSE(engine().page_state().has_content);
    EXPECT_EQ(shown(), world().address(Address::NobodyThere));
}

TEST_P(BrowserContract, ReloadRequestsAFailedPageAgain)
{
    ASSERT_TRUE(visit(NSURL::URLWithString(world().address(Address::NobodyThere))));
    reports.clear();

    engine().reload();

    EXPECT_TRUE(until_reports({"start", "fail"}));
}

TEST_P(BrowserContract, TheHistoryGoesBackAndForward)
{
    ASSERT_TRUE(visit(found()));
    ASSERT_TRUE(visit(other()));
    EXPECT_TRUE(engine().page_state().can_go_back);

    reports.clear();
    engine().go_back();
    ASSERT_TRUE(until_end());
    EXPECT_EQ(shown(), found().absoluteString().text());
    EXPECT_FALSE(engine().page_state().can_go_back);
    EXPECT_TRUE(engine().page_state().can_go_forward);

    reports.clear();
    engine().go_forward();
    ASSERT_TRUE(until_end());
    EXPECT_EQ(shown(), other().absoluteString().text());
}

TEST_P(BrowserContract, ANewAddressClearsTheForwardHistory)
{
    ASSERT_TRUE(visit(found()));
    ASSERT_TRUE(visit(other()));
    reports.clear();
    engine().go_back();
    ASSERT_TRUE(until_end());

    ASSERT_TRUE(visit(other()));

    EXPECT_FALSE(engine().page_state().can_go_forward);
    EXPECT_TRUE(engine().page_state().can_go_back);
}

TEST_P(BrowserContract, WithoutHistoryNothingHappens)
{
    engine().go_back();
    engine().go_forward();
    engine().reload();
    let_pass(Moment);

    EXPECT_EQ(reports, Reports{});
}

TEST_P(BrowserContract, APageCanBeReloaded)
{
    ASSERT_TRUE(visit(found()));
    reports.clear();

    engine().reload();
    ASSERT_TRUE(until_end());

    EXPECT_EQ(shown(), found().absoluteString().text());
    EXPECT_EQ(reports.back(), "finish");
}

TEST_P(BrowserContract, AFurtherAddressSuppressesTheEndOfTheUnfinishedOne)
{
    engine().load_address(NSURL::URLWithString(world().address(Address::Silent)));
    ASSERT_TRUE(until_reports({"start"}));

    engine().load_address(found());
    ASSERT_TRUE(until_reports({"start", "start", "finish"}));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"start", "start", "finish"}));
}

TEST_P(BrowserContract, OnlyAddressesOfTheWebAreLoaded)
{
    engine().load_address(NSURL::fileURLWithPath("/etc/hostname"));
    engine().load_address(NSURL::URLWithString("file:///etc/hostname"));
    engine().load_address(NSURL::URLWithString("tel:123"));
    engine().load_address(NSURL());
    let_pass(Moment);

    EXPECT_EQ(reports, Reports{});
    EXPECT_FALSE(engine().page_state().address);
}

// ----------------------------------------------------------------------------------------------------------- bridge

ScriptContract::ScriptContract()
{
    const auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = world().video().absoluteString();
    ad->strWebViewUrl = world().page_address();
    ad->portraitModeType = VIDEO_AND_WEBVIEW;
    ad->portraitVideoPos = TOP;
    ad->fVideoWidth = 320;
    ad->fVideoHeight = 180;
    ad->strBackgroundColor = "4279704105"; // without one the page is not visible
    platform().set_event_sink(this);
    session_ = std::make_unique<Session>(platform(), world().controls(), HostSetup{}, ad);
    platform().dispatch([&] { session_->open(0); });
    EXPECT_TRUE(world().script_starts(*session_->controller()));
    commands.clear();
}

ScriptContract::~ScriptContract()
{
    platform().set_event_sink(nullptr);
    session_.reset();
}

void ScriptContract::receive(const Event& event)
{
    describe(event, [this](std::string_view what, std::span<const Field> fields) {
        if (what != "player")
            return;
        std::ostringstream line;
        for (const Field& field : fields) {
            line << (line.tellp() > 0 ? " " : "");
            if (const auto* text = std::get_if<std::string_view>(&field.content))
                line << *text;
            else if (const auto* number = std::get_if<double>(&field.content))
                line << *number;
        }
        EXPECT_FALSE(line.str().starts_with("failed")) << line.str();
        commands.push_back(line.str());
    });
}

TEST_P(ScriptContract, EventsReachTheScriptInTheOrderInWhichTheyWereSent)
{
    world().script_listens(ad(), "count");
    world().script_listens(ad(), "end");
    Lines expected;
    for (int n = 0; n < 60; ++n) {
        send("count", {{"n", n}});
        expected.push_back(R"(count {"e":{"n":)" + std::to_string(n) + "}}");
    }
    let_pass(0.02);
    send("end");
    expected.emplace_back("end null");

    ASSERT_TRUE(until_heard(expected.size()));

    EXPECT_EQ(world().script_heard(ad()), expected);
}

TEST_P(ScriptContract, AnEventCarriesItsDataUnharmed)
{
    world().script_listens(ad(), "text");

    send("text", {{"text", "</script>\"\\ü"}, {"number", 12.5}, {"flag", true}, {"nothing", nullptr}});
    ASSERT_TRUE(until_heard(1));

    EXPECT_EQ(world().script_heard(ad()),
              Lines{R"(text {"e":{"text":"</script>\"\\ü","number":12.5,"flag":true,"nothing":null}})"});
}

TEST_P(ScriptContract, EventsWithoutAListenerDoNotReachTheScript)
{
    world().script_listens(ad(), "one");
    world().script_listens(ad(), "other");
    world().script_stops_listening(ad(), "one");

    send("one");
    send("unknown");
    send("other");
    ASSERT_TRUE(until_heard(1));

    EXPECT_EQ(world().script_heard(ad()), Lines{"other null"});
}

TEST_P(ScriptContract, AListenerReceivesTheEventThatItsRegistrationCauses)
{
    world().script_listens(ad(), "video_visibilitychange");

    ASSERT_TRUE(until_heard(1));

    EXPECT_EQ(world().script_heard(ad()), Lines{R"(video_visibilitychange {"e":{"visibility":1}})"});
}

TEST_P(ScriptContract, ACommandIsCarriedOutAndAnswered)
{
    ASSERT_TRUE(until([&] { return ad().qoroMoviePlayer.duration() > 0; }));

    EXPECT_EQ(world().script_says(ad(), R"(["setVideoSeekToTime", 2.5])"), "null");
    EXPECT_EQ(world().script_says(ad(), R"(["getVideoIsMute"])"), "false");
    EXPECT_EQ(world().script_says(ad(), R"(["checkCanPlayNextVideo", "http://ad.example/next.mp4"])"), "true");

    EXPECT_EQ(commands, Lines{"seek 2.5"});
}

TEST_P(ScriptContract, AnInvalidMessageIsRefusedAndHasNoEffect)
{
    for (const char* message :
         {"null", "7", "\"setVideoPlay\"", "[]", "{}", R"({"setVideoPlay": []})", R"({"command": "setVideoPlay"})",
          R"({"command": "setVideoPlay", "args": {}})", R"({"command": ["setVideoPlay"], "args": []})", "[7]", "[null]",
          R"([["setVideoPlay"]])", R"(["setvideoplay"])", R"(["closeAction"])", R"(["setVideoSeekToTime"])"})
        EXPECT_EQ(world().script_says(ad(), message), std::nullopt) << message;

    EXPECT_EQ(commands, Lines{});
}

TEST_P(ScriptContract, CommandsThatNeedATouchAreRefusedWithoutOne)
{
    EXPECT_EQ(
        world().script_says(ad(), R"(["mraid.createCalendarEvent", {"description": "party", "start": "2027-03-24"}])"),
        std::nullopt);

    touch(platform(), {187, 500});

    EXPECT_EQ(
        world().script_says(ad(), R"(["mraid.createCalendarEvent", {"description": "party", "start": "2027-03-24"}])"),
        "null");
    EXPECT_EQ(
        world().script_says(ad(), R"(["mraid.createCalendarEvent", {"description": "party", "start": "2027-03-24"}])"),
        std::nullopt);
}

TEST_P(ScriptContract, ATouchIsForgottenAfterASecond)
{
    touch(platform(), {187, 500});
    let_pass(1.1);

    EXPECT_EQ(
        world().script_says(ad(), R"(["mraid.createCalendarEvent", {"description": "party", "start": "2027-03-24"}])"),
        std::nullopt);
}

} // namespace qoro::test
