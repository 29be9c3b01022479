#include "desktop/GlibLoop.h"

#include <gdk/gdk.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

using namespace qoro;

namespace
{
constexpr double Deadline = 90;

class GlibLoopTest : public testing::Test
{
protected:
    /// Blocks the main thread, as a long-running event does.
    void block(double seconds) const
    {
        const double until = loop.now() + seconds;
        while (loop.now() < until) {
        }
    }

    GlibLoop loop;
};
} // namespace

TEST_F(GlibLoopTest, PostedWorkRunsInItsOrderAndNotInsideThePost)
{
    std::vector<int> order;
    loop.post([&] {
        order.push_back(1);
        loop.post([&] { order.push_back(3); });
        order.push_back(2);
    });
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(loop.run_until([&] { return order.size() == 3; }, Deadline));
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(GlibLoopTest, WorkOfOtherThreadsRunsOnTheLoopsThread)
{
    std::atomic<bool> here = false;
    const auto mine = std::this_thread::get_id();
    std::thread other([&] { loop.post([&] { here = std::this_thread::get_id() == mine; }); });
    EXPECT_TRUE(loop.run_until([&] { return here.load(); }, Deadline));
    other.join();
}

TEST_F(GlibLoopTest, AOneShotTimerFiresOnceAndNeverEarly)
{
    int fired = 0;
    double at = 0;
    const double begun = loop.now();
    const TimerId timer = loop.start_timer(0.03, false, [&] {
        ++fired;
        at = loop.now();
    });
    EXPECT_GE(loop.due(timer), begun + 0.03 - 1e-6);
    EXPECT_LE(loop.due(timer), loop.now() + 0.03 + 1e-6);
    bool later = false;
    loop.start_timer(0.09, false, [&] { later = true; });
    EXPECT_TRUE(loop.run_until([&] { return later; }, Deadline));
    EXPECT_EQ(fired, 1);
    EXPECT_GE(at, begun + 0.03);
    EXPECT_EQ(loop.due(timer), 0);
}

TEST_F(GlibLoopTest, ARepeatingTimerKeepsItsGrid)
{
    std::vector<double> due;
    TimerId timer = 0;
    timer = loop.start_timer(0.01, true, [&] {
        block(0.003);
        due.push_back(loop.due(timer));
    });
    EXPECT_TRUE(loop.run_until([&] { return due.size() >= 5; }, Deadline));
    for (std::size_t i = 1; i < due.size(); ++i)
        EXPECT_NEAR(std::remainder(due[i] - due[0], 0.01), 0, 1e-9);
}

TEST_F(GlibLoopTest, FiringsThatWereMissedAreSkipped)
{
    int fired = 0;
    const double begun = loop.now();
    const TimerId timer = loop.start_timer(0.01, true, [&] { ++fired; });
    block(0.055);
    EXPECT_TRUE(loop.run_until([&] { return fired > 0; }, Deadline));
    EXPECT_EQ(fired, 1);
    EXPECT_GT(loop.due(timer), begun + 0.055);
}

TEST_F(GlibLoopTest, ATimerThatNeverPausesLeavesRoomForDrawing)
{
    int fired = 0;
    loop.start_timer(1e-9, true, [&] {
        ++fired;
        block(0.0001);
    });
    int drawn = 0;
    const guint drawing = g_idle_add_full(
        GDK_PRIORITY_REDRAW,
        [](gpointer count) -> gboolean {
            ++*static_cast<int*>(count);
            return G_SOURCE_CONTINUE;
        },
        &drawn, nullptr);
    EXPECT_TRUE(loop.run_until([&] { return fired >= 20; }, Deadline));
    g_source_remove(drawing);
    EXPECT_GE(drawn, 19) << "between any two firings";
}

TEST_F(GlibLoopTest, AStoppedTimerNeverFiresEvenWhenItIsDue)
{
    bool stopped_fired = false;
    bool later = false;
    TimerId second = 0;
    loop.start_timer(0.01, false, [&] { loop.stop_timer(second); });
    second = loop.start_timer(0.01, false, [&] { stopped_fired = true; });
    loop.start_timer(0.02, false, [&] { later = true; });
    block(0.03);
    EXPECT_TRUE(loop.run_until([&] { return later; }, Deadline));
    EXPECT_FALSE(stopped_fired);
}

TEST_F(GlibLoopTest, ARepeatingTimerMayStopItself)
{
    int fired = 0;
    TimerId timer = 0;
    timer = loop.start_timer(0.001, true, [&] {
        ++fired;
        loop.stop_timer(timer);
    });
    bool later = false;
    loop.start_timer(0.02, false, [&] { later = true; });
    EXPECT_TRUE(loop.run_until([&] { return later; }, Deadline));
    EXPECT_EQ(fired, 1);
}

TEST_F(GlibLoopTest, TimersAndWorkRunInTheOrderOfTheirTimes)
{
    std::vector<int> order;
    // Far enough apart for a busy machine.
    loop.start_timer(0.5, false, [&] { order.push_back(3); });
    loop.start_timer(0.01, false, [&] { order.push_back(1); });
    block(0.015);
    loop.post([&] { order.push_back(2); });
    block(0.5);
    EXPECT_TRUE(loop.run_until([&] { return order.size() == 3; }, Deadline));
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(GlibLoopTest, AnIntervalThatIsNotFiniteNeverFires)
{
    bool fired = false;
    bool later = false;
    loop.start_timer(std::numeric_limits<double>::infinity(), true, [&] { fired = true; });
    loop.start_timer(std::nan(""), false, [&] { fired = true; });
    loop.start_timer(0.01, false, [&] { later = true; });
    EXPECT_TRUE(loop.run_until([&] { return later; }, Deadline));
    EXPECT_FALSE(fired);
}

TEST_F(GlibLoopTest, ANegativeIntervalDoesNotStarveOtherTimers)
{
    int fired = 0;
    int others = 0;
    loop.start_timer(-1, true, [&] { ++fired; });
    loop.start_timer(0.001, true, [&] { ++others; });
    EXPECT_TRUE(loop.run_until([&] { return others >= 3 && fired > 3; }, Deadline));
}

TEST_F(GlibLoopTest, AStoppedTimerReleasesItsAction)
{
    const auto kept = std::make_shared<int>(0);
    const TimerId timer = loop.start_timer(1, true, [kept] {});
    EXPECT_EQ(kept.use_count(), 2);
    loop.stop_timer(timer);
    EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(GlibLoopTest, ClearingReleasesEverythingWithoutRunningIt)
{
    const auto kept = std::make_shared<int>(0);
    loop.start_timer(0.001, true, [kept] { ADD_FAILURE(); });
    loop.post([kept] { ADD_FAILURE(); });
    loop.clear();
    EXPECT_EQ(kept.use_count(), 1);
    bool later = false;
    loop.start_timer(0.01, false, [&later] { later = true; });
    EXPECT_TRUE(loop.run_until([&later] { return later; }, Deadline));
}

TEST_F(GlibLoopTest, QuitEndsRun)
{
    loop.post([this] { loop.quit(); });
    loop.run();
}
