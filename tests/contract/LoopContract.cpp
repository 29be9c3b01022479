#include "tests/contract/ContractPlatform.h"

#include <cmath>
#include <limits>

namespace qoro::test
{

namespace
{
using Names = std::vector<std::string>;
/// Seconds between two firings, and the tolerance of a grid time: times have a resolution of one microsecond.
constexpr double Interval = 0.02;
constexpr double Microsecond = 1e-6;
} // namespace

TEST_P(LoopContract, PostedWorkRunsInItsOrderAndNotInsideThePost)
{
    Names ran;
    loop().post([&] {
        ran.emplace_back("first");
        loop().post([&] { ran.emplace_back("of the first"); });
        ran.emplace_back("first's end");
    });
    loop().post([&] { ran.emplace_back("second"); });
    EXPECT_EQ(ran, Names{});

    ASSERT_TRUE(until([&] { return ran.size() == 4; }));

    EXPECT_EQ(ran, (Names{"first", "first's end", "second", "of the first"}));
}

TEST_P(LoopContract, TimersFireInTheOrderOfTheirTimes)
{
    Names fired;
    loop().start_timer(0.06, false, [&] { fired.emplace_back("0.06"); });
    loop().start_timer(0.02, false, [&] { fired.emplace_back("0.02"); });
    loop().start_timer(0.04, false, [&] { fired.emplace_back("0.04"); });

    ASSERT_TRUE(until([&] { return fired.size() == 3; }));

    EXPECT_EQ(fired, (Names{"0.02", "0.04", "0.06"}));
}

TEST_P(LoopContract, OfTimersOfOneLengthTheOlderOneFiresFirst)
{
    Names fired;
    loop().start_timer(Interval, false, [&] { fired.emplace_back("older"); });
    loop().start_timer(Interval, false, [&] { fired.emplace_back("younger"); });

    ASSERT_TRUE(until([&] { return fired.size() == 2; }));

    EXPECT_EQ(fired, (Names{"older", "younger"}));
}

TEST_P(LoopContract, AOneShotTimerFiresOnceNeverEarlyAndThenEnds)
{
    int fired = 0;
    double fired_at = 0;
    TimerId timer = 0;
    double due_inside = -1;
    timer = loop().start_timer(Interval, false, [&] {
        ++fired;
        fired_at = loop().now();
        due_inside = loop().due(timer);
    });
    const double due = loop().due(timer);

    ASSERT_TRUE(until([&] { return fired > 0; }));
    let_pass(3 * Interval);

    EXPECT_EQ(fired, 1);
    EXPECT_GE(fired_at, due);
    EXPECT_EQ(due_inside, 0);
    EXPECT_EQ(loop().due(timer), 0);
}

TEST_P(LoopContract, ARepeatingTimerKeepsTheGridOfItsStartAndIsNeverEarly)
{
    const double before = loop().now();
    std::vector<double> off_the_grid;
    std::vector<double> early_by;
    TimerId timer = 0;
    double start = 0;
    double due = 0;
    timer = loop().start_timer(Interval, true, [&] {
        if (loop().now() < due)
            early_by.push_back(due - loop().now());
        due = loop().due(timer);
        const double intervals = (due - start) / Interval;
        off_the_grid.push_back(std::abs(intervals - std::round(intervals)) * Interval);
    });
    due = loop().due(timer);
    start = due - Interval;

    ASSERT_TRUE(until([&] { return off_the_grid.size() == 6; }));

    EXPECT_GE(start, before - Microsecond);
    EXPECT_EQ(early_by, std::vector<double>{});
    for (const double off : off_the_grid)
        EXPECT_LT(off, Microsecond);
    EXPECT_GT(due, loop().now() - Microsecond);
}

TEST_P(LoopContract, ARepeatingTimerMayStopItselfInsideItsOwnFiring)
{
    int fired = 0;
    double due_after_stopping = -1;
    TimerId timer = 0;
    const auto kept = std::make_shared<int>();
    timer = loop().start_timer(Interval, true, [&, kept] {
        if (++fired == 2) {
            loop().stop_timer(timer);
            due_after_stopping = loop().due(timer);
        }
    });
    ASSERT_TRUE(until([&] { return fired == 2; }));

    let_pass(4 * Interval);

    EXPECT_EQ(fired, 2);
    EXPECT_EQ(due_after_stopping, 0);
    EXPECT_EQ(kept.use_count(), 1) << "what it kept is let go";
}

TEST_P(LoopContract, ATimerMayBeReplacedInsideItsOwnFiring)
{
    Names fired;
    TimerId timer = 0;
    timer = loop().start_timer(Interval, true, [&] {
        fired.emplace_back("old");
        loop().stop_timer(timer);
        timer = loop().start_timer(Interval, true, [&] { fired.emplace_back("new"); });
    });

    ASSERT_TRUE(until([&] { return fired.size() == 3; }));

    EXPECT_EQ(fired, (Names{"old", "new", "new"}));
}

TEST_P(LoopContract, ATimerStoppedByAnotherThatFiresAtTheSameMomentNeverFires)
{
    bool fired = false;
    TimerId other = 0;
    bool stopped = false;
    loop().start_timer(Interval, false, [&] {
        loop().stop_timer(other);
        stopped = true;
    });
    other = loop().start_timer(Interval, false, [&] { fired = true; });
    ASSERT_TRUE(until([&] { return stopped; }));

    let_pass(3 * Interval);

    EXPECT_FALSE(fired);
}

TEST_P(LoopContract, StoppingAnEndedTimerDoesNotAffectOthers)
{
    bool first = false;
    int second = 0;
    const TimerId ended = loop().start_timer(Interval / 2, false, [&] { first = true; });
    ASSERT_TRUE(until([&] { return first; }));
    loop().start_timer(Interval, false, [&] { ++second; });

    loop().stop_timer(ended);
    loop().stop_timer(0);

    EXPECT_TRUE(until([&] { return second == 1; }));
}

TEST_P(LoopContract, AnIntervalThatIsNotFiniteNeverFires)
{
    bool fired = false;
    for (const double interval : {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        loop().start_timer(interval, true, [&] { fired = true; });

    let_pass(0.1);

    EXPECT_FALSE(fired);
}

} // namespace qoro::test
