#include "kit/MessageLoad.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

/// Continuous messages of equal cost.
/// @return the seconds after which the load is excessive, 0 for never
double seconds_until_too_much(double cost, double rest, double seconds)
{
    MessageLoad load;
    double now = 1000;
    load.is_too_much(now, now);
    const double began = now;
    while (now - began < seconds) {
        const double woke = now + rest;
        now = woke + cost;
        if (load.is_too_much(woke, now))
            return now - began;
    }
    return 0;
}

TEST(MessageLoadTest, MessagesThatTakeAllTimeAreTooMuchAfterThreeSeconds)
{
    EXPECT_NEAR(seconds_until_too_much(0.01, 0, 10), 3, 0.1);
    EXPECT_NEAR(seconds_until_too_much(0.3, 0, 10), 3.6, 0.1) << "whole messages";
}

TEST(MessageLoadTest, MessagesOfASecondEachAreTooMuchToo)
{
    EXPECT_NEAR(seconds_until_too_much(1.2, 0, 10), 3.6, 0.1);
}

TEST(MessageLoadTest, MessagesThatLeaveAQuarterOfTheTimeAreNeverTooMuch)
{
    EXPECT_EQ(seconds_until_too_much(0.03, 0.01, 100), 0);
    EXPECT_EQ(seconds_until_too_much(0.0003, 0.0001, 10), 0);
}

TEST(MessageLoadTest, ManyMessagesInOneLoopIterationCountOnceEach)
{
    MessageLoad load;
    double now = 1000;
    for (int turn = 0; turn < 100; ++turn) {
        const double woke = now + 0.06;
        now = woke;
        for (int n = 0; n < 10; ++n) {
            now += 0.004;
            EXPECT_FALSE(load.is_too_much(woke, now));
        }
    }
}

TEST(MessageLoadTest, OneSlowMessageIsNotTooMuch)
{
    MessageLoad load;
    load.is_too_much(1000, 1000);

    EXPECT_FALSE(load.is_too_much(1000, 1060)) << "the program may have been stopped";
    EXPECT_FALSE(load.is_too_much(1070, 1070));
}

TEST(MessageLoadTest, AQuietSecondResetsTheCount)
{
    MessageLoad load;
    double now = 1000;
    load.is_too_much(now, now);
    for (int round = 0; round < 10; ++round) {
        for (const double cost : {1.0, 1.0}) {
            now += cost;
            EXPECT_FALSE(load.is_too_much(now - cost, now));
        }
        now += 1;
        EXPECT_FALSE(load.is_too_much(now, now));
    }
}

} // namespace
} // namespace qoro
