#include "workbench/explore/Invariants.h"

#include "simulator/VirtualLoop.h"
#include "workbench/SessionRecord.h"
#include "workbench/check/CheckedSession.h"
#include "workbench/check/Rules.h"
#include "workbench/explore/Novelty.h"
#include "workbench/explore/SessionStore.h"

#include "Places.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// The rules of a check as invariants of a search.

namespace qoro
{
namespace
{

using ::testing::HasSubstr;
using Shows = std::function<bool(const SessionRecord&)>;

/// An ad with a video of eight seconds above or below a page.
ScenarioText ad_with(const std::string& properties)
{
    ScenarioText text(R"({"video": {"duration": 8}, "net": {"http://m/p.html": {"body": "<head></head>"}},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", "fVideoWidth": 16,
               "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 2, "bIsAutoStart": true,
               "strBackgroundColor": "4278190080", "iCloseBtnCountdown": 3, "iBufferingSufferTime": 4,
               "dicTrackingUrls": {"midpoint": ["http://t/middle"], "complete": ["http://t/end"]}},
        "steps": [{"open": 0}]})");
    ScenarioText patch(properties);
    for (const std::string& part : patch.children(""))
        for (const std::string& path : patch.children(part)) {
            const std::string value = *patch.value(path);
            if (value == "null")
                text.remove(path);
            else
                text.set(path, value);
        }
    return text;
}

const SearchFinding* of_rule(const SearchResult& result, std::string_view rule)
{
    const auto found = std::ranges::find(result.findings, rule, &SearchFinding::rule);
    return found == result.findings.end() ? nullptr : &*found;
}

std::string text_of(const SearchSetup& setup, const SearchResult& result)
{
    std::string text;
    for (const SearchFinding& each : result.findings)
        text += each.rule + ": " + each.text + ' ' + in_words(setup.run, each.course) + " until " +
                std::to_string(each.until) + " +" + std::to_string(each.others) + '\n';
    return text;
}

std::vector<std::string> names_of(const FoundCourse& course)
{
    std::vector<std::string> names;
    for (const TimedMove& each : course.moves)
        names.push_back(each.move.name);
    return names;
}

std::size_t lines_with(const SessionRecord& record, std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        record.lines, [&](const RecordedLine& line) { return line.json.find(text) != std::string::npos; }));
}

/// A fault that no session without a move shows.
struct Case {
    std::string rule;
    /// Patches of the ad.
    /// @{
    std::string fault;
    std::string twin;
    /// @}
    std::vector<std::string> moves;
    std::size_t sessions = 0;
    /// Whether a replayed session shows the fault.
    Shows shows;
};

const std::vector<Case>& cases()
{
    static const std::vector<Case> all{
        {"macro-unreplaced",
         R"({"ad": {"arrayMuteTrackingUrls": ["http://t/mute?x=${BAD}"]}})",
         R"({"ad": {"arrayMuteTrackingUrls": ["http://t/mute?x=1"]}})",
         {"tap btnMute"},
         100,
         [](const SessionRecord& record) { return lines_with(record, R"("url":"http://t/mute?x=${BAD}")") == 1; }},
        // The video pauses at second 3, before both trackers, and goes on after a tap.
        {"tracker-sent-twice",
         R"({"ad": {"arrayPrePauseLocations": [3], "dicProgressTrackingUrls": {"4": ["http://t/middle"]}}})",
         R"({"ad": {"arrayPrePauseLocations": [3], "dicProgressTrackingUrls": {"4": ["http://t/four"]}}})",
         {"tap btnPlayAndPause"},
         150,
         [](const SessionRecord& record) { return lines_with(record, R"("url":"http://t/middle")") == 2; }},
        {"button-leads-nowhere",
         R"({"ad": {"arrayButtonsInfo": [{"btn_text": "Buy", "launch_type": "browser", "data": {}}]}})",
         R"({"ad": {"arrayButtonsInfo": [{"btn_text": "Buy", "launch_type": "browser", "data": {"u": "http://s"}}]}})",
         {"tap btnActionOne"},
         100,
         [](const SessionRecord& record) {
             return lines_with(record, R"("hit":"btnActionOne")") == 1 && lines_with(record, "openURL") == 0;
         }},
        // Without an arrangement for landscape, the turn back leaves the mute button where it was.
        {"control-off-screen",
         "{}",
         R"({"ad": {"landscapeModeType": 2}})",
         {"turn left", "turn upright"},
         450,
         [](const SessionRecord& record) {
             return std::ranges::any_of(record.sights.back().controls, [](const SeenControl& each) {
                 return each.name == "btnMute" && !each.visible;
             });
         }},
    };
    return all;
}

SearchOptions options_for(const Case& each)
{
    return {.depth = each.moves.size(), .sessions = each.sessions, .traps = false};
}

} // namespace

TEST(Invariants, AFaultThatOnlyACourseShowsIsFoundWithTheShortestOne)
{
    for (const Case& each : cases()) {
        const SearchSetup setup = search_setup(ad_with(each.fault), false);
        const SearchResult result = explore_ad(setup, options_for(each));
        const SearchFinding* finding = of_rule(result, each.rule);
        ASSERT_TRUE(finding) << each.rule << '\n' << text_of(setup, result);
        EXPECT_EQ(names_of(finding->course), each.moves) << each.rule;
        EXPECT_EQ(finding->course.start, 0U) << each.rule;
        EXPECT_FALSE(finding->cure.empty()) << each.rule;
        const SessionRecord replayed =
            record_session(scenario_of_course(setup, finding->course, finding->until).scenario());
        EXPECT_TRUE(each.shows(replayed)) << each.rule;
        EXPECT_FALSE(each.shows(record_session(scenario_of_course(setup, {}, finding->until).scenario()))) << each.rule;

        const SearchSetup twin = search_setup(ad_with(each.twin), false);
        const SearchResult sound = explore_ad(twin, options_for(each));
        EXPECT_FALSE(of_rule(sound, each.rule)) << text_of(twin, sound);
    }
}

TEST(Invariants, OfARuleThereIsOneFinding)
{
    const SearchSetup setup = search_setup(ad_with(R"({"ad": {"arrayMuteTrackingUrls": ["http://t/mute?x=${BAD}"],
                            "arrayPauseTrackingUrls": ["http://t/pause?x=${WORSE}"]}})"),
                                           false);
    const SearchResult result = explore_ad(setup, {.depth = 1, .sessions = 100, .traps = false});
    EXPECT_EQ(std::ranges::count(result.findings, "macro-unreplaced", &SearchFinding::rule), 1)
        << text_of(setup, result);
    EXPECT_GT(of_rule(result, "macro-unreplaced")->others, 0U);
}

TEST(Invariants, AreTheSameWithAnyNumberOfThreadsAndWithKeptSessions)
{
    const SearchSetup setup =
        search_setup(ad_with(R"({"ad": {"arrayMuteTrackingUrls": ["http://t/mute?x=${BAD}"]}})"), false);
    const auto explored = [&](SearchOptions options) {
        options.depth = 2;
        options.sessions = 300;
        return text_of(setup, explore_ad(setup, options));
    };
    const std::string one = explored({});
    EXPECT_THAT(one, HasSubstr("macro-unreplaced"));
    EXPECT_EQ(explored({.jobs = 3}), one);

    SearchPart part;
    search(setup.run, {.depth = 2, .sessions = 80, .store = &part.sessions});
    std::string text;
    write_part(text, part);
    SearchPart read = std::move(read_parts(text, "file").front());
    EXPECT_EQ(explored({.store = &read.sessions}), one);
    // All sessions are kept now, and none is simulated again.
    EXPECT_EQ(explored({.store = &read.sessions}), one);
}

TEST(Invariants, OfTwoCoursesWithTheSameSignTheShorterIsNew)
{
    const auto course = [](std::size_t start, std::vector<std::int64_t> times) {
        FoundCourse found{.start = start};
        for (const std::int64_t at : times)
            found.moves.push_back({.at = at});
        return found;
    };
    Novelty novelty;
    novelty.add(course(0, {1, 5}), std::vector<Sign>{1, 2});
    novelty.add(course(0, {4}), std::vector<Sign>{1});
    novelty.add(course(0, {3}), std::vector<Sign>{1});
    novelty.add(course(1, {3}), std::vector<Sign>{1, 2});
    const auto courses = novelty.courses();
    ASSERT_EQ(courses.size(), 2U);
    EXPECT_EQ(courses[0].moves.front().at, 3);
    EXPECT_EQ(courses[0].moves.size(), 1U);
    EXPECT_EQ(courses[1].start, 1U) << "the surroundings count as a move, and the course is earlier at its end";
}

// ---------------------------------------------------------------------------------------------------------- exemptions

namespace
{

/// A course in which a rule finds what an exemption keeps it from reporting.
struct Exempt {
    std::string rule;
    std::string ad;
    /// Seconds, and the names of moves.
    std::vector<std::pair<double, std::string>> moves;
};

const std::map<std::string, Exempt, std::less<>>& exempt_courses()
{
    static const std::map<std::string, Exempt, std::less<>> all{
        {"closing-is-searched", {"close-late", R"({"ad": {"iCloseBtnCountdown": 5}})", {}}},
        {"worth-knowing",
         {"main-thread-blocked",
          R"({"ad": {"strBrandIconUrl": "http://m/icon.png"}, "net": {"http://m/icon.png": {"after": 2}}})",
          {}}},
        {"broken-surroundings",
         {"empty-screen", R"({"ad": {"strWebViewUrl": null}})", {{0.3, R"(finish by "user exited")"}}}},
        {"page-answers-in-time",
         {"close-ignored",
          R"({"net": {"http://m/p.html": {"body": "<head></head>addEventListener('onclick_closebtn') MRAIDClose"}}})",
          {{0.3, "page: addEventListener(onclick_closebtn)"},
           {3.5, "tap btnClose"},
           {4.5, "tap btnClose"},
           {5.5, "tap btnClose"}}}},
    };
    return all;
}

FoundCourse course_of(const SearchSetup& setup, const std::vector<std::pair<double, std::string>>& moves)
{
    FoundCourse course;
    for (const auto& [seconds, name] : moves) {
        const std::int64_t at = to_microseconds(seconds);
        const CourseRun run = run_course(setup.run, 0, course.moves, {});
        const Move* found = nullptr;
        for (const Moment& moment : run.moments)
            for (const Move& move : moment.moves)
                if (moment.at <= at && move.name == name)
                    found = &move;
        if (!found)
            ADD_FAILURE() << "no move " << name << " at " << seconds;
        else
            course.moves.push_back({at, *found});
    }
    return course;
}

} // namespace

TEST(CourseExemptions, AreNoFindings)
{
    for (const auto& [id, each] : exempt_courses()) {
        const SearchSetup setup = search_setup(ad_with(each.ad), false);
        const SearchOptions options{.policy_seconds = 4};
        SearchResult result{.new_courses = {course_of(setup, each.moves)}};
        const Course judged{.when = "",
                            .scenario = scenario_of_course(setup, result.new_courses.front(), to_microseconds(20)),
                            .models = {},
                            .policy_seconds = options.policy_seconds};
        EXPECT_FALSE(rule_named(each.rule)->of_session(CheckedSession(judged)).empty()) << id << ": no such fault";
        ask_rules(setup, options, result);
        EXPECT_TRUE(result.findings.empty()) << id << ": " << text_of(setup, result);
    }
}

TEST(CourseExemptions, ConcernOnlyWhatTheySay)
{
    // A page that never closes ignores the touches.
    Exempt deaf = exempt_courses().at("page-answers-in-time");
    deaf.ad.erase(deaf.ad.find(" MRAIDClose"), std::string_view(" MRAIDClose").size());
    const SearchSetup setup = search_setup(ad_with(deaf.ad), false);
    SearchResult result{.new_courses = {course_of(setup, deaf.moves)}};
    ask_rules(setup, {}, result);
    EXPECT_TRUE(of_rule(result, "close-ignored")) << text_of(setup, result);
}

TEST(CourseExemptions, AllAreTestedAndDescribed)
{
    std::ifstream file(QORO_SOURCE_DIR "/docs/explore.md");
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    for (const CourseExemption& each : course_exemptions()) {
        EXPECT_TRUE(exempt_courses().contains(each.id)) << each.id;
        const std::string row = "| `" + std::string(each.id) + "` | " + std::string(each.what) + " |\n";
        EXPECT_THAT(text, HasSubstr(row));
    }
    EXPECT_EQ(exempt_courses().size(), course_exemptions().size());
}

} // namespace qoro
