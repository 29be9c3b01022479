#include "kit/CountDownLook.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qoro
{
namespace
{

constexpr CGSize Extents{50, 50};
constexpr double Top = 4.71238898;
constexpr double Right = 0;
constexpr double Bottom = 1.57079633;

TEST(CountDownLookTest, SecondsAreRoundedUp)
{
    EXPECT_EQ(whole_seconds_left(5), 5);
    EXPECT_EQ(whole_seconds_left(4.9), 5);
    EXPECT_EQ(whole_seconds_left(4.1), 5);
    EXPECT_EQ(whole_seconds_left(4), 4);
}

TEST(CountDownLookTest, SinglePrecisionErrorsAddNoSecond)
{
    EXPECT_EQ(whole_seconds_left(4.0000005), 4);
    EXPECT_EQ(whole_seconds_left(1.0000001), 1);
}

TEST(CountDownLookTest, OneIsShownUntilTheEnd)
{
    EXPECT_EQ(whole_seconds_left(1), 1);
    EXPECT_EQ(whole_seconds_left(0.1), 1);
    EXPECT_EQ(whole_seconds_left(0), 1);
    EXPECT_EQ(whole_seconds_left(-0.1), 1);
    EXPECT_EQ(whole_seconds_left(std::numeric_limits<double>::quiet_NaN()), 1);
}

TEST(CountDownLookTest, MoreThanABillionSecondsAreABillion)
{
    EXPECT_EQ(whole_seconds_left(1e300), 1000000000);
}

TEST(CountDownLookTest, AFullRingIsClosed)
{
    const CountDownLook look = count_down_look(Extents, 3, 5, 5);
    EXPECT_NEAR(look.arc_begin, Top - 2 * M_PI, 1e-8);
    EXPECT_NEAR(look.arc_end, Top, 1e-8);
}

TEST(CountDownLookTest, TheGapGrowsFromTheTopClockwise)
{
    EXPECT_NEAR(count_down_look(Extents, 3, 3.75, 5).arc_begin, Right, 1e-8);
    EXPECT_NEAR(count_down_look(Extents, 3, 2.5, 5).arc_begin, Bottom, 1e-8);
    EXPECT_NEAR(count_down_look(Extents, 3, 0, 5).arc_begin, Top, 1e-8);
    EXPECT_NEAR(count_down_look(Extents, 3, 2.5, 5).arc_end, Top, 1e-8);
}

TEST(CountDownLookTest, TheShareIsClampedAndZeroDrawsNothing)
{
    EXPECT_NEAR(count_down_look(Extents, 3, 9, 5).arc_begin, Top - 2 * M_PI, 1e-8);
    EXPECT_NEAR(count_down_look(Extents, 3, 5, 0).arc_begin, Top, 1e-8);
    EXPECT_NEAR(count_down_look(Extents, 3, -1, 5).arc_begin, Top, 1e-8);
}

TEST(CountDownLookTest, TheRingHasItsWidthAndADarkRim)
{
    const CountDownLook look = count_down_look(Extents, 3, 5, 5);
    EXPECT_EQ(look.disc_radius, 25);
    EXPECT_EQ(look.ring_width, 3);
    EXPECT_EQ(look.ring_radius, 22);
}

TEST(CountDownLookTest, TheShorterEdgeSetsTheSize)
{
    EXPECT_EQ(count_down_look({80, 50}, 3, 5, 5).disc_radius, 25);
    EXPECT_EQ(count_down_look({30, 50}, 3, 5, 5).disc_radius, 15);
}

TEST(CountDownLookTest, OneAndTwoDigitsHaveTheSameSizeAndLongerNumbersShrink)
{
    EXPECT_DOUBLE_EQ(count_down_look(Extents, 3, 5, 5).font_size, 22.5);
    EXPECT_DOUBLE_EQ(count_down_look(Extents, 3, 15, 15).font_size, 22.5);
    EXPECT_NEAR(count_down_look(Extents, 3, 100, 100).font_size, 20.384, 0.001);
    EXPECT_NEAR(count_down_look(Extents, 3, 3600, 3600).font_size, 15.836, 0.001);
}

TEST(CountDownLookTest, TheDigitsAreCentred)
{
    EXPECT_NEAR(count_down_look(Extents, 3, 5, 5).baseline, 22.5 * 0.358, 1e-9);
}

TEST(CountDownLookTest, WithoutRoomNothingIsDrawn)
{
    const CountDownLook look = count_down_look({2, 2}, 3, 5, 5);
    EXPECT_EQ(look.ring_width, 0);
    EXPECT_EQ(look.font_size, 0);
    EXPECT_EQ(count_down_look({0, 0}, 3, 5, 5).disc_radius, 0);
}

} // namespace
} // namespace qoro
