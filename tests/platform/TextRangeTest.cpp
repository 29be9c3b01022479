#include "platform/TextRange.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

TEST(TextRange, IsTheFirstOfSeveral)
{
    const NSRange range = rangeOfString("abcabc", "bc");

    EXPECT_EQ(range.location, 1U);
    EXPECT_EQ(range.length, 2U);
}

TEST(TextRange, OfAMissingTextIsNotFound)
{
    EXPECT_EQ(rangeOfString("abc", "x").location, NSNotFound);
    EXPECT_EQ(rangeOfString(nullptr, "x").location, NSNotFound);
}

TEST(ReplacedRange, TakesTheTextInItsPlace)
{
    EXPECT_EQ(stringByReplacingCharactersInRange("abcd", {1, 2}, "-"), "a-d");
    EXPECT_EQ(stringByReplacingCharactersInRange("ab", {2, 0}, "c"), "abc");
}

TEST(ReplacedRange, OfANullTextIsNull)
{
    EXPECT_FALSE(stringByReplacingCharactersInRange(nullptr, {}, "c"));
}

TEST(ReplacedRange, OutsideTheTextIsRejected)
{
    EXPECT_THROW(stringByReplacingCharactersInRange("ab", {}, "c"), PlatformFault);
    EXPECT_THROW(stringByReplacingCharactersInRange("ab", {1, 2}, "c"), PlatformFault);
    EXPECT_THROW(stringByReplacingCharactersInRange("ab", {3, 0}, "c"), PlatformFault);
}

} // namespace
} // namespace qoro
