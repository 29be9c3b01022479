#include "desktop/screen/FocusOrder.h"

#include <gtest/gtest.h>

namespace qoro::test
{
namespace
{

using Order = std::vector<std::size_t>;

TEST(FocusOrderTest, rows_go_from_above_and_each_from_the_left)
{
    EXPECT_EQ(focus_order({{0, {300, 10, 40, 40}}, {0, {10, 200, 40, 40}}, {0, {10, 10, 40, 40}}}), (Order{2, 0, 1}));
}

TEST(FocusOrderTest, what_stands_a_little_lower_is_still_in_the_row)
{
    EXPECT_EQ(focus_order({{0, {200, 10, 40, 40}}, {0, {10, 25, 40, 40}}}), (Order{1, 0}));
    EXPECT_EQ(focus_order({{0, {200, 10, 40, 40}}, {0, {10, 35, 40, 40}}}), (Order{0, 1}));
}

TEST(FocusOrderTest, a_whole_video_comes_before_what_lies_on_it)
{
    EXPECT_EQ(focus_order({{0, {160, 80, 45, 45}}, {0, {300, 10, 60, 20}}, {0, {0, 0, 375, 211}}}), (Order{2, 1, 0}));
}

TEST(FocusOrderTest, the_topmost_window_comes_first)
{
    EXPECT_EQ(focus_order({{0, {0, 0, 40, 40}}, {2, {0, 500, 40, 40}}, {1, {0, 300, 40, 40}}}), (Order{1, 2, 0}));
}

TEST(FocusOrderTest, what_covers_each_other_exactly_keeps_its_order)
{
    EXPECT_EQ(focus_order({{0, {0, 0, 40, 40}}, {0, {0, 0, 40, 40}}}), (Order{0, 1}));
    EXPECT_EQ(focus_order({}), Order{});
}

} // namespace
} // namespace qoro::test
