#include "platform/Numbers.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <locale>
#include <string>

using namespace qoro;

TEST(Numbers, AreTruncatedTowardZero)
{
    EXPECT_EQ(truncated(2.9), 2);
    EXPECT_EQ(truncated(-2.9), -2);
}

TEST(Numbers, OutsideThirtyTwoBitsAreClamped)
{
    EXPECT_EQ(truncated(2147483646.9), 2147483646);
    EXPECT_EQ(truncated(2147483648.0), 2147483647);
    EXPECT_EQ(truncated(-2147483649.0), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(truncated(std::numeric_limits<double>::infinity()), 2147483647);
    EXPECT_EQ(truncated(-std::numeric_limits<double>::infinity()), std::numeric_limits<std::int32_t>::min());
}

TEST(Numbers, NotANumberTruncatesToZero)
{
    EXPECT_EQ(truncated(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Numbers, AreTruncatedToSixtyFourBitsToo)
{
    EXPECT_EQ(truncated_to_64(-4'294'967'296.75), -4'294'967'296);
    EXPECT_EQ(truncated_to_64(1e300), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(truncated_to_64(-1e300), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(truncated_to_64(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Numbers, AtTheBeginningOfATextAreReadToSixtyFourBits)
{
    EXPECT_EQ(leading_integer(" +9007199254740993 "), 9'007'199'254'740'993);
    EXPECT_EQ(leading_integer("-9007199254740993.9"), -9'007'199'254'740'993);
    EXPECT_EQ(leading_integer("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(leading_integer("9223372036854775808"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(leading_integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(leading_integer("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(leading_integer("12s"), 12);
    for (const char* none : {"", " ", "seven", "--1", "+-1", ".5"})
        EXPECT_EQ(leading_integer(none), 0) << none;
}

TEST(Numbers, AreWrittenWithAFixedCountOfDecimals)
{
    EXPECT_EQ(fixed_text(30, 6), "30.000000");
    EXPECT_EQ(fixed_text(-0.0000005, 6), "-0.000000");
    EXPECT_EQ(fixed_text(2.5, 0), "2");
    EXPECT_EQ(fixed_text(1e300, 1).size(), 303U);
}

TEST(Numbers, OfSinglePrecisionAreWrittenWithSixDecimalsAsTheStandardLibraryWritesThem)
{
    const auto printed = [](double number) {
        std::array<char, 64> text;
        std::snprintf(text.data(), text.size(), "%.6f", number);
        return std::string(text.data());
    };
    for (const float number : {0.0F, -0.0F, 0.5e-6F, 1.5e-6F, 1.0F / 128, 3.0F / 128, 29.9999995F, 8388607.5F, 1e-30F,
                               999999936.0F, 1e9F, -12.25F})
        EXPECT_EQ(fixed_text(number, 6), printed(number));
    std::uint32_t bits = 1;
    for (int i = 0; i < 5000; ++i) {
        bits = bits * 1'664'525 + 1'013'904'223;
        const float spread = std::ldexp(static_cast<float>(bits >> 8), static_cast<int>(bits >> 27) - 40);
        ASSERT_EQ(fixed_text(spread, 6), printed(spread));
    }
}

TEST(Numbers, ThatAreNotFiniteHaveATextOfTheirOwn)
{
    EXPECT_EQ(fixed_text(std::numeric_limits<double>::quiet_NaN(), 6), "nan");
    EXPECT_EQ(fixed_text(-std::numeric_limits<double>::quiet_NaN(), 6), "nan");
    EXPECT_EQ(fixed_text(std::numeric_limits<double>::infinity(), 6), "inf");
    EXPECT_EQ(fixed_text(-std::numeric_limits<double>::infinity(), 6), "-inf");
    EXPECT_EQ(shortest_text(-std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(Numbers, AreWrittenInTheFewestDigitsThatGiveThemBack)
{
    EXPECT_EQ(shortest_text(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(shortest_text(0.6F), "0.6");
    EXPECT_EQ(shortest_text(0.0), "0");
    EXPECT_EQ(shortest_text(375.0), "375");
}

TEST(Numbers, OfUsualMagnitudesAreWrittenWithoutAnExponent)
{
    EXPECT_EQ(shortest_text(0.000001), "0.000001");
    EXPECT_EQ(shortest_text(100000000000000.0), "100000000000000");
    EXPECT_EQ(shortest_text(1e15), "1e+15");
    EXPECT_EQ(shortest_text(1e-7), "1e-07");
    EXPECT_EQ(shortest_text(16777216.0F), "16777216");
}

TEST(Numbers, AreWrittenAlikeInEveryLocale)
{
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));

    EXPECT_EQ(fixed_text(0.5, 1), "0.5");
    EXPECT_EQ(shortest_text(0.5), "0.5");

    std::locale::global(before);
}
