#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace qoro::test
{

namespace
{

/// An ad whose close button appears only at the end of its video, as a scenario file.
std::filesystem::path ad_file(const std::string& name)
{
    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / name;
    std::ofstream(path) << R"({"video": {"duration": 4}, "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16,
        "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true,
        "bIsEndedCloseBtn": true, "iCloseBtnCountdown": -1, "iBufferingSufferTime": -1}, "steps": [{"open": 0}]})";
    return path;
}

} // namespace

TEST(Explore, PrintsItsFindingsAndWritesTheirScenarios)
{
    const auto ad = ad_file("explored.json");
    const auto folder = ad.parent_path() / "explored";
    std::filesystem::remove_all(folder);
    const ShellResult result =
        run_shell("qoro-ad explore " + ad.string() + " --depth 1 --budget 1000 --out " + folder.string());
    EXPECT_EQ(result.status, 1) << result.errors;
    EXPECT_NE(result.output.find("trap: "), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("endless stall"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("not covered:"), std::string::npos) << result.output;
    std::size_t files = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        ++files;
        EXPECT_EQ(run_shell("qoro-ad simulate " + file.path().string()).status, 0) << file.path();
    }
    EXPECT_GT(files, 0U);
}

TEST(Explore, FindsNothingWithoutMoves)
{
    const ShellResult result = run_shell("qoro-ad explore " + ad_file("sound.json").string() + " --depth 0");
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_NE(result.output.find("a close is reachable after 4.3 s at worst: nothing is done"), std::string::npos)
        << result.output;
}

TEST(Explore, RefusesUnusableInputInOneLine)
{
    const ShellResult missing = run_shell("qoro-ad explore /nowhere/ad.json");
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(lines_of(missing.errors).size(), 1U) << missing.errors;
    EXPECT_EQ(missing.output, "");
}

} // namespace qoro::test
