#include "Places.h"

#ifdef QORO_AD_AS_SHIPPED

#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>

// Compares the optimised program with the sanitizers' build, on one thread and on several.

namespace qoro::test
{

namespace
{

/// All available sessions: the examples, and unusual ones that once revealed bugs.
const std::string Sessions =
    " simulate examples/simulator/*.json tests/fuzz/corpus/scenario/*.json --summary --format json --jobs ";

} // namespace

TEST(AsShipped, EveryBuildWritesTheSameBytesWithOneThreadAndWithSeveral)
{
    const ShellResult checked = run_shell("qoro-ad" + Sessions + "1");
    const ShellResult checked_by_many = run_shell("qoro-ad" + Sessions + "8");
    const ShellResult shipped = run_shell(QORO_AD_AS_SHIPPED + Sessions + "1");
    const ShellResult shipped_by_many = run_shell(QORO_AD_AS_SHIPPED + Sessions + "8");

    EXPECT_GT(lines_of(checked.output).size(), 100U) << checked.errors;
    EXPECT_EQ(checked_by_many.output, checked.output);
    EXPECT_EQ(shipped.output, checked.output);
    EXPECT_EQ(shipped_by_many.output, checked.output);
    EXPECT_EQ(shipped.errors, checked.errors);
    EXPECT_EQ(shipped.status, checked.status);
}

TEST(AsShipped, EveryBuildWritesTheSameBytesForAStreamOfScenarios)
{
    const std::string scenarios = "for f in examples/simulator/*.json tests/fuzz/corpus/scenario/*.json; do "
                                  "tr -d '\\n' <$f; echo; done | ";
    const ShellResult checked = run_shell(scenarios + "qoro-ad simulate --jsonl --jobs 1");
    const ShellResult shipped = run_shell(scenarios + QORO_AD_AS_SHIPPED + " simulate --jsonl --jobs 8");

    EXPECT_GT(lines_of(checked.output).size(), 10U) << checked.errors;
    EXPECT_EQ(shipped.output, checked.output);
    EXPECT_EQ(shipped.status, checked.status);
}

} // namespace qoro::test

#endif
