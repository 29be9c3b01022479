#include "desktop/web/ValueJson.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace qoro::test
{
namespace
{

TEST(ValueJson, WritesEveryKindOfValue)
{
    const NSDictionary mapping{{"b", true},   {"i", 7},       {"d", 0.5},
                               {"t", "a\"b"}, {"n", nullptr}, {"l", NSArray{1, "x"}}};
    EXPECT_EQ(json_of(mapping), R"({"b":true,"i":7,"d":0.5,"t":"a\"b","n":null,"l":[1,"x"]})");
}

TEST(ValueJson, DistinguishesAbsentFromEmpty)
{
    EXPECT_EQ(json_of(NSDictionary()), "null");
    EXPECT_EQ(json_of(NSDictionary::dictionary()), "{}");
    EXPECT_EQ(json_of(NSArray()), "null");
    EXPECT_EQ(json_of(NSArray(std::vector<Value>())), "[]");
}

TEST(ValueJson, KeepsWholeNumbersBeyond32Bits)
{
    EXPECT_EQ(json_of(Value(std::int64_t{9007199254740993})), "9007199254740993");
}

TEST(ValueJson, WritesANumberThatIsNotFiniteAsNull)
{
    EXPECT_EQ(json_of(Value(std::nan(""))), "null");
    EXPECT_EQ(json_of(Value(INFINITY)), "null");
}

TEST(ValueJson, ReplacesInvalidUtf8)
{
    EXPECT_EQ(json_of(Value(std::string("a\xff"))), "\"a\xef\xbf\xbd\"");
}

TEST(ValueJson, ReadsWhatItWrites)
{
    const Value value = NSDictionary{{"z", NSArray{true, nullptr, -3, 2.5}}, {"a", NSDictionary{{"t", "ü"}}}};
    EXPECT_EQ(value_of_json(json_of(value)), value);
}

TEST(ValueJson, KeepsTheOrderOfKeys)
{
    EXPECT_EQ(value_of_json(R"({"z":1,"a":2})")->dictionary().allKeys(), (std::vector<std::string>{"z", "a"}));
}

TEST(ValueJson, ReadsAWholeNumberThatIsTooLargeAsADouble)
{
    const std::optional<Value> value = value_of_json("18446744073709551615");
    ASSERT_TRUE(value);
    EXPECT_TRUE(value->is_double());
    EXPECT_EQ(value->doubleValue(), 18446744073709551615.0);
}

TEST(ValueJson, RefusesInvalidJson)
{
    EXPECT_FALSE(value_of_json(""));
    EXPECT_FALSE(value_of_json("{"));
    EXPECT_FALSE(value_of_json("[1] 2"));
    EXPECT_FALSE(value_of_json("undefined"));
}

TEST(ValueJson, RefusesMoreThan256Names)
{
    std::string names = "\"n0\":0";
    for (int n = 1; n < 256; ++n)
        names += ",\"n" + std::to_string(n) + "\":0";
    EXPECT_TRUE(value_of_json("{" + names + "}"));
    EXPECT_FALSE(value_of_json("[{" + names + "},{\"one more\":0}]"));
}

TEST(ValueJson, ParsesInLinearTime)
{
    // Quadratic parsing would take minutes.
    std::string records = "[{}";
    for (int n = 0; n < 1'000'000; ++n)
        records += ",{}";
    const std::optional<Value> value = value_of_json(records + "]");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->array().count(), 1'000'001U);
}

TEST(ValueJson, RefusesTooDeepNesting)
{
    EXPECT_TRUE(value_of_json(std::string(32, '[') + std::string(32, ']')));
    EXPECT_FALSE(value_of_json(std::string(33, '[') + std::string(33, ']')));
    EXPECT_FALSE(value_of_json(std::string(100000, '[') + std::string(100000, ']')));
}

} // namespace
} // namespace qoro::test
