#include "app/OrderedWork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <utility>

namespace qoro
{
namespace
{

TEST(OrderedWork, IsWrittenInTheOrderOfAdditionWhicheverPartIsReadyFirst)
{
    std::string written;
    std::latch second_is_done(1);
    {
        OrderedWork work(
            2, [&](std::string_view text) { written += text; },
            [&](const std::string& complaint) { written += complaint + "."; });
        work.add([&](const LineSink& sink) {
            second_is_done.wait();
            sink("one");
            return std::string("!");
        });
        work.add([&](const LineSink& sink) {
            sink("two");
            second_is_done.count_down();
            return std::string();
        });
    }
    EXPECT_EQ(written, "one!.two.");
}

TEST(OrderedWork, OnOneThreadIsDoneAndWrittenBeforeAddReturns)
{
    std::string written;
    OrderedWork work(
        1, [&](std::string_view text) { written += text; }, [](const std::string&) {});
    work.add([](const LineSink& sink) {
        sink("a");
        sink("b");
        return std::string();
    });
    EXPECT_EQ(written, "ab");
}

TEST(OrderedWork, GoesOnWhileOutputIsBeingWritten)
{
    constexpr int Tasks = 6;
    std::promise<void> all_have_run;
    std::future_status when_first_was_written{};
    std::atomic<int> run = 0;
    bool first = true;
    {
        OrderedWork work(
            2,
            [&](std::string_view) {
                // Bounded, so that a failure does not hang.
                if (std::exchange(first, false))
                    when_first_was_written = all_have_run.get_future().wait_for(std::chrono::seconds(20));
            },
            [](const std::string&) {});
        for (int i = 0; i < Tasks; ++i)
            work.add([&](const LineSink&) {
                if (++run == Tasks)
                    all_have_run.set_value();
                return std::string();
            });
    }
    EXPECT_EQ(when_first_was_written, std::future_status::ready);
}

TEST(OrderedWork, BoundsThePendingWork)
{
    constexpr unsigned Threads = 4;
    constexpr int MostHeld = 8 * Threads;
    std::atomic<int> added = 0;
    std::atomic<int> most = 0;
    int written = 0;
    {
        OrderedWork work(
            Threads, [](std::string_view) {},
            [&](const std::string&) {
                most = std::max<int>(most, added - written);
                ++written;
            });
        for (int i = 0; i < 500; ++i) {
            work.add([](const LineSink&) { return std::string(); });
            ++added;
        }
    }
    EXPECT_EQ(written, 500);
    EXPECT_LE(most, MostHeld);
}

} // namespace
} // namespace qoro
