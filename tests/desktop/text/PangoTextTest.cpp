#include "desktop/text/PangoText.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace qoro;

namespace
{
constexpr CGSize Unbounded{9999, 9999};
const FontSpec Arial20{"Arial", 20};

class PangoTextTest : public testing::Test
{
protected:
    PangoText text;
};
} // namespace

TEST_F(PangoTextTest, ArialHasItsOwnWidths)
{
    // Advance widths in 1/1000 em: H 722, e 556, l 222, o 556; at 20 points the factor is 20/1000.
    EXPECT_NEAR(text.measure("Hello", Arial20, Unbounded).width, (722 + 556 + 222 + 222 + 556) * 0.02, 0.1);
}

TEST_F(PangoTextTest, FractionsOfAPointAreKept)
{
    const double at20 = text.measure("Buy now!", Arial20, Unbounded).width;
    const double at13 = text.measure("Buy now!", {"Arial", 13.5}, Unbounded).width;
    EXPECT_NEAR(at13, at20 * 13.5 / 20, 0.1);
    EXPECT_NE(at13, std::round(at13));
}

TEST_F(PangoTextTest, ALineHasTheFontsHeight)
{
    // Ascent 905 and descent 212, in 1/1000 em.
    EXPECT_NEAR(text.measure("Ag", Arial20, Unbounded).height, 20 * 1.117, 1.0);
}

TEST_F(PangoTextTest, AnEmptyTextHasALinesHeightAndANullTextHasNone)
{
    EXPECT_EQ(text.measure("", Arial20, Unbounded).width, 0);
    EXPECT_EQ(text.measure("", Arial20, Unbounded).height, text.measure("A", Arial20, Unbounded).height);
    EXPECT_EQ(text.measure(nullptr, Arial20, Unbounded), CGSize{});
}

TEST_F(PangoTextTest, ATextBreaksByCharacterInsideItsBox)
{
    const CGSize line = text.measure("aaaaaaaaaa", Arial20, Unbounded);
    const CGSize broken = text.measure("aaaaaaaaaa", Arial20, {line.width / 2 + 1, 9999});
    EXPECT_NEAR(broken.height, 2 * line.height, 0.1);
    EXPECT_LE(broken.width, line.width / 2 + 1);
}

TEST_F(PangoTextTest, ATextIsCutToItsBox)
{
    const CGSize cut = text.measure("many lines of a text that is too long", Arial20, {50, 30});
    EXPECT_LE(cut.width, 50);
    EXPECT_EQ(cut.height, 30);
}

TEST_F(PangoTextTest, AnInvalidBoxGivesZero)
{
    EXPECT_EQ(text.measure("A", Arial20, {-5, -5}), CGSize{});
    EXPECT_EQ(text.measure("A", Arial20, {0, 0}), CGSize{});
}

TEST_F(PangoTextTest, TextsInOtherScriptsHaveAWidthToo)
{
    EXPECT_GT(text.measure("日本語 مرحبا 😀", Arial20, Unbounded).width, 20);
}
