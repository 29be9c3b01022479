#include "tests/app/ShellRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Tests of `qoro-ad report`, run through the shell. The first one lets the sanitizers watch a whole report.

namespace qoro::test
{

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;

TEST(ReportCommand, WritesOneFileThatIsAPage)
{
    const ShellResult result = run_shell("folder=$(mktemp -d) && "
                                         "qoro-ad report examples/simulator/first-session.json -o $folder/r.html && "
                                         "cat $folder/r.html && rm -r $folder");

    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(result.output, HasSubstr("<title>first-session: report of an ad</title>"));
    EXPECT_THAT(result.output, HasSubstr("</html>"));
}

TEST(ReportCommand, WritesTheSameToStandardOutput)
{
    const std::string command = program_as_shipped() + " report examples/simulator/first-session.json -o ";
    const ShellResult printed = run_shell(command + "-");
    const ShellResult written =
        run_shell("folder=$(mktemp -d) && " + command + "$folder/r.html && cat $folder/r.html && rm -r $folder");

    EXPECT_GT(printed.output.size(), 100000U) << printed.errors;
    EXPECT_EQ(printed.output, written.output);
}

TEST(ReportCommand, ListsWhatTheCheckFinds)
{
    const std::string ad = R"('{"strVideoUrl": "http://m/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
        "portraitModeType": 1, "portraitVideoPos": 1, "bIsAutoStart": true, "iBufferingSufferTime": -1,
        "iCloseBtnCountdown": 100}')";
    const ShellResult checked = run_shell("echo " + ad + " | " + program_as_shipped() + " check - --format json");
    const ShellResult reported = run_shell("echo " + ad + " | " + program_as_shipped() + " report - -o -");

    EXPECT_THAT(checked.output, HasSubstr("close-"));
    EXPECT_THAT(reported.output, HasSubstr(R"("rule":"close-)")) << reported.errors;
}

TEST(ReportCommand, AFindingThatTheReportsSessionShowsHasItsMoment)
{
    // The macro is sent in every session; the video stalls only in sessions of the check.
    const std::string ad = R"('{"strVideoUrl": "http://m/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
        "portraitModeType": 1, "portraitVideoPos": 1, "bIsAutoStart": true, "iBufferingSufferTime": -1,
        "bIsEndedCloseBtn": true, "dicTrackingUrls": {"start": ["http://t/s?r=[CACHEBUSTING]"]}}')";
    const ShellResult reported = run_shell("echo " + ad + " | qoro-ad report - -o -");

    EXPECT_THAT(reported.output,
                ContainsRegex(R"re("rule":"macro-unreplaced","severity":"error","sentence":"[^"]*","at":[0-9]+})re"))
        << reported.errors;
    EXPECT_THAT(reported.output,
                ContainsRegex(R"re("rule":"close-never","severity":"error","sentence":"[^"]*","at":null})re"));
}

TEST(ReportCommand, RefusesWhatIsUnusableInOneLine)
{
    for (const std::string& line : std::vector<std::string>{
             "qoro-ad report no-such.json -o -", "echo '{\"ad\": 1}' | qoro-ad report - -o -",
             "qoro-ad report examples/simulator/first-session.json", "qoro-ad report",
             program_as_shipped() + " report examples/simulator/first-session.json -o /no/such/folder/r.html",
             "qoro-ad report examples/simulator/first-session.json --device toaster -o -",
             "qoro-ad report examples/simulator/first-session.json --steps examples/demo/steps.json -o -"}) {
        const ShellResult result = run_shell(line);
        EXPECT_EQ(result.status, 2) << line;
        EXPECT_EQ(lines_of(result.errors).size(), 1U) << line << ": " << result.errors;
        EXPECT_EQ(result.output, "") << line;
    }
}

TEST(ReportCommand, TakesTheDeviceOfTheSession)
{
    const ShellResult result =
        run_shell(program_as_shipped() + " report examples/simulator/first-session.json --device iphone-15 -o -");

    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr(R"("device":{"name":"iphone-15","screen":[393.0,852.0])"));
}

} // namespace qoro::test
