#include "Base/VideoPlayer/overlay/Texts.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

TEST(RemainingTimeText, IsWholeMinutesAndSeconds)
{
    EXPECT_EQ(remainingTimeText(95.7F, 30, false), "01:05");
}

TEST(RemainingTimeText, IsZeroAfterTheEndWhateverThePosition)
{
    EXPECT_EQ(remainingTimeText(95.7F, 30, true), "00:00");
    EXPECT_EQ(remainingTimeText(95.7F, 200, true), "00:00");
}

TEST(RemainingTimeText, IsNegativeBeyondTheEnd)
{
    EXPECT_EQ(remainingTimeText(30, 35, false), "00:-5");
    EXPECT_EQ(remainingTimeText(30, 100, false), "-1:-10");
}

TEST(RemainingTimeText, HasMoreThanTwoPlacesForLongVideos)
{
    EXPECT_EQ(remainingTimeText(6000, 0, false), "100:00");
}

TEST(RemainingTimeText, IsEmptyForANegativeTotal)
{
    EXPECT_EQ(remainingTimeText(-1, 0, false), "");
}

TEST(RemainingTimeText, OfZeroOrLessThanASecondIsZero)
{
    EXPECT_EQ(remainingTimeText(0, 0, false), "00:00");
    EXPECT_EQ(remainingTimeText(0.5F, 0, false), "00:00");
}

TEST(DecodedTitle, TurnsPlusIntoBlankDecodesEscapesAndTrims)
{
    EXPECT_EQ(decodedTitle("Buy+now%21%20"), "Buy now!");
}

TEST(DecodedTitle, KeepsAnEscapedPlus)
{
    EXPECT_EQ(decodedTitle("1%2B1"), "1+1");
}

TEST(DecodedTitle, ReadsEscapesAsUtf8)
{
    EXPECT_EQ(decodedTitle("%E4%BB%8A%E3%81%99%E3%81%90"), "今すぐ");
}

TEST(DecodedTitle, TrimsTabsAndBlanksAtBothEndsOnly)
{
    EXPECT_EQ(decodedTitle("+%09Buy+%09+now%09+"), "Buy \t now");
}

TEST(DecodedTitle, OfBlanksAloneIsEmpty)
{
    EXPECT_EQ(decodedTitle("+%20"), "");
}

TEST(DecodedTitle, OfAMalformedEscapeIsNull)
{
    EXPECT_FALSE(decodedTitle("100%"));
    EXPECT_FALSE(decodedTitle("%FF"));
}

TEST(DecodedTitle, OfNullIsNull)
{
    EXPECT_FALSE(decodedTitle(nullptr));
}

} // namespace
} // namespace qoro
