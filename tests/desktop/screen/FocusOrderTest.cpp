#include "desktop/screen/FocusOrder.h"

#include <gtest/gtest.h>

namespace qoro::test
{
namespace
{

using Order = std::vector<std::size_t>;

TEST(FocusOrderTest, RowsAreOrderedFromTheTopAndEachFromTheLeft)
{
    EXPECT_EQ(focus_order({{0, {300, 10, 40, 40}}, {0, {10, 200, 40, 40}}, {0, {10, 10, 40, 40}}}), (Order{2, 0, 1}));
}

TEST(FocusOrderTest, ASlightlyLowerControlIsStillInTheRow)
{
    EXPECT_EQ(focus_order({{0, {200, 10, 40, 40}}, {0, {10, 25, 40, 40}}}), (Order{1, 0}));
    EXPECT_EQ(focus_order({{0, {200, 10, 40, 40}}, {0, {10, 35, 40, 40}}}), (Order{0, 1}));
}

TEST(FocusOrderTest, AVideoComesBeforeTheControlsOnIt)
{
    EXPECT_EQ(focus_order({{0, {160, 80, 45, 45}}, {0, {300, 10, 60, 20}}, {0, {0, 0, 375, 211}}}), (Order{2, 1, 0}));
}

TEST(FocusOrderTest, TheTopmostWindowComesFirst)
{
    EXPECT_EQ(focus_order({{0, {0, 0, 40, 40}}, {2, {0, 500, 40, 40}}, {1, {0, 300, 40, 40}}}), (Order{1, 2, 0}));
}

TEST(FocusOrderTest, ControlsWithTheSameFrameKeepTheirOrder)
{
    EXPECT_EQ(focus_order({{0, {0, 0, 40, 40}}, {0, {0, 0, 40, 40}}}), (Order{0, 1}));
    EXPECT_EQ(focus_order({}), Order{});
}

} // namespace
} // namespace qoro::test
