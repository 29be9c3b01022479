#include "workbench/explore/Search.h"

#include "formats/InputError.h"
#include "simulator/VirtualLoop.h"
#include "workbench/SessionRecord.h"
#include "workbench/explore/Setup.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

namespace qoro
{
namespace
{

using ::testing::Contains;
using ::testing::HasSubstr;

/// An ad whose close button appears after three seconds, or when nothing is heard of the video for four.
ScenarioText ad_with(const std::string& properties, const std::string& page = "<head></head>")
{
    ScenarioText text(R"({"video": {"duration": 8}, "net": {"http://m/p.html": {}},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", "fVideoWidth": 16,
               "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "bIsAutoStart": true,
               "strBackgroundColor": "4278190080", "iCloseBtnCountdown": 3, "iBufferingSufferTime": 4},
        "steps": [{"open": 0}]})");
    text.set("/net/http:~1~1m~1p.html/body", "\"" + page + "\"");
    ScenarioText added(properties);
    for (const std::string& path : added.children(""))
        text.set("/ad" + path, *added.value(path));
    return text;
}

SearchResult explore(const ScenarioText& ad, const SearchOptions& options)
{
    return search(search_setup(ad, false).run, options);
}

/// Whether a trap was found whose course consists of these moves.
const SearchFinding* trap_by(const SearchResult& result, const std::vector<std::string>& names)
{
    const auto found = std::ranges::find_if(result.findings, [&](const SearchFinding& each) {
        return each.rule == "trap" && each.course.start == 0 && each.course.moves.size() == names.size() &&
               std::ranges::equal(each.course.moves, names, [](const TimedMove& move, const std::string& name) {
                   return move.move.name == name;
               });
    });
    return found == result.findings.end() ? nullptr : &*found;
}

std::string all_findings(const RunSetup& setup, const SearchResult& result)
{
    std::string text = std::to_string(result.sessions) + " sessions, " + std::to_string(result.states) + " states, " +
                       std::to_string(result.merged) + " merged\n";
    for (const SearchFinding& each : result.findings)
        text += each.rule + ": " + each.text + " " + in_words(setup, each.course) + " +" + std::to_string(each.others) +
                "\n";
    for (const std::string& each : result.not_covered)
        text += each + "\n";
    return text;
}

/// The close button of a session that ends as the finding says: whether it could be tapped at the end.
bool close_at_end(const SearchSetup& setup, const SearchFinding& finding)
{
    const Scenario scenario = scenario_of_course(setup, finding.course, finding.until + 20'000'000).scenario();
    return record_session(scenario).sights.back().close;
}

} // namespace

TEST(Search, FindsTheTrapOfACloseButtonAtTheEndOfAVideoThatStalls)
{
    // Without a watchdog, the button appears at the end only, which never comes.
    const auto ad = ad_with(R"({"bIsEndedCloseBtn": true, "iBufferingSufferTime": -1, "iCloseBtnCountdown": -1})");
    const SearchSetup setup = search_setup(ad, false);
    const SearchResult result = search(setup.run, {.depth = 1, .sessions = 2500, .trap_sessions = 1000});
    const SearchFinding* trap = trap_by(result, {"endless stall"});
    ASSERT_TRUE(trap) << all_findings(setup.run, result);
    EXPECT_THAT(trap->text, HasSubstr("can never leave"));
    EXPECT_FALSE(close_at_end(setup, *trap));

    const auto twin = ad_with(R"({"bIsEndedCloseBtn": true})");
    const SearchResult sound = explore(twin, {.depth = 1, .sessions = 600, .trap_sessions = 150});
    EXPECT_FALSE(trap_by(sound, {"endless stall"})) << "the watchdog shows the button";
}

TEST(Search, FindsTheTrapOfAVideoThatTheViewerHasExited)
{
    const SearchSetup setup = search_setup(ad_with("{}"), false);
    const SearchResult result = search(setup.run, {.depth = 1, .sessions = 600, .trap_sessions = 150});
    const SearchFinding* trap = trap_by(result, {R"(finish by "user exited")"});
    ASSERT_TRUE(trap) << all_findings(setup.run, result);
    EXPECT_FALSE(close_at_end(setup, *trap));

    // The page below the band holds the close button.
    const SearchResult sound =
        explore(ad_with(R"({"portraitVideoPos": 2})"), {.depth = 1, .sessions = 600, .trap_sessions = 150});
    EXPECT_FALSE(trap_by(sound, {R"(finish by "user exited")"}));
}

TEST(Search, FindsTheTrapOfATapThatLeavesAClickThroughUnderWay)
{
    // A record with data but without an address: the tap sets _bDoButtonAction, and nothing ever clears it. A call then
    // takes the video with its close button off the screen, and no layout brings it back.
    const auto button = [](const std::string& data) {
        return R"({"arrayButtonsInfo": [{"btn_text": "Buy", "launch_type": "browser", "data": )" + data + "}]}";
    };
    const SearchSetup setup = search_setup(ad_with(button("{}")), false);
    const SearchResult result = search(setup.run, {.depth = 2, .sessions = 2500});
    const SearchFinding* trap = trap_by(result, {"tap btnActionOne", "a call begins"});
    ASSERT_TRUE(trap) << all_findings(setup.run, result);
    EXPECT_FALSE(close_at_end(setup, *trap));

    const SearchResult sound = explore(ad_with(button(R"({"u": "http://shop"})")), {.depth = 2, .sessions = 2500});
    EXPECT_FALSE(trap_by(sound, {"tap btnActionOne", "a call begins"}));
}

TEST(Search, FindsTheTrapOfAPageThatTakesOverClosingAndNeverCloses)
{
    const auto page = [](const std::string& does) {
        return "<head></head><script>qoroPlayer.addEventListener('onclick_closebtn', () => " + does + ")</script>";
    };
    const SearchSetup setup = search_setup(ad_with("{}", page("0")), false);
    const SearchResult result = search(setup.run, {.depth = 1, .sessions = 600, .trap_sessions = 150});
    const SearchFinding* trap = trap_by(result, {"page: addEventListener(onclick_closebtn)"});
    ASSERT_TRUE(trap) << all_findings(setup.run, result);

    const SearchResult sound =
        explore(ad_with("{}", page("qoroPlayer.MRAIDClose()")), {.depth = 1, .sessions = 600, .trap_sessions = 150});
    EXPECT_FALSE(trap_by(sound, {"page: addEventListener(onclick_closebtn)"}));
}

TEST(Search, GivesTheSameResultWithAnyNumberOfThreads)
{
    const SearchSetup setup = search_setup(ad_with("{}"), false);
    SearchOptions options{.depth = 2, .sessions = 400};
    const std::string one = all_findings(setup.run, search(setup.run, options));
    options.jobs = 3;
    EXPECT_EQ(all_findings(setup.run, search(setup.run, options)), one);
    EXPECT_THAT(one, HasSubstr("the budget ended"));
}

TEST(Search, MeasuresTheWorstTimeUntilAClose)
{
    // A stall of five seconds stops the countdown of three seconds.
    const auto ad = ad_with(R"({"iBufferingSufferTime": -1})");
    const SearchResult result = explore(ad, {.depth = 1, .sessions = 1500, .policy_seconds = 5});
    ASSERT_TRUE(result.worst_close);
    EXPECT_GE(*result.worst_close, 8'000'000);
    EXPECT_TRUE(std::ranges::any_of(result.findings, [](const auto& each) { return each.rule == "close-late"; }));
    EXPECT_FALSE(std::ranges::any_of(explore(ad, {.depth = 0, .policy_seconds = 30}).findings,
                                     [](const auto& each) { return each.rule == "close-late"; }));
}

TEST(Search, MergesOnlyStatesWithTheSameFuture)
{
    for (const auto& ad :
         {ad_with(R"({"strMIUrl": "http://m/mi.png", "bIsDefaultMute": true})"),
          ad_with(R"({"landscapeModeType": 2, "bShowHideVideoBtn": true, "bIsAutoReplay": true,
                      "arrayPrePauseLocations": [2, 4], "dicProgressTrackingUrls": {"1": ["http://t/1"]}})",
                  "<head></head>setVideoSeekToTime setVideoPause MRAIDUseCustomClose onclick_closebtn"),
          ad_with(R"({"strStoreId": "7", "arrayButtonsInfo": [{"btn_text": "A", "launch_type": "inapp",
                      "data": {"u": "http://shop", "show_nav_bar": true}}, {"btn_text": "B", "action": "send_sms",
                      "data": {"tel": "1", "b": "x"}}]})")}) {
        const SearchSetup setup = search_setup(ad, false);
        const SearchResult result = search(setup.run, {.depth = 2, .sessions = 500, .verify = 10});
        EXPECT_GT(result.merged, 50U);
        EXPECT_EQ(result.verified, 10U);
        for (const WrongMerge& wrong : result.wrong_merges)
            ADD_FAILURE() << in_words(setup.run, wrong.first) << ": " << wrong.first_line << "\n"
                          << in_words(setup.run, wrong.second) << ": " << wrong.second_line;
    }
}

namespace
{

/// A move that is possible at some moment of the session without moves, at a time in seconds.
TimedMove move_at(const SearchSetup& setup, double seconds, const std::string& name)
{
    for (const Moment& moment : run_course(setup.run, 0, {}, {}).moments)
        for (const Move& move : moment.moves)
            if (move.name == name)
                return {to_microseconds(seconds), move};
    ADD_FAILURE() << "no move " << name;
    return {};
}

/// Two courses that differ in one part of the state: their keys differ, and if the part is left out of the key, the
/// comparison of their futures notices it.
void expect_part_counts(const SearchSetup& setup, const std::string& part, const std::vector<TimedMove>& first,
                        const std::vector<TimedMove>& second)
{
    RunSetup whole = setup.run;
    const auto key_of = [&](const std::vector<TimedMove>& course) {
        return run_course(whole, 0, course, {}).moments.front().key;
    };
    ASSERT_TRUE(key_of(first)) << part;
    EXPECT_NE(key_of(first), key_of(second)) << part;
    whole.leave_out = part;
    EXPECT_EQ(key_of(first), key_of(second)) << "more than " << part;
    const auto moves = run_course(whole, 0, first, {}).moments.front().moves;
    EXPECT_TRUE(
        compare_futures(setup.run, {.moves = first}, first.back().at, {.moves = second}, second.back().at, moves))
        << part;
}

} // namespace

TEST(Search, FollowsASessionThatNeverEndsForAThousandMoments)
{
    // The ad lies sideways while its video never arrives.
    const SearchSetup setup = search_setup(ad_with(R"({"portraitVideoPos": 6, "landscapeModeType": 2})"), false);
    const std::vector<TimedMove> course{move_at(setup, 0, "turn left"), move_at(setup, 0.3, "endless stall")};
    const CourseRun endless = run_course(setup.run, 0, course, {});
    EXPECT_EQ(endless.moments.size(), 1000u);
    EXPECT_FALSE(endless.merged);
    EXPECT_LT(run_course(setup.run, 0, {course.front()}, {}).moments.size(), 100u);
}

TEST(Search, NoticesAStateThatLacksAPart)
{
    const SearchSetup hidden_image = search_setup(ad_with(R"({"strMIUrl": "http://m/mi.png"})"), false);
    // The loaded video counts as the first toggle; the third fetches the image, the eighth shows it.
    const std::vector<TimedMove> four(4, move_at(hidden_image, 2, "tap btnMute"));
    const std::vector<TimedMove> six(6, four.front());
    expect_part_counts(hidden_image, "miWatchDog", four, six);

    auto long_video =
        ad_with(R"({"bIsEndedCloseBtn": true, "iBufferingSufferTime": 12})", "<head></head>setVideoSeekToTime");
    long_video.set("/video/duration", "20");
    const SearchSetup watchdog = search_setup(long_video, false);
    const auto seek_and_leave = [&](double at) {
        return std::vector{move_at(watchdog, at, "page: setVideoSeekToTime(0)"),
                           move_at(watchdog, at + 1.5, "leave the app")};
    };
    expect_part_counts(watchdog, "iBufferingSufferTime", seek_and_leave(3.35), seek_and_leave(6.35));

    const SearchSetup buttons = search_setup(ad_with(R"({"arrayButtonsInfo": [
        {"btn_text": "A", "launch_type": "browser", "data": {"u": "http://shop"}},
        {"btn_text": "B", "launch_type": "browser", "data": {}}]})",
                                                     "<head></head>setVideoPause setVideoPlay"),
                                             false);
    expect_part_counts(buttons, "_bDoButtonAction",
                       {move_at(buttons, 2, "tap btnActionOne"), move_at(buttons, 2, "page: setVideoPlay"),
                        move_at(buttons, 2.5, "tap btnClickListener")},
                       {move_at(buttons, 2, "tap btnActionTwo"), move_at(buttons, 2, "page: setVideoPause"),
                        move_at(buttons, 2, "page: setVideoPlay"), move_at(buttons, 2.5, "tap btnClickListener")});
}

TEST(Search, RefusesATag)
{
    EXPECT_THROW(search_setup(ScenarioText(R"({"ad": {"vast": "http://v/"}, "steps": []})"), false), InputError);
}

} // namespace qoro
