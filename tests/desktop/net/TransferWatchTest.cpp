#include "desktop/net/TransferWatch.h"

#include <gtest/gtest.h>

using qoro::LeastSpeed;

TEST(LeastSpeedTest, IsAveragedOverEachInterval)
{
    LeastSpeed speed(1000, 10);
    EXPECT_FALSE(speed.is_undercut(100, 0));
    EXPECT_FALSE(speed.is_undercut(109, 0)) << "the interval has not ended";
    EXPECT_FALSE(speed.is_undercut(110, 10'000)) << "just enough";
    EXPECT_FALSE(speed.is_undercut(119.9, 10'001));
    EXPECT_TRUE(speed.is_undercut(120, 19'999)) << "what came before counts for the interval before";
    EXPECT_EQ(speed.reason(), "the server sends less than 1000 bytes a second");
}

TEST(LeastSpeedTest, ALateCallCountsTheWholeTime)
{
    LeastSpeed speed(1000, 10);
    EXPECT_FALSE(speed.is_undercut(0, 500));
    EXPECT_TRUE(speed.is_undercut(20, 15'000));
    EXPECT_FALSE(speed.is_undercut(40, 35'000));
}

TEST(LeastSpeedTest, ZeroIsNoMinimum)
{
    LeastSpeed speed(0, 10);
    EXPECT_FALSE(speed.is_undercut(0, 0));
    EXPECT_FALSE(speed.is_undercut(1000, 0));
}
