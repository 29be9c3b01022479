#include "app/OrderedWork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>

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
