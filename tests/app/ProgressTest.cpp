// Commands that take longer than a second: what a terminal shows meanwhile, and what a signal leaves behind.
#include "Places.h"
#include "tests/app/ShellRun.h"

#include <gmock/gmock.h>

#include <string>

namespace qoro::test
{
namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/// Beginning of a script: $scratch, one scenario in $scratch/line, and a pipe that feeds the simulator.
const std::string Begin = "scratch=$(mktemp -d); trap 'rm -rf \"$scratch\"' EXIT; mkfifo \"$scratch/in\"\n"
                          "grep -v '^$' examples/simulator/first-session.json | tr -d '\\n' >\"$scratch/line\"\n"
                          "echo >>\"$scratch/line\"; : >\"$scratch/out\"; : >\"$scratch/screen\"\n";

/// Waits in a script until a condition of the shell is true.
std::string wait_until(const std::string& condition)
{
    return "n=0; until " + condition + "; do n=$((n + 1)); [ $n -lt 1200 ] || exit 99; sleep 0.1; done\n";
}

TEST(Progress, ATerminalShowsHowManySessionsAreSimulatedAndNothingRemains)
{
    // The simulator waits for its second scenario until the line is on the terminal.
    const ShellResult result =
        run_shell(Begin +
                  "script -qefc \"'" QORO_AD "' simulate --jsonl <'$scratch/in' >'$scratch/out'\" "
                  "\"$scratch/screen\" >/dev/null &\n"
                  "exec 3>\"$scratch/in\"; cat \"$scratch/line\" >&3\n" +
                  wait_until("grep -q 'sessions simulated: 1' \"$scratch/screen\"") +
                  "cat \"$scratch/line\" >&3; exec 3>&-; wait\n"
                  "wc -l <\"$scratch/out\"; grep -a -v '^Script' \"$scratch/screen\" | tr -d '\\r\\n'");

    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, StartsWith("2\n")) << "both results";
    EXPECT_THAT(result.output, testing::EndsWith("\x1b[K")) << "the line is erased";
}

TEST(Progress, AResultOnTheTerminalIsNotMixedWithIt)
{
    const ShellResult result = run_shell(
        Begin +
        "script -qefc \"'" QORO_AD "' simulate --jsonl <'$scratch/in'\" \"$scratch/screen\" "
        ">/dev/null & exec 3>\"$scratch/in\"; cat \"$scratch/line\" >&3\n" +
        wait_until("grep -q scenario \"$scratch/screen\"") + "sleep 1.5; exec 3>&-; wait; cat \"$scratch/screen\"");

    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::Not(HasSubstr("simulated")));
}

TEST(Progress, NothingIsWrittenWithoutATerminal)
{
    const ShellResult result =
        run_shell(Begin +
                  "qoro-ad simulate --jsonl <\"$scratch/in\" >\"$scratch/out\" & exec 3>\"$scratch/in\"\n"
                  "cat \"$scratch/line\" >&3\n" +
                  wait_until("[ -s \"$scratch/out\" ]") + "sleep 1.5; exec 3>&-; wait $!");

    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, IsEmpty());
}

TEST(Interruption, ASignalLeavesWholeResults)
{
    // A scenario is cut off in the middle of its line.
    const ShellResult result =
        run_shell(Begin +
                  "qoro-ad simulate --jsonl --jobs 2 <\"$scratch/in\" >\"$scratch/out\" & exec 3>\"$scratch/in\"\n"
                  "cat \"$scratch/line\" \"$scratch/line\" >&3; head -c 20 \"$scratch/line\" >&3\n" +
                  wait_until("[ $(wc -l <\"$scratch/out\") -eq 2 ]") +
                  "kill -TERM $!; status=0; wait $! || status=$?; exec 3>&-; cat \"$scratch/out\"; exit $status");

    EXPECT_EQ(result.status, 143) << "ended by the signal";
    // A shell may name the signal.
    EXPECT_THAT(result.errors, Not(HasSubstr("qoro-ad")));
    const auto lines = lines_of(result.output);
    ASSERT_THAT(lines, SizeIs(2));
    for (const std::string& line : lines)
        EXPECT_THAT(line, testing::EndsWith("}")) << line;
    EXPECT_THAT(result.output, testing::EndsWith("}\n"));
}

TEST(Version, IsPrinted)
{
    const ShellResult result = run_shell("qoro-ad --version");

    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::MatchesRegex("qoro-ad [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_THAT(result.errors, IsEmpty());
}

} // namespace
} // namespace qoro::test
