#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// Tests of the command itself, run through the shell.

namespace qoro::test
{

namespace
{

using Json = nlohmann::json;

const std::string Session = "examples/simulator/first-session.json";

/// A scenario in one line: the ad is muted at the given second.
std::string muted_at(int second)
{
    return R"({"ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, )"
           R"("portraitVideoPos": "TOP", "bIsAutoStart": true, "arrayMuteTrackingUrls": ["http://t/mute"]}, )"
           R"("steps": [{"open": 0}, {"at": )" +
           std::to_string(second) + R"(, "tap": "btnMute"}]})";
}

/// The time at which a result of --jsonl reports the mute.
Json muted(const Json& result)
{
    return result["summary"]["trackers"][0]["sent"];
}

} // namespace

// ---------------------------------------------------------------------------------------------------------- one file

TEST(Simulate, WritesTheTraceAsJsonLinesTheSameEveryTime)
{
    const ShellResult once = run_shell("qoro-ad simulate " + Session);
    const ShellResult again = run_shell("qoro-ad simulate " + Session + " --format json");

    EXPECT_EQ(once.status, 0) << once.errors;
    EXPECT_EQ(once.output, again.output);
    for (const std::string& line : lines_of(once.output))
        EXPECT_TRUE(Json::parse(line).contains("t")) << line;
    EXPECT_EQ(once.errors, "");
}

TEST(Simulate, ReadsStandardInputForADash)
{
    EXPECT_EQ(run_shell("qoro-ad simulate - <" + Session).output, run_shell("qoro-ad simulate " + Session).output);
}

TEST(Simulate, WritesATimelineWithALineForEachEvent)
{
    const auto json = lines_of(run_shell("qoro-ad simulate " + Session).output);
    const auto text = lines_of(run_shell("qoro-ad simulate --format text " + Session).output);

    ASSERT_EQ(text.size(), json.size());
    EXPECT_EQ(text[2], "     0.000  STEP        n 0  open 0");
    EXPECT_EQ(text[3], "     0.000  network     page  http://ad.example/page.html");
}

TEST(Simulate, ASummaryFollowsTheTimeline)
{
    const std::string timeline = run_shell("qoro-ad simulate --format text " + Session).output;
    const ShellResult both = run_shell("qoro-ad simulate --summary " + Session);

    EXPECT_EQ(both.output.substr(0, timeline.size()), timeline);
    EXPECT_EQ(both.output.substr(timeline.size(), 9), "\nSummary\n");
    EXPECT_EQ(run_shell("qoro-ad simulate --summary --format text " + Session).output, both.output);
}

TEST(Simulate, ASummaryInJsonIsOneMoreLine)
{
    const std::string trace = run_shell("qoro-ad simulate " + Session).output;
    const ShellResult both = run_shell("qoro-ad simulate --summary --format json " + Session);

    ASSERT_EQ(both.output.substr(0, trace.size()), trace);
    const Json last = Json::parse(both.output.substr(trace.size()));
    EXPECT_EQ(last["summary"]["closed"], 9.5);
    EXPECT_EQ(last["summary"]["mainThreadBlocked"], 0.35);
}

TEST(Simulate, WritesTheLogToStandardErrorFromALevelUp)
{
    const std::string trace = run_shell("qoro-ad simulate " + Session).output;
    const std::string begin = "qoro-ad: " + Session + ": ";

    const ShellResult notes = run_shell("qoro-ad simulate --log note " + Session);
    EXPECT_EQ(notes.errors, begin + "note: Buffer Suffer Time's up, show close button.\n");
    EXPECT_EQ(notes.output, trace);

    const ShellResult all = run_shell("qoro-ad simulate --log debug --summary --jobs 2 " + Session + " " + Session);
    const auto lines = lines_of(all.errors);
    EXPECT_EQ(std::ranges::count(lines, begin + "debug: didSendTracking"), 2 * 4);
    EXPECT_EQ(std::ranges::count(lines, begin + "info: video play"), 2 * 2);
}

TEST(Simulate, WritesTheLogOfALineWithItsNumber)
{
    const ShellResult result =
        run_shell("grep -v '^$' " + Session + " | tr -d '\\n' | qoro-ad simulate --jsonl --log note");

    EXPECT_EQ(result.errors, "qoro-ad: stdin line 1: note: Buffer Suffer Time's up, show close button.\n");
}

// ------------------------------------------------------------------------------------------------------ several files

TEST(Simulate, SeveralTracesAreNamed)
{
    const std::string one = run_shell("qoro-ad simulate " + Session).output;
    const std::string name = R"({"scenario":")" + Session + "\"}\n";

    EXPECT_EQ(run_shell("qoro-ad simulate " + Session + " " + Session).output, name + one + name + one);

    const std::string text = run_shell("qoro-ad simulate --summary " + Session).output;
    const std::string header = "== " + Session + " ==\n";
    EXPECT_EQ(run_shell("qoro-ad simulate --summary " + Session + " " + Session).output,
              header + text + "\n" + header + text + "\n");
}

TEST(Simulate, AnUnusableFileIsReportedAndTheOthersRun)
{
    const std::string one = run_shell("qoro-ad simulate " + Session).output;
    const std::string name = R"({"scenario":")" + Session + "\"}\n";
    for (const char* jobs : {"1", "8"}) {
        const ShellResult result =
            run_shell("qoro-ad simulate nowhere.json " + Session + " README.md --jobs " + std::string(jobs));

        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, name + one) << "nothing of the two others";
        EXPECT_EQ(result.errors,
                  "qoro-ad: nowhere.json: No such file or directory\n"
                  "qoro-ad: README.md: expected an ad file or a scenario (JSON), a VAST tag (XML), a folder "
                  "with an ad.json, or an address of http or https\n");
    }
}

// ------------------------------------------------------------------------------------------------------------- errors

struct Complaint {
    const char* name;
    std::string line;
    std::string input;
    std::string expected;
};

class SimulateComplains : public testing::TestWithParam<Complaint>
{
};

TEST_P(SimulateComplains, InOneLineWithStatusTwoAndNoOutput)
{
    const Complaint& complaint = GetParam();
    const ShellResult result = run_shell("qoro-ad simulate " + complaint.line, complaint.input);

    EXPECT_EQ(result.errors, "qoro-ad: " + complaint.expected + "\n");
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Of, SimulateComplains,
    testing::Values(
        Complaint{"UnknownKey", "-", R"({"adv": {}, "steps": []})", R"(stdin: /adv: unknown key; did you mean "ad"?)"},
        Complaint{"Step", "-", R"({"ad": {}, "steps": [{"open": 0}, {"at": "now", "open": 0}]})",
                  R"(stdin: /steps/1/at: expected a number of seconds from 0 to 1000000000, got "now")"},
        Complaint{"NoFile", "", "",
                  "simulate: expected a SCENARIO.json, an ad, - for standard input, --jsonl, or --ad AD"},
        Complaint{"FileAndLines", "--jsonl a.json", "",
                  "simulate: --jsonl reads standard input: expected no file, got a.json"},
        Complaint{"LinesAsText", "--jsonl --format text", "",
                  "simulate: --jsonl writes JSON: expected no --format text"},
        Complaint{"TwoDashes", "- -", "", "simulate: expected - (standard input) once"},
        Complaint{"Format", "--format xml a.json", "", R"(--format: expected json or text, got "xml")"},
        Complaint{"Jobs", "--jobs 0 a.json", "", R"(--jobs: expected a whole number from 1 to 256, got "0")"}),
    [](const auto& complaint) { return std::string(complaint.param.name); });

TEST(Simulate, OutputThatCanNotBeWrittenIsAFailure)
{
    const ShellResult result = run_shell("qoro-ad simulate " + Session + " >/dev/full");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "qoro-ad: standard output: No space left on device\n");
}

TEST(Simulate, AClosedOutputPipeEndsItQuietly)
{
    // The input is endless: only the broken pipe ends the program.
    const ShellResult result =
        run_shell("yes '" + muted_at(1) + "' | timeout 60 qoro-ad simulate --jsonl --jobs 2 | head -n 2");

    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(lines_of(result.output).size(), 2U);
}

TEST(Simulate, HelpNamesEveryOptionAndTheExitStatuses)
{
    const ShellResult help = run_shell("qoro-ad simulate --help");

    EXPECT_EQ(help.status, 0);
    for (const char* word : {"--format", "--summary", "--jsonl", "--jobs", "Exit status", "docs/simulator.md"})
        EXPECT_NE(help.output.find(word), std::string::npos) << word;
}

// --------------------------------------------------------------------------------------------- one scenario per line

TEST(SimulateLines, EachGiveAResultWithTheTraceAndTheSummaryOfTheSession)
{
    const ShellResult result = run_shell("qoro-ad simulate --jsonl", muted_at(2) + "\n");
    const ShellResult alone = run_shell("qoro-ad simulate --summary --format json -", muted_at(2));

    EXPECT_EQ(result.status, 0) << result.errors;
    const Json line = Json::parse(result.output);
    std::vector<Json> events;
    for (const std::string& each : lines_of(alone.output))
        events.push_back(Json::parse(each));
    EXPECT_EQ(line["scenario"], 1);
    EXPECT_EQ(line["summary"], events.back()["summary"]);
    events.pop_back();
    EXPECT_EQ(line["trace"], Json(events));
}

TEST(SimulateLines, AnInvalidOneIsAResultAndTheOthersRun)
{
    const ShellResult result = run_shell("qoro-ad simulate --jsonl", muted_at(1) + "\n" + R"({"ad": {}, "stps": []})" +
                                                                         "\nnonsense\n\n" + muted_at(2));

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const auto lines = lines_of(result.output);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(muted(Json::parse(lines[0])), Json({1.0}));
    EXPECT_EQ(lines[1], R"({"scenario":2,"error":"stdin line 2: /stps: unknown key; did you mean \"steps\"?"})");
    EXPECT_EQ(lines[2], R"({"scenario":3,"error":"stdin line 3: no JSON at line 1, column 2"})");
    EXPECT_EQ(lines[3], R"({"scenario":4,"error":"stdin line 4: no JSON at line 1, column 1"})");
    EXPECT_EQ(Json::parse(lines[4])["scenario"], 5) << "the last one without a line's end";
    EXPECT_EQ(muted(Json::parse(lines[4])), Json({2.0}));
}

TEST(SimulateLines, GiveTheSameBytesWithOneThreadAndWithEight)
{
    std::string input;
    for (int i = 0; i < 100; ++i) // sessions of very different length
        input += i % 10 == 3 ? "{}\n" : muted_at(i % 7 == 0 ? 25 : 1) + "\n";
    const ShellResult one = run_shell("qoro-ad simulate --jsonl", input);
    const ShellResult eight = run_shell("qoro-ad simulate --jsonl --jobs 8", input);

    EXPECT_EQ(lines_of(one.output).size(), 100U);
    EXPECT_EQ(one.output, eight.output);
    EXPECT_EQ(run_shell("qoro-ad simulate --jsonl --jobs 8", input).output, eight.output);
}

TEST(SimulateLines, AreAnsweredWhileTheInputIsStillOpen)
{
    // Sends the second line only after the first result.
    const std::string dialogue = R"(
        folder=$(mktemp -d)
        mkfifo "$folder/in" "$folder/out"
        timeout 60 qoro-ad simulate --jsonl --jobs $jobs <"$folder/in" >"$folder/out" &
        exec 3>"$folder/in" 4<"$folder/out"
        for n in 1 2; do
            echo '{}' >&3
            read -r result <&4
            echo "$result"
        done
        exec 3>&- 4<&-
        wait
        rm -r "$folder")";
    for (const std::string jobs : {"1", "4"})
        EXPECT_EQ(lines_of(run_shell("jobs=" + jobs + "\n" + dialogue).output).size(), 2U) << jobs;
}

TEST(SimulateLines, NoLinesGiveNoResults)
{
    const ShellResult result = run_shell("qoro-ad simulate --jsonl");

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

// ------------------------------------------------------------------------------------------------------------- an ad

TEST(SimulateAd, RunsTheSameSessionEveryTimeAndWritesItAsAScenario)
{
    // A duration, so that a build without the desktop runs it too.
    const std::string ad = "qoro-ad simulate --ad examples/demo/ad.json --video duration=14 --video stalls=2@5 "
                           "--device tablet --page fails=404 --icon after=1";
    const std::string folder = testing::TempDir();
    const ShellResult once = run_shell(ad + " --write-scenario " + folder + "scenario.json");
    const ShellResult again = run_shell(ad + " --trace " + folder + "trace.jsonl");

    EXPECT_EQ(once.status, 0) << once.errors;
    EXPECT_NE(once.output, "");
    EXPECT_EQ(again.output, "");
    EXPECT_EQ(run_shell("cat " + folder + "trace.jsonl").output, once.output);
    EXPECT_EQ(run_shell("qoro-ad simulate " + folder + "scenario.json").output, once.output);
    EXPECT_EQ(once.errors, again.errors);
}

TEST(SimulateAd, EndsWithASummary)
{
    const ShellResult result = run_shell("qoro-ad simulate --ad examples/demo/ad.json --video duration=14 --summary");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("ad closed                       at 17 s"), std::string::npos) << result.output;
}

TEST(SimulateAd, RejectsWhatItCannotUseInOneLine)
{
    for (const auto& [arguments, complaint] :
         {std::pair("--ad examples/demo/ad.json --video fals", "got \"fals\""),
          std::pair("--ad examples/demo/ad.json --video stalls=1@x", "got \"stalls=1@x\""),
          std::pair("--ad examples/demo/ad.json --video duration=0", "got \"duration=0\""),
          std::pair("--ad examples/demo/ad.json --page late=1", "got \"late=1\""),
          std::pair("--ad examples/demo/ad.json --device fone", "got \"fone\""),
          std::pair("--ad examples/demo/ad.json scenario.json", "expected no file"),
          std::pair("--video fails scenario.json", "--video requires --ad"),
          std::pair("--ad missing.json", "missing.json")}) {
        const ShellResult result = run_shell(std::string("qoro-ad simulate ") + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_EQ(result.output, "") << arguments;
        ASSERT_EQ(lines_of(result.errors).size(), 1U) << result.errors;
        EXPECT_NE(result.errors.find(complaint), std::string::npos) << result.errors;
    }
}

} // namespace qoro::test
