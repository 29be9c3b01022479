#include "tests/contract/ContractPlatform.h"

#include <cmath>

namespace qoro::test
{

namespace
{
constexpr CGSize Unbounded{9999, 9999};
const FontSpec Arial20{"Arial", 20};
} // namespace

TEST_P(TextContract, ATextHasTheSizeThatTheFontsTableSays)
{
    const CGSize size = platform().text().measure(MeasuredText, Arial20, Unbounded);

    // Each of the five letters is rounded to 1/1024 point, the font's table uses 1/2048 of the size, and a line's
    // height may be rounded up to the font's whole units.
    EXPECT_NEAR(size.width, MeasuredSize.width, 0.1);
    EXPECT_NEAR(size.height, MeasuredSize.height, 0.1);
    EXPECT_NE(size.width, std::round(size.width)) << "fractions of a point are kept";
    EXPECT_NE(size.height, std::round(size.height));
}

TEST_P(TextContract, ALineOfPlainWordsIsAsLongAsItsLettersAreOnAverage)
{
    // Without a font table a letter counts 7 points and a line 16: the average of Arial at 15 points over plain words.
    // Words deviate by up to a tenth, the line's height by the point missing to 15 x 1.117.
    for (const std::string text :
         {"See all lamps", "Learn more about this offer", "the quick brown fox jumps over the lazy dog"}) {
        const CGSize size = platform().text().measure(text, {"Arial", 15}, Unbounded);
        const double expected = 7 * static_cast<double>(text.size());
        EXPECT_NEAR(size.width, expected, expected / 10) << text;
        EXPECT_NEAR(size.height, 16, 1) << text;
    }
}

TEST_P(TextContract, ALongerTextIsWiderAndOfOneLine)
{
    const std::string text = "Install it now";
    double before = 0;
    const double line = platform().text().measure("I", Arial20, Unbounded).height;
    for (std::size_t length = 1; length <= text.size(); ++length) {
        const CGSize size = platform().text().measure(text.substr(0, length), Arial20, Unbounded);
        EXPECT_GT(size.width, before) << length;
        EXPECT_EQ(size.height, line) << length;
        before = size.width;
    }
}

TEST_P(TextContract, ALargerFontMakesNoTextSmaller)
{
    CGSize before;
    for (const double size : {9.0, 13.5, 14.0, 20.0, 40.0}) {
        const CGSize now = platform().text().measure("Install", {"Arial", size}, Unbounded);
        EXPECT_GE(now.width, before.width) << size;
        EXPECT_GE(now.height, before.height) << size;
        before = now;
    }
}

TEST_P(TextContract, TheDefaultFontIsArialAt17)
{
    EXPECT_EQ(platform().text().measure("Install", {}, Unbounded),
              platform().text().measure("Install", {"Arial", 17}, Unbounded));
}

TEST_P(TextContract, AnEmptyTextHasALinesHeightAndANullTextHasNone)
{
    const CGSize empty = platform().text().measure("", Arial20, Unbounded);

    EXPECT_EQ(empty.width, 0);
    EXPECT_EQ(empty.height, platform().text().measure("A", Arial20, Unbounded).height);
    EXPECT_EQ(platform().text().measure(nullptr, Arial20, Unbounded), CGSize{});
}

TEST_P(TextContract, ATextIsCutToItsBox)
{
    const CGSize cut = platform().text().measure("many words that are too long", Arial20, {50, 10});

    EXPECT_LE(cut.width, 50);
    EXPECT_GT(cut.width, 0);
    EXPECT_EQ(cut.height, 10);
}

} // namespace qoro::test
