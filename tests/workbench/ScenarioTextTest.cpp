#include "workbench/ScenarioText.h"

#include "formats/InputError.h"

#include <gtest/gtest.h>

#include <string>

namespace qoro
{
namespace
{

const std::string Small = R"({"ad": {"strVideoUrl": "http://m/v.mp4", "dicTrackingUrls": {"start": ["a", "b"]}},
    "steps": [{"open": 0}, {"at": 3, "tap": "btnMute"}]})";

} // namespace

TEST(ScenarioText, ValuesAreReadSetAndRemovedByTheirPaths)
{
    ScenarioText scenario(Small);
    EXPECT_EQ(scenario.string("/ad/strVideoUrl"), "http://m/v.mp4");
    EXPECT_EQ(scenario.value("/ad/dicTrackingUrls/start/1"), R"("b")");
    EXPECT_EQ(scenario.value("/ad/nothing"), std::nullopt);
    EXPECT_EQ(scenario.string("/ad"), std::nullopt);

    scenario.remove("/ad/dicTrackingUrls/start/0");
    EXPECT_EQ(scenario.value("/ad/dicTrackingUrls/start"), R"(["b"])");
    scenario.set("/video/duration", "7");
    EXPECT_EQ(scenario.scenario().world.video.duration, 7);
    scenario.remove("/ad/strVideoUrl");
    EXPECT_EQ(scenario.string("/ad/strVideoUrl"), std::nullopt);
    EXPECT_EQ(scenario.children("/ad"), std::vector<std::string>{"/ad/dicTrackingUrls"});
}

TEST(ScenarioText, AKeyWithASlashIsOneSegmentOfAPath)
{
    ScenarioText scenario(Small);
    scenario.delay_answer("http://m/p.html", 2);
    const std::string path = path_under("/net", "http://m/p.html");
    EXPECT_EQ(path, "/net/http:~1~1m~1p.html");
    EXPECT_EQ(scenario.children("/net"), std::vector<std::string>{path});
    EXPECT_EQ(scenario.scenario().world.net.at("http://m/p.html").after, 2);
}

TEST(ScenarioText, ACopyIsIndependent)
{
    const ScenarioText scenario(Small);
    ScenarioText changed = scenario;
    EXPECT_EQ(changed, scenario);
    changed.clear_steps();
    EXPECT_EQ(changed.steps(), 0U);
    EXPECT_EQ(scenario.steps(), 2U);
    EXPECT_EQ(scenario.end(), 3);
}

TEST(ScenarioText, TheWorldOfASessionIsChanged)
{
    ScenarioText scenario(Small);
    scenario.set_device(*device_model("iphone-15"), UIDeviceOrientationLandscapeLeft);
    scenario.lock_host(true);
    scenario.add_stall(1, 5);
    scenario.fail_video(2);
    scenario.fail_answer("http://m/i.png", "404");
    scenario.add_step(9, "release", "true");
    const Scenario session = scenario.scenario();
    EXPECT_EQ(session.world.device.facts.screen->width, 393);
    EXPECT_EQ(session.host.root_view->height, 852);
    EXPECT_EQ(session.host.autorotates, (std::vector<std::int64_t>{3, 4}));
    ASSERT_EQ(session.world.video.stalls.size(), 1U);
    EXPECT_EQ(session.world.video.stalls[0].lasts, 5);
    EXPECT_EQ(session.world.video.error_for_good, 2);
    EXPECT_FALSE(session.world.net.at("http://m/i.png").ok);
    ASSERT_EQ(session.steps.size(), 4U);
    EXPECT_EQ(session.steps.front().key, "device") << "turned before the ad opens";
    EXPECT_EQ(session.steps.back().at, 9);
}

TEST(ScenarioText, ItsTextIsTheSameScenario)
{
    const ScenarioText scenario(Small);
    EXPECT_EQ(ScenarioText(scenario.text()), scenario);
    EXPECT_THROW(ScenarioText("[1]"), InputError);
    EXPECT_THROW(ScenarioText("{"), InputError);
}

} // namespace qoro
