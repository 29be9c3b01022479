#include "workbench/SessionRecord.h"

#include "formats/Scenario.h"
#include "simulator/Simulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace qoro
{
namespace
{

/// A video of four seconds above a page. The close button appears after two.
const std::string Ad = R"({"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html",
    "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "bIsAutoStart": true,
    "landscapeModeType": 1, "strBackgroundColor": "4278190080", "iCloseBtnCountdown": 2, "iBufferingSufferTime": -1})";

Scenario scenario_with(const std::string& steps)
{
    return read_scenario(R"({"video": {"duration": 4}, "net": {"http://m/p.html": {"body": "<head></head>"}},
        "host": {"parent": true}, "ad": )" +
                             Ad + R"(, "steps": [{"open": 0}, )" + steps + "]}",
                         "scenario");
}

/// What the viewer sees at a time, in seconds.
const Sight& sight_at(const SessionRecord& record, double seconds)
{
    const Sight* last = &record.sights.front();
    for (const Sight& sight : record.sights)
        if (static_cast<double>(sight.at) <= seconds * 1e6)
            last = &sight;
    return *last;
}

const SeenControl* control(const Sight& sight, std::string_view name)
{
    const auto found = std::ranges::find(sight.controls, name, &SeenControl::name);
    return found == sight.controls.end() ? nullptr : &*found;
}

} // namespace

TEST(SessionRecord, ShowsWhatTheViewerSeesAndHears)
{
    const SessionRecord record = record_session(
        scenario_with(R"({"at": 3, "device": {}}, {"at": 9, "tap": "btnClose"}, {"at": 10, "release": true})"));

    EXPECT_FALSE(sight_at(record, 0.1).video) << "it has not loaded";
    const Sight& early = sight_at(record, 1);
    EXPECT_TRUE(early.open);
    EXPECT_TRUE(early.video);
    EXPECT_TRUE(early.page);
    EXPECT_TRUE(early.sound);
    EXPECT_FALSE(early.close);
    const Sight& later = sight_at(record, 3);
    EXPECT_TRUE(later.close);
    const SeenControl* close = control(later, "btnClose");
    ASSERT_NE(close, nullptr);
    EXPECT_TRUE(close->is_button);
    EXPECT_EQ(close->turns, 0);
    EXPECT_TRUE(close->visible);
    EXPECT_TRUE(close->touchable);
    EXPECT_FALSE(sight_at(record, 6).sound) << "the video has ended";
    EXPECT_FALSE(sight_at(record, 9.5).open);
    EXPECT_EQ(record.end, 10000000);
}

TEST(SessionRecord, LookingDoesNotChangeTheTrace)
{
    const Scenario scenario = scenario_with(R"({"at": 1, "device": {"orientation": 3}}, {"at": 9, "tap": "btnClose"})");
    std::string lines;
    for (const RecordedLine& line : record_session(scenario).lines)
        lines += line.json + "\n";
    EXPECT_EQ(lines, simulate(scenario));
}

TEST(SessionRecord, ControlsOfATurnedAdLieTurnedOnTheScreen)
{
    const SessionRecord record = record_session(scenario_with(
        R"({"at": 1, "device": {"orientation": 3, "statusBarOrientation": 3}}, {"at": 3, "device": {}})"));
    const SeenControl* close = control(sight_at(record, 3), "btnClose");
    ASSERT_NE(close, nullptr);
    EXPECT_EQ(close->turns % 2, 1);
}

} // namespace qoro
