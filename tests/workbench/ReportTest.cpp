#include "Places.h"

#include "formats/AdScenario.h"
#include "workbench/report/Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr std::int64_t Second = 1000000;

/// A video of four seconds at the top of the screen, playable after 0.3 s, above a page.
ScenarioText scenario_with(const std::string& ad, const std::string& steps, const std::string& net = "",
                           const std::string& video = "")
{
    return ScenarioText(R"({"video": {"duration": 4)" + video +
                        R"(}, "net": {"http://m/p.html": {"body": "<head></head>"})" + net +
                        R"(}, "host": {"parent": true},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", )" +
                        ad + R"("fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1,
        "bIsAutoStart": true, "landscapeModeType": 1, "strBackgroundColor": "4278190080", "iCloseBtnCountdown": 2,
        "iBufferingSufferTime": -1}, "steps": [{"open": 0}, )" +
                        steps + "]}");
}

ReportParts parts_of(ScenarioText scenario)
{
    return {.title = "ad", .scenario = std::move(scenario)};
}

Json report_of(ScenarioText scenario)
{
    return Json::parse(report_data(parts_of(std::move(scenario))));
}

/// The entry of a list of [time, …] that is valid at a time.
const Json& valid_at(const Json& list, std::int64_t time)
{
    const Json* last = &list.at(0);
    for (const Json& each : list)
        if (each[0].get<std::int64_t>() <= time)
            last = &each;
    return *last;
}

/// The view of a name that the screen shows at a time; null without one.
Json view_at(const Json& report, const std::string& name, std::int64_t time)
{
    for (const Json& number : valid_at(report["frames"], time)[2]) {
        const Json& view = report["views"][number.get<std::size_t>()];
        if (view.value("name", "") == name)
            return view;
    }
    return nullptr;
}

Json tracker(const Json& report, const std::string& kind)
{
    for (const Json& each : report["trackers"])
        if (each["kind"] == kind)
            return each;
    return nullptr;
}

const std::string WatchedToTheEnd = R"({"at": 9, "tap": "btnClose"})";

} // namespace

// ------------------------------------------------------------------------------------------------------------- screen

TEST(Report, DrawsAControlWithItsPictureFromWhenItCanBeSeen)
{
    const Json report = report_of(scenario_with("", WatchedToTheEnd));

    EXPECT_TRUE(view_at(report, "btnClose", Second).is_null()) << "the countdown has two seconds";
    const Json close = view_at(report, "btnClose", 4 * Second);
    ASSERT_FALSE(close.is_null());
    EXPECT_EQ(close["kind"], "button");
    EXPECT_EQ(close["label"], "Close");
    EXPECT_GE(close["at"][2], 40) << "width in points";
    EXPECT_THAT(report["pictures"][close["picture"].get<std::size_t>()].get<std::string>(),
                testing::StartsWith("data:image/png;base64,iVBORw0KGgo"));
    EXPECT_TRUE(view_at(report, "btnClose", 10 * Second).is_null()) << "the ad is closed";
}

TEST(Report, DrawsTheDeviceAsTheViewerHoldsIt)
{
    const Json report = report_of(scenario_with(
        "", R"({"at": 3, "device": {"orientation": 3, "statusBarOrientation": 3}}, {"at": 6, "device": {}})"));

    EXPECT_EQ(valid_at(report["frames"], 2 * Second)[1], 0);
    const int turn = valid_at(report["frames"], 5 * Second)[1];
    EXPECT_EQ(std::abs(turn), 90);
    // What the viewer reads is upright: the view's own turn and the device's cancel.
    EXPECT_EQ((view_at(report, "btnClose", 5 * Second).value("turn", 0) + turn) % 360, 0);
}

TEST(Report, ContainsEachPictureOnceHoweverOftenItIsShown)
{
    const Json report = report_of(scenario_with("", WatchedToTheEnd));
    const auto pictures = report["pictures"].get<std::vector<std::string>>();

    EXPECT_GT(pictures.size(), 2U);
    EXPECT_EQ(std::set(pictures.begin(), pictures.end()).size(), pictures.size());
    const auto views = report["views"];
    EXPECT_EQ(std::set(views.begin(), views.end()).size(), views.size());
}

TEST(Report, ShowsWhenTheCloseCanBeTapped)
{
    const Json report = report_of(scenario_with("", WatchedToTheEnd));

    EXPECT_FALSE(valid_at(report["sights"], Second)[1]["close"]);
    EXPECT_TRUE(valid_at(report["sights"], 5 * Second)[1]["close"]);
    EXPECT_THAT(valid_at(report["sights"], 5 * Second)[1]["tap"], testing::Contains("btnClose"));
    EXPECT_FALSE(valid_at(report["sights"], 10 * Second)[1]["open"]);
}

// -------------------------------------------------------------------------------------------------------------- video

TEST(Report, FollowsTheVideoThroughAStall)
{
    const Json report = report_of(scenario_with("", WatchedToTheEnd, "", R"(, "stalls": [[1, 2]])"));
    const auto state = [&](double seconds) {
        return valid_at(report["video"], static_cast<std::int64_t>(seconds * 1e6))[1].get<std::string>();
    };

    EXPECT_EQ(state(0.1), "loading");
    EXPECT_EQ(state(1.2), "playing");
    EXPECT_EQ(state(1.4), "stalled") << "at 0.3 s it has begun";
    EXPECT_EQ(state(3.2), "stalled");
    EXPECT_EQ(state(3.4), "playing");
    EXPECT_LT(report["video"].size(), 12U) << "only where the course changes";
}

TEST(Report, KeepsThePositionOfAPlayerThatActsOnNews)
{
    ScenarioText scenario = scenario_with("", R"({"at": 1, "player": {"duration": 30, "load": 1}},
        {"at": 2, "player": {"time": 5, "state": 1}}, {"at": 20, "device": {}})");
    scenario.set("/video/mode", R"("manual")");
    const Json report = report_of(std::move(scenario));

    EXPECT_EQ(report["advances"], false);
    EXPECT_EQ(valid_at(report["video"], 15 * Second)[2], 5);
    EXPECT_LT(report["video"].size(), 10U);
}

TEST(Report, ShowsWhenTheMainThreadIsBlocked)
{
    const Json report = report_of(scenario_with(R"("strBrandIconUrl": "http://m/icon.png", )", WatchedToTheEnd + R"(,
        {"at": 10, "device": {}})",
                                                R"(, "http://m/icon.png": {"after": 0.5})"));
    const Json blocked = report["summary"]["mainThreadBlocked"];

    std::int64_t sum = 0;
    for (const Json& each : report["blocked"])
        sum += each[1].get<std::int64_t>();
    EXPECT_EQ(static_cast<double>(sum), blocked.get<double>() * 1e6);
    EXPECT_EQ(report["answers"]["http://m/icon.png"]["after"], Second / 2);
}

TEST(Report, TheAdsOfAPodHaveVideosOfTheirOwn)
{
    const auto ad = [](const std::string& number) {
        return "<Ad sequence=\"" + number +
               "\"><InLine><AdSystem>s</AdSystem><AdTitle>t</AdTitle><AdServingId>i</AdServingId><Impression>http://t/i"
               "</Impression><Creatives><Creative><Linear><Duration>00:00:05</Duration><MediaFiles><MediaFile "
               "delivery=\"progressive\" type=\"video/mp4\" width=\"640\" height=\"360\">http://m/" +
               number + ".mp4</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad>";
    };
    const Json tag = "<VAST version=\"4.2\">" + ad("1") + ad("2") + "</VAST>";
    ReportParts parts = parts_of(
        ScenarioText(R"({"ad": {"vast": "http://ads/tag"}, "net": {"http://ads/tag": {"body": )" + tag.dump() + R"(}},
        "videos": {"http://m/1.mp4": {"duration": 5}, "http://m/2.mp4": {"duration": 3}},
        "steps": [{"open": 0}, {"at": 30, "device": {}}]})"));
    std::vector<std::size_t> most;
    parts.stills_of = [&most](const std::string& address, std::size_t frames) {
        most.push_back(frames);
        return std::vector{VideoStill{.at = 0, .bytes = "\xff\xd8\xff" + address}};
    };
    const Json report = Json::parse(report_data(parts));

    EXPECT_EQ(report["sources"], (Json{"http://m/1.mp4", "http://m/2.mp4"}));
    EXPECT_EQ(most, (std::vector<std::size_t>{12, 12})) << "the frames are shared out";
    ASSERT_EQ(report["stills"].size(), 2U);
    EXPECT_EQ(report["stills"][0][2], 0);
    EXPECT_EQ(report["stills"][1][2], 1);
    EXPECT_NE(report["stills"][0][1], report["stills"][1][1]);
    std::map<int, std::set<double>> durations;
    for (const Json& point : report["video"])
        if (point[3].get<double>() > 0)
            durations[point[4].get<int>()].insert(point[3].get<double>());
    EXPECT_EQ(durations, (std::map<int, std::set<double>>{{0, {5}}, {1, {3}}}));
    for (const Json& entry : report["matrix"])
        EXPECT_LT(entry["source"], 2);
}

TEST(Report, TheTrackersOfAnAdAreNotDueForTheVideoThatFollowsIt)
{
    const std::string ad = R"("dicTrackingUrls": {"midpoint": ["http://t/mid"]}, )";
    const std::string next = R"({"at": 1, "script": ["playNextVideo", {"v_u": "http://m/2.mp4"}]}, )";

    EXPECT_FALSE(tracker(report_of(scenario_with(ad, WatchedToTheEnd)), "midpoint")["due"].is_null());
    const Json report = report_of(scenario_with(ad, next + WatchedToTheEnd));
    EXPECT_EQ(report["sources"].size(), 2U);
    EXPECT_EQ(valid_at(report["video"], 4 * Second)[4], 1);
    EXPECT_TRUE(tracker(report, "midpoint")["due"].is_null());
}

// ----------------------------------------------------------------------------------------------------------- trackers

TEST(Report, ATrackerIsDueWhenTheVideoPassesItsPosition)
{
    const Json report =
        report_of(scenario_with(R"("dicTrackingUrls": {"start": ["http://t/start"],
        "midpoint": ["http://t/mid"], "complete": ["http://t/end"]}, "dicProgressTrackingUrls": {"1": ["http://t/one"]},
        "arrayCloseTrackingUrls": ["http://t/close"], "arrayMuteTrackingUrls": ["http://t/mute"], )",
                                R"({"at": 5, "tap": "btnMute"}, )" + WatchedToTheEnd, "", R"(, "stalls": [[1.5, 2]])"));

    EXPECT_EQ(tracker(report, "start")["due"], 300000);
    EXPECT_EQ(tracker(report, "progress 1")["due"], 1300000);
    EXPECT_EQ(tracker(report, "midpoint")["due"], 4300000) << "0.3 s, two seconds of the video, and the stall";
    EXPECT_EQ(tracker(report, "complete")["due"], 6300000);
    EXPECT_EQ(tracker(report, "close")["due"], 9 * Second);
    EXPECT_EQ(tracker(report, "close")["sent"], 9 * Second);
    EXPECT_TRUE(tracker(report, "mute")["due"].is_null()) << "it is due whenever the viewer mutes";
    EXPECT_EQ(tracker(report, "mute")["sent"], 5 * Second);
    for (const char* kind : {"start", "midpoint", "complete", "progress 1"})
        EXPECT_GE(tracker(report, kind)["sent"], tracker(report, kind)["due"]) << kind;
}

TEST(Report, ATrackerThatIsLostWithTheCloseIsDueAndNotSent)
{
    ScenarioText scenario = scenario_with(R"("dicTrackingUrls": {"thirdQuartile": ["http://t/third"],
        "complete": ["http://t/end"]}, )",
                                          R"({"at": 3.8, "tap": "btnClose"}, {"at": 9, "device": {}})");
    scenario.set("/video/duration", "4.4");
    const Json report = report_of(std::move(scenario));

    EXPECT_EQ(tracker(report, "thirdQuartile")["due"], 3600000) << "the controller looks at 3.3 s and at 4.3 s";
    EXPECT_TRUE(tracker(report, "thirdQuartile")["sent"].is_null());
    EXPECT_TRUE(tracker(report, "complete")["due"].is_null());
    EXPECT_TRUE(tracker(report, "complete")["sent"].is_null());
}

// --------------------------------------------------------------------------------------------------------- the devices

TEST(Report, ShowsTheAdOnEveryModelInEachHolding)
{
    const Json matrix = report_of(scenario_with("", WatchedToTheEnd))["matrix"];
    std::map<std::string, std::set<std::string>> models;
    for (const Json& entry : matrix) {
        const std::string holding = entry["holding"];
        for (const Json& model : entry["models"])
            models[holding].insert(model);
        EXPECT_FALSE(entry["drawing"][1].empty()) << entry["models"] << holding;
        EXPECT_EQ(std::abs(entry["drawing"][0].get<int>()) == 90, holding != "upright") << entry["models"] << holding;
    }

    EXPECT_EQ(models.size(), 4U);
    for (const auto& [holding, names] : models)
        EXPECT_GE(names.size(), 20U) << holding;
}

TEST(Report, MarksAControlBelowACamera)
{
    const Json matrix = report_of(scenario_with("", WatchedToTheEnd))["matrix"];
    const auto faults_on = [&](const std::string& model) {
        for (const Json& entry : matrix)
            if (entry["holding"] == "upright" && std::ranges::count(entry["models"], Json(model)) > 0)
                return entry;
        return Json();
    };
    const auto is_marked = [](const Json& entry, const std::string& name, const std::string& fault) {
        return std::ranges::any_of(entry["faults"],
                                   [&](const Json& each) { return each["name"] == name && each["fault"] == fault; });
    };

    // The video begins at the screen's top, and the close button at the video's.
    const Json phone = faults_on("iphone-15");
    ASSERT_FALSE(phone.is_null());
    EXPECT_EQ(phone["insets"][0], 59);
    EXPECT_TRUE(is_marked(phone, "btnClose", "unsafe")) << phone["faults"];
    EXPECT_FALSE(is_marked(phone, "btnMute", "unsafe")) << "at the video's lower edge";
}

// --------------------------------------------------------------------------------------------------------------- page

TEST(Report, NoTextOfTheAdCanEndTheDataOrBecomeAPartOfThePage)
{
    const std::string attack = "</script><script>alert(1)</script><!--";
    ReportParts parts = parts_of(scenario_with(R"("arrayButtonsInfo": [{"btn_text": "</script><b>&\u2028", "data": {}}],
        "arrayMuteTrackingUrls": ["http://t/</script><script>"], )",
                                               R"({"at": 2, "tap": "btnMute"}, )" + WatchedToTheEnd));
    parts.title = attack;
    parts.remarks = {attack};
    parts.findings = {{.rule = "rule", .sentence = attack}};
    const std::string data = report_data(parts);
    const std::string page = report_page(parts.title, data);

    EXPECT_THAT(data, Not(HasSubstr("<")));
    EXPECT_EQ(Json::parse(data)["title"], attack);
    EXPECT_THAT(data, HasSubstr("/script>\\u003cb>&"));
    EXPECT_THAT(page, Not(HasSubstr("alert(1)</script>")));
    std::size_t scripts = 0;
    for (std::size_t at = 0; (at = page.find("<script", at)) != std::string::npos; ++at)
        ++scripts;
    EXPECT_EQ(scripts, 5U) << "the data and the page's own";
}

TEST(Report, LoadsNothing)
{
    std::string page = report_page("ad", report_data(parts_of(scenario_with("", WatchedToTheEnd))));

    EXPECT_THAT(page, HasSubstr("default-src 'none'; img-src data:;"));
    // The icon is within the page.
    const std::string icon = R"(<link rel="icon" href="data:)";
    ASSERT_THAT(page, HasSubstr(icon));
    page.erase(page.find(icon), icon.size());
    EXPECT_THAT(page, Not(HasSubstr("unsafe-inline")));
    for (const char* loading : {"<link", "<iframe", "@import", " src=", "fetch(", "url(http"})
        EXPECT_THAT(page, Not(HasSubstr(loading))) << loading;
}

TEST(Report, TheSameAdGivesTheSameBytes)
{
    const ScenarioText scenario = scenario_with("", WatchedToTheEnd);
    EXPECT_EQ(report_data(parts_of(scenario)), report_data(parts_of(scenario)));
}

TEST(Report, TheDemosReportFitsIntoAMail)
{
    AdScenarioParts parts{.ad_file = QORO_SOURCE_DIR "/examples/demo/ad.json",
                          .steps_file = QORO_SOURCE_DIR "/examples/demo/steps.json"};
    parts.faults.duration = 14;
    const ScenarioText scenario(scenario_of_ad(parts).text);
    const std::string page = report_page("demo", report_data(parts_of(scenario)));

    EXPECT_LT(page.size(), 2000000U);
    EXPECT_GT(page.size(), 100000U);
}

TEST(Report, CutsTheTextsOfLongLinesAtACharacter)
{
    std::string html = "<head></head>";
    for (int i = 0; i < 2000; ++i)
        html += "é";
    ScenarioText scenario = scenario_with("", WatchedToTheEnd);
    scenario.set("/net/http:~1~1m~1p.html/body", Json(html).dump());
    const Json report = report_of(std::move(scenario));

    int pages = 0;
    for (const Json& line : report["lines"])
        if (line[1]["what"] == "page") {
            ++pages;
            const std::string shown = line[1]["html"];
            EXPECT_LT(shown.size(), 700U);
            EXPECT_TRUE(shown.ends_with("é…")) << shown;
        }
    EXPECT_GE(pages, 1);
}

TEST(Report, ListsFindingsWithTheirMoments)
{
    ReportParts parts = parts_of(scenario_with("", WatchedToTheEnd));
    parts.findings = {{.rule = "close-late",
                       .severity = ListedFinding::Severity::Error,
                       .sentence = "The close comes late",
                       .at = 2 * Second},
                      {.rule = "note", .severity = ListedFinding::Severity::Note, .sentence = "A remark"}};
    const Json findings = Json::parse(report_data(parts))["findings"];

    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(
        findings[0],
        (Json{
            {"rule", "close-late"}, {"severity", "error"}, {"sentence", "The close comes late"}, {"at", 2 * Second}}));
    EXPECT_TRUE(findings[1]["at"].is_null());
}

} // namespace qoro
