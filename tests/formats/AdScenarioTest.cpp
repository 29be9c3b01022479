#include "formats/AdScenario.h"

#include "formats/InputError.h"
#include "formats/Scenario.h"
#include "simulator/Simulation.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Json = nlohmann::json;

const std::string NotUtf8 = "\xff";

struct AdScenarioTest : testing::Test {
    AdScenarioTest()
    {
        std::string name = (std::filesystem::temp_directory_path() / "ad-scenario-XXXXXX").string();
        folder = mkdtemp(name.data());
        parts.ad_file = (folder / "ad.json").string();
        parts.discover = [this](const std::string& path) -> std::optional<VideoFacts> {
            discovered.push_back(std::filesystem::path(path).filename().string());
            return VideoFacts{.duration = 10, .size = {1280, 720}};
        };
        write("clip.mp4", "video");
        write("page.html", "<head></head>mraid.js");
    }
    ~AdScenarioTest() override { std::filesystem::remove_all(folder); }

    void write(const std::string& name, const std::string& text) const { std::ofstream(folder / name) << text; }
    /// The video above a page, with more properties.
    void write_ad(const Json& more = Json::object()) const
    {
        Json ad{{"strVideoUrl", "clip.mp4"},
                {"strWebViewUrl", "page.html"},
                {"fVideoWidth", 1280},
                {"fVideoHeight", 720},
                {"portraitModeType", 2},
                {"portraitVideoPos", "TOP"},
                {"bIsAutoStart", true},
                {"iCloseBtnCountdown", 1},
                {"dicTrackingUrls", {{"start", {"t/start"}}, {"complete", {"http://far.example/complete"}}}},
                {"arrayCloseTrackingUrls", {"t/close"}}};
        ad.update(more);
        write("ad.json", ad.dump());
    }
    Json scenario() const { return Json::parse(scenario_of_ad(parts).text); }
    /// Every line of the session's trace.
    std::vector<Json> trace() const
    {
        std::vector<Json> lines;
        simulate(read_scenario(scenario_of_ad(parts).text, "test"), TraceFormat::Json,
                 [&lines](std::string_view line) { lines.push_back(Json::parse(line)); });
        return lines;
    }
    /// The addresses of the trackers that the session sends.
    std::vector<std::string> trackers() const
    {
        std::vector<std::string> sent;
        for (const Json& line : trace())
            if (line["what"] == "request" && line["for"] == "tracking")
                sent.push_back(line["url"]);
        return sent;
    }
    double time_of(const Json& members) const
    {
        for (const Json& line : trace()) {
            Json merged = line;
            merged.update(members);
            if (merged == line)
                return line["t"];
        }
        return -1;
    }

    std::filesystem::path folder;
    AdScenarioParts parts;
    std::vector<std::string> discovered;
};

TEST_F(AdScenarioTest, TheFolderIsTheNetworkAndTheVideoHasItsLength)
{
    write_ad();
    EXPECT_THAT(trackers(),
                ElementsAre("http://ad.example/t/start", "http://far.example/complete", "http://ad.example/t/close"));
    EXPECT_THAT(discovered, ElementsAre("clip.mp4"));
    const Json made = scenario();
    EXPECT_EQ(made["net"], (Json{{"http://ad.example/page.html", {{"body", "<head></head>mraid.js"}}}}));
    EXPECT_EQ(made["video"]["duration"], 10);
    EXPECT_THAT(scenario_of_ad(parts).remarks, IsEmpty());
    EXPECT_THAT(scenario_of_ad(parts).missing_files, IsEmpty());
}

TEST_F(AdScenarioTest, BytesAreKept)
{
    // A byte that is not UTF-8, and 0x62 0x61 (RFC 4648, section 4).
    write("icon.png", NotUtf8 + "ba");
    write_ad({{"strBrandIconUrl", "icon.png"}});
    EXPECT_EQ(scenario()["net"]["http://ad.example/icon.png"], (Json{{"body64", "/2Jh"}}));
    for (const char* end : {"", "b", "bar", "barb"}) {
        const std::string bytes = NotUtf8 + end;
        write("icon.png", bytes);
        EXPECT_EQ(read_scenario(scenario_of_ad(parts).text, "test").world.net.at("http://ad.example/icon.png").body,
                  bytes);
    }
}

TEST_F(AdScenarioTest, ByDefaultTheViewerWatchesToTheEndThenClosesTheAd)
{
    write_ad();
    EXPECT_EQ(scenario()["steps"], Json::parse(R"([{"open": 0}, {"at": 13, "tap": "btnClose"},
                                                   {"at": 18, "release": true}])"));
    EXPECT_EQ(trace().back()["what"], "released");
}

TEST_F(AdScenarioTest, StepsAreThoseOfPlay)
{
    write_ad();
    parts.steps_file = (folder / "steps.json").string();
    write("steps.json", R"([{"at": 2, "tap": "btnMute"}])");
    EXPECT_EQ(scenario()["steps"],
              Json::parse(R"([{"open": 0}, {"at": 2, "tap": "btnMute"}, {"at": 13, "device": {}}])"));
    EXPECT_GT(time_of({{"what", "js"}, {"event", "video_ended"}}), 10);

    write("steps.json", R"([{"at": 1, "open": 0}, {"at": 20, "release": true}])");
    EXPECT_EQ(scenario()["steps"], Json::parse(R"([{"at": 1, "open": 0}, {"at": 20, "release": true}])"));

    write("steps.json", R"([{"tap": "btnMut"}])");
    EXPECT_THROW(scenario_of_ad(parts), InputError);
}

/// The same file serves play, whose page has elements.
TEST_F(AdScenarioTest, ATouchOfAnElementIsLeftOutAndNamed)
{
    write_ad();
    write("steps.json",
          R"([{"at": 1, "tap": "btnMute"}, {"at": 3, "touch": {"selector": "#shop"}}, {"tap": "btnClose"}])");
    parts.steps_file = (folder / "steps.json").string();
    const AdScenario made = scenario_of_ad(parts);
    const Json steps = Json::parse(made.text)["steps"];
    ASSERT_EQ(steps.size(), 4);
    EXPECT_EQ(steps[1], Json({{"at", 1}, {"tap", "btnMute"}}));
    EXPECT_EQ(steps[2], Json({{"at", 3}, {"tap", "btnClose"}}));
    EXPECT_THAT(made.remarks, ElementsAre(HasSubstr("steps.json: /1/touch: left out")));
}

TEST_F(AdScenarioTest, AVideoThatFailsNeverPlays)
{
    write_ad();
    parts.faults.fails = true;
    EXPECT_THAT(trackers(), ElementsAre("http://ad.example/t/close"));
    EXPECT_EQ(time_of({{"what", "js"}, {"event", "video_play"}}), -1);
}

TEST_F(AdScenarioTest, AVideoStallsInItsMiddleOrWhereItIsSaid)
{
    write_ad();
    parts.faults.stalls = {{.seconds = 2}, {.seconds = 1, .at = 7}};
    EXPECT_EQ(scenario()["video"]["stalls"], Json::parse("[[5, 2], [7, 1]]"));
    EXPECT_EQ(scenario()["steps"][1]["at"], 16) << "the viewer waits longer";
}

TEST_F(AdScenarioTest, AnAnswerFailsOrIsLate)
{
    write("icon.png", "icon");
    write_ad({{"strBrandIconUrl", "icon.png"}});
    parts.faults.answers["strWebViewUrl"].failure = "404";
    parts.faults.answers["strBrandIconUrl"].after = 3;
    EXPECT_EQ(scenario()["net"], (Json{{"http://ad.example/page.html", {{"fail", "404"}}},
                                       {"http://ad.example/icon.png", {{"body", "icon"}, {"after", 3}}}}));
    EXPECT_GE(time_of({{"what", "super"}, {"do", "failAdRequest"}}), 0);
}

TEST_F(AdScenarioTest, AMissingFileFailsAndIsNamed)
{
    write_ad({{"strWebViewUrl", "pag.html"}, {"strVideoUrl", "clap.mp4"}});
    const AdScenario made = scenario_of_ad(parts);
    EXPECT_THAT(made.missing_files,
                ElementsAre(parts.ad_file + ": /strVideoUrl: no such file: clap.mp4; did you mean \"clip.mp4\"?",
                            parts.ad_file + ": /strWebViewUrl: no such file: pag.html; did you mean \"page.html\"?"));
    EXPECT_EQ(scenario()["net"]["http://ad.example/pag.html"], (Json{{"fail", "no such file"}}));
    EXPECT_EQ(time_of({{"what", "js"}, {"event", "video_play"}}), -1);
}

TEST_F(AdScenarioTest, WhatTheFolderDoesNotHaveIsAssumedAndNamed)
{
    write_ad({{"strVideoUrl", "http://far.example/v.mp4"}, {"strWebViewUrl", "http://far.example/p.html"}});
    EXPECT_THAT(scenario_of_ad(parts).remarks,
                ElementsAre(HasSubstr("/strWebViewUrl: not a file of the ad's folder"),
                            HasSubstr("/strVideoUrl: not a file of the ad's folder: 30 s are assumed")));
    EXPECT_THAT(discovered, IsEmpty());
    parts.faults.duration = 6;
    EXPECT_THAT(scenario_of_ad(parts).remarks, ElementsAre(HasSubstr("/strWebViewUrl")));
    EXPECT_EQ(scenario()["video"]["duration"], 6);
}

TEST_F(AdScenarioTest, TheVideosFactsAreComparedWithTheAd)
{
    write_ad({{"fVideoHeight", 1280}, {"arrayPrePauseLocations", {3, 10}}});
    EXPECT_THAT(scenario_of_ad(parts).remarks,
                ElementsAre(HasSubstr("/fVideoWidth: 1280 x 1280 has other proportions than the video, 1280 x 720"),
                            HasSubstr("/arrayPrePauseLocations/1: has no effect: behind the video's end at 10 s")));
}

TEST_F(AdScenarioTest, ABuildThatCannotReadVideosNeedsTheDuration)
{
    write_ad();
    parts.discover = nullptr;
    EXPECT_THROW(scenario_of_ad(parts), InputError);
    parts.faults.duration = 4;
    EXPECT_EQ(scenario()["video"]["duration"], 4);
}

TEST_F(AdScenarioTest, ADeviceHasItsScreen)
{
    write_ad();
    parts.device = device_model("tablet");
    const World world = read_scenario(scenario_of_ad(parts).text, "test").world;
    EXPECT_EQ(world.device.facts.screen, (CGSize{768, 1024}));
    EXPECT_FALSE(world.device.facts.phone);
}

TEST_F(AdScenarioTest, AnAdThatCannotBePlayedIsRefused)
{
    write_ad({{"fVideoWidth", 0}});
    EXPECT_THROW(scenario_of_ad(parts), InputError);
}

} // namespace
} // namespace qoro
