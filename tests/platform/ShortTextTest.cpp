#include "platform/ShortText.h"

#include "platform/Value.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

TEST(ShortText, IsTheTextItselfUpToItsLength)
{
    EXPECT_EQ(shortened("", 0), "");
    EXPECT_EQ(shortened("abc", 3), "abc");
    EXPECT_EQ(shortened("größe", 7), "größe");
}

TEST(ShortText, MarksTheCut)
{
    EXPECT_EQ(shortened("abcd", 3), "abc…");
    EXPECT_EQ(shortened("abcd", 3, "..."), "abc...");
    EXPECT_EQ(shortened("abcd", 0, ""), "");
}

TEST(ShortText, NeverSplitsACharacter)
{
    const std::string text = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x8E\xAC.";
    const std::size_t ends[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
    for (std::size_t longest = 0; longest <= text.size(); ++longest) {
        EXPECT_EQ(whole_characters(text, longest), ends[longest]) << longest;
        EXPECT_TRUE(NSString::with_utf8(shortened(text, longest))) << longest;
    }
}

TEST(ShortText, KeepsNothingOfACharacterThatIsTooLong)
{
    EXPECT_EQ(whole_characters("\xE2\x82\xAC.", 2), 0U);
    EXPECT_EQ(shortened("\xF0\x9F\x8E\xAC", 3), "…");
}

TEST(ShortText, LosesAtMostThreeBytesOfATextThatIsNotUtf8)
{
    EXPECT_EQ(whole_characters("\x80\x80\x80\x80\x80\x80", 5), 5U);
    EXPECT_EQ(whole_characters("ab\x80\x80\x80\x80\x80", 5), 5U);
    EXPECT_EQ(whole_characters("\x80\x80\x80", 2), 2U);
}

} // namespace
} // namespace qoro
