#include "simulator/SimulatedPlatform.h"

#include "tests/support/Allocations.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

struct VirtualLoopTest : testing::Test {
    SimulatedPlatform platform;
    VirtualLoop& loop = platform.loop();
    std::vector<double> fired;
    std::string order;

    std::function<void()> note_time()
    {
        return [this] { fired.push_back(loop.now()); };
    }
    std::function<void()> note(char name)
    {
        return [this, name] { order += name; };
    }
};

using Times = std::vector<double>;

TEST_F(VirtualLoopTest, TimeIsZeroUntilItIsAdvanced)
{
    loop.post(note_time());

    EXPECT_EQ(loop.now(), 0);
    EXPECT_TRUE(fired.empty());
}

TEST_F(VirtualLoopTest, ARepeatingTimerFiresOnItsGridWithoutDrift)
{
    loop.start_timer(0.1, true, note_time());

    platform.run_until(0.5);

    EXPECT_EQ(fired, (Times{0.1, 0.2, 0.3, 0.4, 0.5}));
}

TEST_F(VirtualLoopTest, AOneShotTimerFiresOnce)
{
    loop.start_timer(1.5, false, note_time());

    platform.run_until(10);

    EXPECT_EQ(fired, Times{1.5});
}

TEST_F(VirtualLoopTest, AnIntervalIsRoundedToTheNearestMicrosecond)
{
    loop.start_timer(0.0000014, false, note_time());
    loop.start_timer(0.0000016, false, note_time());

    platform.run_until(1);

    EXPECT_EQ(fired, (Times{0.000001, 0.000002}));
}

TEST_F(VirtualLoopTest, AnIntervalBelowAMicrosecondCountsAsOne)
{
    loop.start_timer(0, false, note_time());
    loop.start_timer(-5, false, note_time());

    platform.run_until(1);

    EXPECT_EQ(fired, (Times{0.000001, 0.000001}));
}

TEST_F(VirtualLoopTest, ATimerWhoseIntervalIsNotFiniteNeverFires)
{
    const TimerId endless = loop.start_timer(std::numeric_limits<double>::infinity(), true, note_time());
    const TimerId undefined = loop.start_timer(std::nan(""), false, note_time());
    loop.start_timer(-std::numeric_limits<double>::infinity(), false, note_time());

    platform.run_until(1e9);

    EXPECT_TRUE(fired.empty());
    EXPECT_EQ(loop.due(endless), std::numeric_limits<double>::infinity());
    EXPECT_EQ(loop.due(undefined), std::numeric_limits<double>::infinity());
}

TEST_F(VirtualLoopTest, SimultaneousWorkRunsInTheOrderOfItsCreation)
{
    loop.start_timer(1, false, note('a'));
    loop.after(1'000'000, note('b'));
    loop.start_timer(1, false, note('c'));

    platform.run_until(1);

    EXPECT_EQ(order, "abc");
}

TEST_F(VirtualLoopTest, ARepeatingTimerKeepsItsPlaceAmongSimultaneousWork)
{
    loop.start_timer(1, true, note('r'));
    loop.start_timer(2, false, note('o'));

    platform.run_until(2);

    EXPECT_EQ(order, "rro");
}

TEST_F(VirtualLoopTest, AStoppedTimerNeverFires)
{
    const TimerId stopped = loop.start_timer(1, true, note_time());
    loop.start_timer(0.5, false, [&] { loop.stop_timer(stopped); });

    platform.run_until(5);

    EXPECT_TRUE(fired.empty());
    EXPECT_EQ(loop.due(stopped), 0);
}

TEST_F(VirtualLoopTest, ATimerMayStopItselfWhileItFires)
{
    TimerId timer = 0;
    timer = loop.start_timer(1, true, [&] {
        order += 'x';
        loop.stop_timer(timer);
    });

    platform.run_until(5);

    EXPECT_EQ(order, "x");
    EXPECT_EQ(loop.pending(), 0U);
}

TEST_F(VirtualLoopTest, StoppingATimerThatHasEndedLeavesALaterOneAlone)
{
    const TimerId ended = loop.start_timer(1, false, [] {});
    platform.run_until(1);
    loop.start_timer(1, false, note('l'));

    loop.stop_timer(ended);
    platform.run_until(5);

    EXPECT_EQ(order, "l");
}

TEST_F(VirtualLoopTest, TheNextFireDateIsKnownWhileTheTimerFires)
{
    double next = 0;
    TimerId timer = 0;
    timer = loop.start_timer(0.25, true, [&] { next = loop.due(timer); });

    platform.run_until(0.25);

    EXPECT_EQ(next, 0.5);
}

TEST_F(VirtualLoopTest, WorkIsPostedAsAnEventOfItsOwn)
{
    loop.post([&] {
        loop.post(note('b'));
        order += 'a';
    });

    platform.run_until(0);

    EXPECT_EQ(order, "ab");
}

TEST_F(VirtualLoopTest, NothingDueLaterRuns)
{
    loop.after(1'000'001, note('x'));

    platform.run_until(1);

    EXPECT_EQ(order, "");
    EXPECT_EQ(loop.now(), 1);
}

TEST_F(VirtualLoopTest, ManyTimersAreRunInTheOrderInWhichTheyAreDue)
{
    for (int i = 0; i < 1000; ++i)
        loop.start_timer(0.001 * ((i * 37) % 1000 + 1), false, note_time());

    platform.run_until(1);

    EXPECT_EQ(fired.size(), 1000U);
    EXPECT_TRUE(std::ranges::is_sorted(fired));
}

TEST_F(VirtualLoopTest, ATickAllocatesNoMemory)
{
    int ticks = 0;
    loop.start_timer(0.1, true, [&ticks] { ++ticks; });
    platform.run_until(1);
    const std::size_t before = test::allocations_so_far();

    platform.run_until(100);

    EXPECT_EQ(test::allocations_so_far(), before);
    EXPECT_EQ(ticks, 1000);
}

TEST_F(VirtualLoopTest, ARejectionEndsOnlyItsEvent)
{
    loop.post([] { throw PlatformFault{"replace", "out of bounds"}; });
    loop.post(note('n'));

    platform.run_until(0);

    EXPECT_EQ(order, "n");
}

} // namespace
} // namespace qoro
