#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

// What the program loads before it does its work: the largest part of a short command's time.

namespace qoro::test
{

namespace
{

/// The names of the libraries that a command and the program that it becomes load, one per line. The sanitizers' own
/// are left out.
std::vector<std::string> libraries_of(const std::string& command)
{
    const ShellResult run =
        run_shell("scratch=$(mktemp -d); LD_DEBUG=files LD_DEBUG_OUTPUT=$scratch/log " + command +
                  " >/dev/null; cat $scratch/log.* | sed -n 's/.*calling init: .*\\///p' | sort -u | "
                  "grep -vE '^(libasan|libubsan|ld-linux)'; rm -r $scratch");
    return lines_of(run.output);
}

const std::string Session = "examples/simulator/first-session.json";

bool has_desktop()
{
    return run_shell("qoro-ad play --help").status == 0;
}

} // namespace

// The C and C++ libraries (5), the message digest and its BSD base, and two in reserve.
TEST(Start, ASimulationLoadsNoMoreThanItsOwnLibraries)
{
    const std::vector<std::string> libraries = libraries_of("qoro-ad simulate " + Session);
    EXPECT_GE(libraries.size(), 3U) << "the dynamic linker reports nothing";
    EXPECT_LE(libraries.size(), 9U) << testing::PrintToString(libraries);
}

TEST(Start, ExplorationAndShrinkingLoadNoMoreThanASimulation)
{
    const std::vector<std::string> simulation = libraries_of("qoro-ad simulate " + Session);
    EXPECT_EQ(libraries_of("qoro-ad explore " + Session + " --budget 3"), simulation);
    EXPECT_EQ(libraries_of("qoro-ad shrink " + Session + " --while 'line request' -o /dev/null"), simulation);
}

TEST(Start, AScenarioFromAPipeIsReadOnce)
{
    const ShellResult file = run_shell("qoro-ad simulate " + Session);
    const ShellResult pipe = run_shell("folder=$(mktemp -d); mkfifo $folder/pipe; cat " + Session +
                                       " >$folder/pipe & qoro-ad simulate $folder/pipe; status=$?; rm -r $folder; "
                                       "exit $status");
    EXPECT_EQ(pipe.status, 0) << pipe.errors;
    EXPECT_FALSE(file.output.empty());
    EXPECT_EQ(pipe.output, file.output);
}

// 25 letters of 7 points each, as the simulator measures them, fit into a button of 306 points.
TEST(Start, ATitleThatIsCutOffIsMeasuredByCheckAndShrinkAlike)
{
    if (!has_desktop())
        GTEST_SKIP() << "this build has no desktop (QORO_DESKTOP is off), which measures texts";
    const ShellResult run = run_shell(
        R"(folder=$(mktemp -d); cat >$folder/s.json <<'END'
{"video": {"duration": 10}, "host": {"parent": true},
 "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2,
        "portraitVideoPos": 1, "bIsAutoStart": true,
        "arrayButtonsInfo": [{"btn_text": "WWWWWWWWWWWWWWWWWWWWWWWWW", "data": {"u": "http://s/"}}]},
 "steps": [{"open": 0}, {"at": 15, "device": {}}]}
END
qoro-ad check $folder/s.json | grep -c title-cut-off
qoro-ad shrink $folder/s.json --while title-cut-off >/dev/null
status=$?; rm -r $folder; exit $status)");
    EXPECT_EQ(lines_of(run.output), std::vector<std::string>{"1"}) << run.errors;
    EXPECT_EQ(run.status, 0) << run.errors;
}

TEST(Start, ADesktopCommandWithoutAVideoLoadsNoDecoders)
{
    if (!has_desktop())
        GTEST_SKIP() << "this build has no desktop (QORO_DESKTOP is off)";
    const std::vector<std::string> libraries = libraries_of("qoro-ad cache list");
    const auto loads = [&](const std::string& name) {
        return std::ranges::any_of(libraries, [&](const std::string& each) { return each.starts_with(name); });
    };
    EXPECT_TRUE(loads("libgstreamer")) << "the command is not the desktop's: " << testing::PrintToString(libraries);
    EXPECT_FALSE(loads("libavcodec")) << testing::PrintToString(libraries);
}

TEST(Start, AProgramWhoseDesktopPartIsMissingSaysSo)
{
    if (!has_desktop())
        GTEST_SKIP() << "this build has no desktop (QORO_DESKTOP is off), so it is one program";
    // Elsewhere the program finds no other part of itself.
    const ShellResult run = run_shell("folder=$(mktemp -d); cp \"$(command -v qoro-ad)\" $folder/alone; "
                                      "$folder/alone cache list; status=$?; rm -r $folder; exit $status");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.errors.find("qoro-ad-desktop"), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find("install qoro-ad again"), std::string::npos) << run.errors;
    EXPECT_EQ(lines_of(run.errors).size(), 1U) << run.errors;
}

} // namespace qoro::test
