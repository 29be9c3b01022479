#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace qoro::test;

namespace
{
/// Seconds. Bad input is rejected before anything slow begins.
constexpr double Quickly = 20;

class CommandTest : public testing::Test
{
protected:
    /// Runs a command that must fail with status 2, print one line to stderr and nothing to stdout.
    /// @return the error line
    std::string complaint(const std::vector<std::string>& arguments) const
    {
        const CommandResult result = run_command(arguments, Quickly);
        EXPECT_EQ(result.status, 2) << result.errors;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
        return result.errors;
    }

    ScratchFolder folder;
    const std::string good = folder.write("good.json", R"({"strVideoUrl": "v.mp4", "portraitVideoPos": "FULL"})");
};
} // namespace

TEST_F(CommandTest, AMissingAdFileIsRefused)
{
    EXPECT_EQ(complaint({"play", "/nowhere/ad.json"}), "qoro-ad: /nowhere/ad.json: No such file or directory\n");
    EXPECT_EQ(complaint({"play", "/"}), "qoro-ad: /: the folder has no ad.json\n");
}

TEST_F(CommandTest, AnInvalidAdFileIsRefused)
{
    const std::string no_json = folder.write("no.json", "{\"a\": ");
    EXPECT_NE(complaint({"play", no_json}).find("no JSON at line 1"), std::string::npos);
    const std::string misspelt = folder.write("misspelt.json", R"({"strVideoURL": "v.mp4"})");
    EXPECT_EQ(complaint({"play", misspelt}),
              "qoro-ad: " + misspelt + ": /strVideoURL: no property of an ad; did you mean \"strVideoUrl\"?\n");
    const std::string scheme = folder.write("scheme.json", R"({"strVideoUrl": "rtsp://x/v"})");
    EXPECT_NE(complaint({"play", scheme}).find("/strVideoUrl: expected an address of http or https"),
              std::string::npos);
    const std::string size = folder.write("size.json", R"({"strVideoUrl": "v.mp4", "portraitModeType": 1,
        "fVideoWidth": 0, "fVideoHeight": 720})");
    EXPECT_NE(complaint({"play", size}).find("/fVideoWidth: expected the video's size"), std::string::npos);
}

TEST_F(CommandTest, OptionsThatMakeNoSenseAreRefused)
{
    EXPECT_NE(complaint({"play", good, "--device", "toaster"}).find("--device: expected one of phone"),
              std::string::npos);
    EXPECT_NE(complaint({"play", good, "--orientation", "up"}).find("--orientation: expected one of portrait"),
              std::string::npos);
    EXPECT_EQ(complaint({"play", good, "--log", "loud"}),
              "qoro-ad: --log: expected one of debug, info, note, warning, error, got \"loud\"\n");
    EXPECT_EQ(complaint({"play", good, "--for", "soon"}), "qoro-ad: --for: expected seconds, got \"soon\"\n");
    EXPECT_EQ(complaint({"play", good, "--snapshot", "2,x", "--out", folder.path("o")}),
              "qoro-ad: --snapshot: expected seconds, got \"x\"\n");
    EXPECT_EQ(complaint({"play", good, "--snapshot", "2"}), "qoro-ad: --snapshot requires --out\n");
    EXPECT_EQ(complaint({"play", good, "--phone", "--tablet"}), "qoro-ad: --phone excludes --tablet\n");
    EXPECT_NE(complaint({"play", good, "--loud"}).find("--loud"), std::string::npos);
    complaint({"play"});
    complaint({});
}

TEST_F(CommandTest, OtherFilesAreCheckedBeforeAWindowOpensToo)
{
    const std::string steps = folder.write("steps.json", R"([{"at": 1, "player": {"time": 3}}])");
    EXPECT_NE(complaint({"play", good, "--steps", steps}).find("/0/player"), std::string::npos);
    const std::string host = folder.write("host.json", R"({"devices": {}})");
    EXPECT_NE(complaint({"play", good, "--host", host}).find("/devices"), std::string::npos);
    const std::string copies = folder.write("copies.json", R"({"host": {"cached": {"v.mp4": "missing.mp4"}}})");
    EXPECT_EQ(complaint({"play", good, "--host", copies}),
              "qoro-ad: " + copies + ": /host/cached: expected the path of a file for v.mp4, got \"missing.mp4\"\n");
    EXPECT_NE(complaint({"play", good, "--trace", "/nowhere/trace"}).find("/nowhere/trace: No such"),
              std::string::npos);
    EXPECT_NE(complaint({"play", good, "--snapshot", "1", "--out", good}).find(good), std::string::npos);
}

TEST_F(CommandTest, AScenarioIsSimulatedOrRefused)
{
    const std::string scenario = folder.write("scenario.json", R"({"ad": {}, "steps": [{"open": 0}]})");
    const CommandResult result = run_command({"simulate", scenario}, Quickly);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find(R"({"t":0,"what":"step","n":0,"open":0})"), std::string::npos) << result.output;
    EXPECT_EQ(complaint({"simulate", folder.write("empty.json", "{}")}),
              "qoro-ad: " + folder.path("empty.json") + ": expected an \"ad\"\n");
}

TEST_F(CommandTest, HelpNamesEveryOption)
{
    const CommandResult result = run_command({"play", "--help"}, Quickly);
    EXPECT_EQ(result.status, 0);
    for (const char* option :
         {"--device", "--orientation", "--phone", "--tablet", "--locked-landscape", "--host", "--mute-output",
          "--system-volume", "--no-web-sandbox", "--page-memory", "--for", "--steps", "--trace", "--snapshot", "--out"})
        EXPECT_NE(result.output.find(option), std::string::npos) << option;
}
