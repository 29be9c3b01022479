#include "app/Report.h"
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
    const ShellResult result = run_shell(
        "folder=$(mktemp -d) && cat >$folder/short.json && qoro-ad report $folder/short.json -o $folder/r.html && "
        "cat $folder/r.html && rm -r $folder",
        R"({"video": {"duration": 2}, "ad": {"strVideoUrl": "http://m/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
            "portraitModeType": 1, "bIsAutoStart": true, "iCloseBtnCountdown": 1},
            "steps": [{"open": 0}, {"at": 3, "tap": "btnClose"}]})");

    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(result.output, HasSubstr("<title>short: report of an ad</title>"));
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
    const ShellResult reported = run_shell("echo " + ad + " | " + program_as_shipped() + " report - -o -");

    EXPECT_THAT(reported.output,
                ContainsRegex(R"re("rule":"macro-unreplaced","severity":"error","sentence":"[^"]*","at":[0-9]+})re"))
        << reported.errors;
    EXPECT_THAT(reported.output,
                ContainsRegex(R"re("rule":"close-never","severity":"error","sentence":"[^"]*","at":null})re"));
}

TEST(ReportCommand, FindsTheFileOfAVideoInTheFolderOfTheInput)
{
    const ShellResult made = run_shell("folder=$(mktemp -d) && mkdir -p $folder/ad/artwork && cd $folder && "
                                       "touch secret.mp4 ad/copy.mp4 ad/clip.mp4 ad/artwork/big.mp4 && "
                                       "ln -s ../secret.mp4 ad/link.mp4 && echo $folder/ad");
    ASSERT_EQ(made.status, 0) << made.errors;
    const std::string folder = lines_of(made.output).at(0);
    const std::string cached =
        R"({"host": {"cached": {"http://cdn/x/1.mp4": "copy.mp4", "http://cdn/gone.mp4": "gone.mp4",
        "http://cdn/out.mp4": "../secret.mp4"}}})";
    const BaseScenario base{
        .kind = InputKind::Scenario, .file = folder + "/s.json", .text = cached, .scenario = ScenarioText(cached)};
    const auto name_of = [&](const std::string& address) {
        const std::string file = video_file(base, address);
        return file.starts_with(folder + "/") ? file.substr(folder.size() + 1) : file;
    };

    EXPECT_EQ(name_of("http://cdn/x/1.mp4"), "copy.mp4") << "the host's own copy";
    EXPECT_EQ(name_of("http://ad.example/artwork/big.mp4"), "artwork/big.mp4");
    EXPECT_EQ(name_of("http://cdn/path/of/clip.mp4?v=2#t"), "clip.mp4");
    EXPECT_EQ(name_of("clip.mp4"), "clip.mp4");
    for (const char* address : {"http://cdn/gone.mp4", "http://cdn/out.mp4", "http://cdn/link.mp4", "../secret.mp4",
                                "http://cdn/%2e%2e/secret.mp4", "http://cdn/", "http://cdn", ""})
        EXPECT_EQ(name_of(address), "") << address;
    run_shell("rm -r \"$(dirname " + folder + ")\"");
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
