#include "app/Shrink.h"
#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

// Tests of `qoro-ad shrink` itself, run through the shell.

namespace qoro::test
{
namespace
{

/// Five hundred steps, of which one mutes the ad.
std::string session_with_a_mute(bool mutes)
{
    nlohmann::json scenario = {{"host", {{"parent", true}}},
                               {"net", {{"http://m/p.html", {{"body", "<head></head>"}}}}},
                               {"ad",
                                {{"strVideoUrl", "http://m/v.mp4"},
                                 {"strWebViewUrl", "http://m/p.html"},
                                 {"bIsAutoStart", true},
                                 {"arrayMuteTrackingUrls", {"http://t/mute", "http://t/other"}}}},
                               {"steps", {{{"open", 0}}}}};
    for (int i = 1; i < 500; ++i)
        if (i == 321 && mutes)
            scenario["steps"].push_back({{"at", i * 0.25}, {"tap", "btnMute"}});
        else
            scenario["steps"].push_back({{"at", i * 0.25}, {"device", {{"outputVolume", 0.5}}}});
    return scenario.dump();
}

const std::string Mutes = R"( --while 'line request url="http://t/mute"' )";

} // namespace

TEST(ShrinkCommand, ASessionOfFiveHundredStepsComesDownToAFew)
{
    const ShellResult run = run_shell("qoro-ad shrink -" + Mutes, session_with_a_mute(true));
    ASSERT_EQ(run.status, 0) << run.errors;
    const auto small = nlohmann::json::parse(run.output);
    EXPECT_LE(small["steps"].size(), 3U) << run.output;
    EXPECT_FALSE(small.contains("net")) << run.output;
    EXPECT_FALSE(small.contains("host")) << run.output;
    EXPECT_EQ(small["ad"]["arrayMuteTrackingUrls"].size(), 1U) << run.output;
    EXPECT_EQ(lines_of(run.errors).size(), 1U) << run.errors;
    EXPECT_NE(run.errors.find("stdin: 500 to "), std::string::npos) << run.errors;

    const ShellResult replayed = run_shell("qoro-ad simulate -", run.output);
    EXPECT_NE(replayed.output.find("http://t/mute"), std::string::npos) << replayed.output << replayed.errors;
}

TEST(ShrinkCommand, ASessionWithoutTheFaultIsRefused)
{
    const ShellResult run = run_shell("qoro-ad shrink -" + Mutes, session_with_a_mute(false));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "qoro-ad: stdin: the session does not show this: line request url=\"http://t/mute\"\n");
}

TEST(ShrinkCommand, UnusableOptionsGiveOneLineAndStatusTwo)
{
    const ShellResult mistake = run_shell("qoro-ad shrink - --while 'line request twice twice'", "{}");
    EXPECT_EQ(mistake.status, 2);
    EXPECT_EQ(mistake.errors, "qoro-ad: --while: column 20: expected and, or, or the end, got \"twice\"\n");

    const ShellResult place = run_shell("qoro-ad shrink - --keep /ad/strPage" + Mutes, session_with_a_mute(true));
    EXPECT_EQ(place.status, 2);
    EXPECT_EQ(place.errors,
              "qoro-ad: --keep: /ad/strPage: expected a place in the scenario, such as /ad/strVideoUrl\n");
}

TEST(ShrinkCommand, ARuleOfTheCheckIsAConditionAndWhatIsKeptStays)
{
    const std::string trap = R"({"video": {"duration": 8, "stalls": [[0, 600]]}, "host": {"parent": true},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "portraitModeType": 2, "bIsAutoStart": true, "bIsEndedCloseBtn": true,
               "iBufferingSufferTime": -1, "bCanRotate": true},
        "steps": [{"open": 0}, {"at": 4, "app": "background"}, {"at": 5, "app": "foreground"}, {"at": 90, "device": {}}]})";
    const ShellResult run = run_shell("qoro-ad shrink - --while close-never --keep /ad/bCanRotate", trap);
    ASSERT_EQ(run.status, 0) << run.errors;
    const auto small = nlohmann::json::parse(run.output);
    EXPECT_EQ(small["steps"].size(), 2U) << run.output;
    EXPECT_EQ(small["ad"]["bCanRotate"], true) << run.output;
    EXPECT_FALSE(small.contains("host")) << run.output;
}

TEST(ShrinkCommand, TitlesHaveTheWidthsThatTheDisplayGivesThem)
{
    // The simulator's widths would have room for it.
    const std::string session = R"({
        "video": {"duration": 10}, "host": {"parent": true},
        "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2,
               "portraitVideoPos": 1, "bIsAutoStart": true,
               "arrayButtonsInfo": [{"btn_text": "WWWWWW", "data": {"u": "http://s/"}}]},
        "steps": [{"open": 0}, {"at": 15, "device": {}}]})";
    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("shrink-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "session.json") << session;
    ShrinkCommandOptions options;
    options.input = (folder / "session.json").string();
    options.condition = "title-cut-off";
    options.out_file = (folder / "small.json").string();
    EXPECT_EQ(shrink_command(options), 1);
    options.measure = [](const std::string& text, const FontSpec&) {
        return CGSize{100.0 * static_cast<double>(text.size()), 20};
    };
    EXPECT_EQ(shrink_command(options), 0);
    // The result shows the fault on a machine without the display, too.
    const nlohmann::json small = nlohmann::json::parse(std::ifstream(folder / "small.json"));
    EXPECT_EQ(small["text"]["WWWWWW"][0], 600) << small;
    std::filesystem::remove_all(folder);
}

} // namespace qoro::test
