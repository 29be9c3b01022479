#include "formats/JsonText.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace qoro
{
namespace
{

std::string text(std::string_view of)
{
    std::string out;
    append_json_text(out, of);
    return out;
}

template <typename Number>
std::string number(Number of)
{
    std::string out;
    append_json(out, of);
    return out;
}

std::string seconds(std::int64_t microseconds)
{
    std::string out;
    append_seconds(out, microseconds);
    return out;
}

TEST(JsonText, EscapesOnlyWhatJsonRequires)
{
    EXPECT_EQ(text("a/b \"c\" \\ d"), R"("a/b \"c\" \\ d")");
    EXPECT_EQ(text("\b\f\n\r\t\x01\x1f\x7f"), "\"\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\"");
    EXPECT_EQ(text("ü€😀"), "\"ü€😀\"");
}

TEST(JsonText, ReplacesInvalidUtf8)
{
    EXPECT_EQ(text("a\xff z"), "\"a\xEF\xBF\xBD z\"");
    EXPECT_EQ(text("\xc0\xaf"), "\"\xEF\xBF\xBD\xEF\xBF\xBD\"");                 // overlong
    EXPECT_EQ(text("\xed\xa0\x80"), "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""); // a surrogate
    EXPECT_EQ(text("\xe2\x82"), "\"\xEF\xBF\xBD\xEF\xBF\xBD\"");                 // truncated
}

TEST(JsonText, WritesANumberWithTheFewestDigitsThatGiveItBack)
{
    EXPECT_EQ(number(0.1), "0.1");
    EXPECT_EQ(number(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(number(210.9375), "210.9375");
    EXPECT_EQ(number(100000.0), "100000");
    EXPECT_EQ(number(-7.0), "-7");
    EXPECT_EQ(number(-0.0), "0");
    EXPECT_EQ(number(1e300), "1e+300");
}

TEST(JsonText, WritesASinglePrecisionNumberByItsOwnFewestDigits)
{
    EXPECT_EQ(number(0.6F), "0.6");
    EXPECT_EQ(number(static_cast<double>(0.6F)), "0.6000000238418579");
}

TEST(JsonText, WritesNumbersThatAreNotFiniteAsNull)
{
    EXPECT_EQ(number(std::nan("")), "null");
    EXPECT_EQ(number(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(number(-std::numeric_limits<float>::infinity()), "null");
}

TEST(JsonText, WritesMicrosecondsAsExactSeconds)
{
    EXPECT_EQ(seconds(0), "0");
    EXPECT_EQ(seconds(1), "0.000001");
    EXPECT_EQ(seconds(100'000), "0.1");
    EXPECT_EQ(seconds(2'000'000), "2");
    EXPECT_EQ(seconds(1'600'050), "1.60005");
    EXPECT_EQ(seconds(1'000'000'000'000'001), "1000000000.000001");
}

TEST(JsonText, WritesNestedValuesInTheirOrder)
{
    const Value value(
        NSDictionary{{"b", 1}, {"a", NSArray{nullptr, true, "x", 0.5}}, {"c", NSDictionary::dictionary()}});

    EXPECT_EQ(number(value), R"({"b":1,"a":[null,true,"x",0.5],"c":{}})");
}

TEST(JsonText, WritesWholeNumbersBeyondAFloatsPrecisionExactly)
{
    EXPECT_EQ(number(Value(std::int64_t{9007199254740993})), "9007199254740993");
}

} // namespace
} // namespace qoro
