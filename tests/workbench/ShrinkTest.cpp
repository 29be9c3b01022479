#include "workbench/Shrink.h"

#include "workbench/SessionRecord.h"
#include "workbench/expression/Holds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

/// A session of many steps, of which only the mute matters.
ScenarioText long_session(std::size_t steps)
{
    ScenarioText scenario(R"({"device": {"phone": true, "outputVolume": 0.5}, "host": {"parent": true},
        "video": {"duration": 30, "stalls": [[3, 1]]},
        "net": {"http://m/p.html": {"body": "<head></head>", "after": 0.2}, "http://m/i.png": {"fail": "404"}},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", "fVideoWidth": 16,
               "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "bIsAutoStart": true,
               "arrayMuteTrackingUrls": ["http://t/mute", "http://t/other"],
               "dicTrackingUrls": {"start": ["http://t/start"], "complete": ["http://t/complete"]}},
        "steps": [{"open": 0}]})");
    for (std::size_t i = 1; i < steps; ++i)
        scenario.add_step(static_cast<double>(i) * 0.1, i == steps / 2 ? "tap" : "device",
                          i == steps / 2 ? R"("btnMute")" : R"({"outputVolume": 0.5})");
    return scenario;
}

bool sends_mute(const ScenarioText& scenario)
{
    return std::ranges::any_of(record_session(scenario.scenario()).lines, [](const RecordedLine& line) {
        return line.json.find("http://t/mute") != std::string::npos;
    });
}

} // namespace

TEST(Shrink, OnlyWhatShowsItIsLeft)
{
    const ScenarioText small = shrink(long_session(100), sends_mute, {.trials = 2000});
    EXPECT_TRUE(sends_mute(small));
    EXPECT_LE(small.steps(), 3U) << small.text();
    EXPECT_LE(small.end(), 1) << small.text();
    for (const char* gone : {"/device", "/host", "/net", "/ad/dicTrackingUrls", "/ad/arrayMuteTrackingUrls/1"})
        EXPECT_FALSE(small.value(gone)) << gone << '\n' << small.text();
}

TEST(Shrink, NothingMoreCanBeRemoved)
{
    const ScenarioText small = shrink(long_session(20), sends_mute, {.trials = 5000});
    const ScenarioText again = shrink(small, sends_mute, {.trials = 5000});
    EXPECT_EQ(again, small);
}

TEST(Shrink, WhatIsKeptStays)
{
    const ScenarioText small =
        shrink(long_session(20), sends_mute, {.trials = 5000, .kept = {"/ad/dicTrackingUrls/start/0"}});
    EXPECT_EQ(small.string("/ad/dicTrackingUrls/start/0"), "http://t/start");
    EXPECT_FALSE(small.value("/ad/dicTrackingUrls/complete"));
}

TEST(Shrink, TheLimitOfTrialsIsKeptAndTheResultStillShowsIt)
{
    std::size_t trials = 0;
    const ScenarioText small = shrink(long_session(50),
                                      [&](const ScenarioText& scenario) {
                                          ++trials;
                                          return sends_mute(scenario);
                                      },
                                      {.trials = 5});
    EXPECT_LE(trials, 5U);
    EXPECT_TRUE(sends_mute(small));
}

TEST(Shrink, FiveHundredStepsComeDownToThoseThatMatterAndNothingMoreCanGo)
{
    const ExpressionNode expression = parse_expression("line request url=\"*/mute\"", "test");
    std::size_t sessions = 0;
    const auto shows = [&](const ScenarioText& scenario) {
        ++sessions;
        return holds(expression, scenario.scenario());
    };
    const ScenarioText whole = long_session(500);
    ASSERT_EQ(whole.steps(), 500U);
    const ScenarioText small = shrink(whole, shows, {.trials = 100'000});
    EXPECT_LE(small.steps(), 3U) << small.text();
    EXPECT_LT(sessions, 500U) << "about as many as a search by halves takes, not one for each step";
    EXPECT_EQ(shrink(whole, shows, {.trials = 100'000}), small) << "deterministic";
    for (const char* part : {"/ad/strVideoUrl", "/ad/bIsAutoStart", "/ad/arrayMuteTrackingUrls"}) {
        ScenarioText less = small;
        less.remove(part);
        EXPECT_TRUE(less == small || !shows(less)) << part;
    }
    for (const std::string& step : small.children("/steps")) {
        ScenarioText less = small;
        less.remove(step);
        EXPECT_FALSE(shows(less)) << step << '\n' << small.text();
    }
}

TEST(Shrink, StepsThatOnlyGoTogetherGoTogether)
{
    ScenarioText scenario(R"({"ad": {}, "steps": [{"app": "background"}, {"at": 1, "interrupt": 1},
        {"at": 2, "app": "foreground"}, {"at": 3, "device": {}}, {"at": 4, "interrupt": 0}]})");
    // Odd numbers of each step do not show it.
    const auto shows = [](const ScenarioText& text) {
        const std::string json = text.text();
        const auto has = [&](const char* part) { return json.find(part) != std::string::npos; };
        return has("background") == has("foreground") && has("\"interrupt\": 1") == has("\"interrupt\": 0");
    };
    ASSERT_TRUE(shows(scenario));
    EXPECT_EQ(shrink(scenario, shows).steps(), 0U);
}

TEST(Shrink, NoScenarioIsTriedTwice)
{
    std::vector<std::string> tried;
    shrink(long_session(30),
           [&](const ScenarioText& scenario) {
               tried.push_back(scenario.text());
               return scenario.text().find("btnMute") != std::string::npos;
           },
           {.trials = 5000});
    std::ranges::sort(tried);
    EXPECT_EQ(std::ranges::adjacent_find(tried), tried.end());
}

} // namespace qoro
