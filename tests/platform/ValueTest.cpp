#include "platform/Value.h"

#include <gtest/gtest.h>

#include <limits>

using namespace qoro;

using Keys = std::vector<std::string>;

TEST(Text, ThatIsNullIsNotTheEmptyText)
{
    EXPECT_FALSE(NSString());
    EXPECT_TRUE(NSString(""));
    EXPECT_EQ(NSString().length(), 0U);
    EXPECT_EQ(NSString().text(), "");
}

TEST(Text, IsNeverEqualWithANullOnEitherSide)
{
    EXPECT_TRUE(NSString("a").isEqualToString("a"));
    EXPECT_FALSE(NSString("a").isEqualToString(nullptr));
    EXPECT_FALSE(NSString().isEqualToString("a"));
    EXPECT_FALSE(NSString().isEqualToString(nullptr));
}

TEST(Text, OfInvalidUtf8IsNull)
{
    EXPECT_EQ(NSString::with_utf8("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x8E\xAC"),
              "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x8E\xAC");
    EXPECT_FALSE(NSString::with_utf8("\x80"));
    EXPECT_FALSE(NSString::with_utf8("\xC3"));
    EXPECT_FALSE(NSString::with_utf8("\xC0\xAF"));
    EXPECT_FALSE(NSString::with_utf8("\xED\xA0\x80"));
    EXPECT_FALSE(NSString::with_utf8("\xF4\x90\x80\x80"));
    EXPECT_FALSE(NSString::with_utf8("\xE2\x82"
                                     "a"));
}

TEST(Text, ReadsAsItsLeadingWholeNumber)
{
    EXPECT_EQ(NSString("  -42 seconds").intValue(), -42);
    EXPECT_EQ(NSString("+7").intValue(), 7);
    EXPECT_EQ(NSString("3.9").intValue(), 3);
    EXPECT_EQ(NSString("seven").intValue(), 0);
    EXPECT_EQ(NSString().intValue(), 0);
    EXPECT_EQ(NSString("99999999999999999999").intValue(), 2147483647);
    EXPECT_EQ(NSString("-99999999999999999999").intValue(), std::numeric_limits<std::int32_t>::min());
}

TEST(Text, ContainsItsParts)
{
    EXPECT_TRUE(NSString("http://ad/").contains("ttp"));
    EXPECT_FALSE(NSString("HTTP://ad/").contains("http"));
    EXPECT_FALSE(NSString().contains(""));
}

TEST(List, ThatIsNullIsNotTheEmptyList)
{
    EXPECT_FALSE(NSArray());
    EXPECT_TRUE(NSArray(std::vector<Value>()));
}

TEST(List, IsNullOutOfRange)
{
    const NSArray list = NSArray::of_strings({"a", "b"});

    EXPECT_EQ(list.count(), 2U);
    EXPECT_EQ(list[1].string(), "b");
    EXPECT_TRUE(list[2].is_null());
    EXPECT_TRUE(NSArray()[0].is_null());
    EXPECT_EQ(NSArray().begin(), NSArray().end());
}

TEST(Dictionary, KeepsItsKeysInTheOrderInWhichTheyCame)
{
    NSDictionary mapping{{"b", 1}, {"a", 2}};
    mapping.setObject(3, "c");
    mapping.setObject(4, "b");
    mapping.removeObjectForKey("a");
    mapping.setObject(5, "a");

    EXPECT_EQ(mapping.allKeys(), (Keys{"b", "c", "a"}));
    EXPECT_EQ(mapping["b"].intValue(), 4);
}

TEST(Dictionary, IsSharedByItsCopies)
{
    NSDictionary mapping = NSDictionary::dictionary();
    NSDictionary same = mapping;
    NSDictionary other = mapping.copy();
    mapping.setObject(true, "start");

    EXPECT_TRUE(same.contains("start"));
    EXPECT_FALSE(other.contains("start"));
}

TEST(Dictionary, ThatIsNullIgnoresInsertionsAndIsEmpty)
{
    NSDictionary none;
    none.setObject(1, "a");
    none.removeObjectForKey("a");
    none.removeAllObjects();

    EXPECT_FALSE(none);
    EXPECT_EQ(none.count(), 0U);
    EXPECT_TRUE(none["a"].is_null());
    EXPECT_TRUE(none.allKeys().empty());
    EXPECT_FALSE(none.copy());
}

TEST(AValue, ReadAsAnotherTypeIsNullOrZero)
{
    EXPECT_FALSE(Value(3).string());
    EXPECT_FALSE(Value("text").array());
    EXPECT_FALSE(Value("text").dictionary());
    EXPECT_EQ(Value(NSArray::of_strings({"4"})).intValue(), 0);
    EXPECT_EQ(Value().doubleValue(), 0);
    EXPECT_FALSE(Value(NSDictionary::dictionary()).boolValue());
    EXPECT_FALSE(Value(NSDictionary::dictionary()).stringValue());
}

TEST(AValue, MadeOfANullObjectIsNull)
{
    EXPECT_TRUE(Value(NSString()).is_null());
    EXPECT_TRUE(Value(NSArray()).is_null());
    EXPECT_TRUE(Value(NSDictionary()).is_null());
    EXPECT_TRUE(Value(nullptr).is_null());
}

TEST(AValue, ReadsATextsLeadingNumber)
{
    EXPECT_EQ(Value(" 12.75s").intValue(), 12);
    EXPECT_DOUBLE_EQ(Value("-1.5e2").doubleValue(), -150);
    EXPECT_FLOAT_EQ(Value(".5").floatValue(), 0.5F);
    EXPECT_EQ(Value("inf").doubleValue(), 0);
    EXPECT_EQ(Value("nan").doubleValue(), 0);
    EXPECT_EQ(Value("").doubleValue(), 0);
}

TEST(AValue, BeyondSinglePrecisionIsInfiniteThere)
{
    EXPECT_EQ(Value(1e300).floatValue(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(Value(-1e300).floatValue(), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(Value("1e999").doubleValue(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Value("1e-999").doubleValue(), 0);
}

TEST(AValue, BeyondThirtyTwoBitsIsClamped)
{
    EXPECT_EQ(Value(std::int64_t{1} << 40).intValue(), 2147483647);
    EXPECT_EQ(Value(-1e18).intValue(), std::numeric_limits<std::int32_t>::min());
}

TEST(AValue, IsTrueByItsNumberOrByTheLetterItsTextBeginsWith)
{
    EXPECT_TRUE(Value(0.5).boolValue());
    EXPECT_FALSE(Value(0).boolValue());
    EXPECT_TRUE(Value("YES").boolValue());
    EXPECT_TRUE(Value("true").boolValue());
    EXPECT_TRUE(Value("1").boolValue());
    EXPECT_FALSE(Value("no").boolValue());
    EXPECT_FALSE(Value("0").boolValue());
    EXPECT_FALSE(Value("").boolValue());
}

TEST(AValue, OfANumberReadsAsItsDecimalText)
{
    EXPECT_EQ(Value(3424657440).stringValue(), "3424657440");
    EXPECT_EQ(Value(0.5).stringValue(), "0.5");
    EXPECT_EQ(Value(true).stringValue(), "1");
    EXPECT_EQ(Value("as it is").stringValue(), "as it is");
    EXPECT_FALSE(Value().stringValue());
}

TEST(AValue, EqualsByContentAndOrder)
{
    const NSDictionary mapping{{"a", 1}, {"b", NSArray::of_strings({"x"})}};
    const NSDictionary turned_about{{"b", NSArray::of_strings({"x"})}, {"a", 1}};

    EXPECT_EQ(Value(mapping), Value(mapping.copy()));
    EXPECT_FALSE(Value(mapping) == Value(turned_about));
    EXPECT_EQ(Value(nullptr), Value());
    EXPECT_FALSE(Value(1) == Value("1"));
    EXPECT_FALSE(Value(true) == Value(1));
    EXPECT_FALSE(Value((std::int64_t{1} << 60) + 1) == Value(std::int64_t{1} << 60));
}

TEST(Data, OfNoBytesIsNotNull)
{
    EXPECT_TRUE(NSData(std::string()));
    EXPECT_FALSE(NSData());
    EXPECT_EQ(NSData().view(), "");
}

TEST(Data, OfStaticStorageIsNotCopied)
{
    static constexpr unsigned char bytes[] = {'a', 0, 'b'};

    const NSData data = NSData::dataWithBytesNoCopy(bytes, 3);

    EXPECT_EQ(data.bytes(), bytes);
    EXPECT_EQ(data.view(), std::string_view("a\0b", 3));
}

TEST(AnAddress, IsNullForAnInvalidText)
{
    EXPECT_FALSE(NSURL::URLWithString(nullptr));
    EXPECT_FALSE(NSURL::URLWithString(""));
    EXPECT_FALSE(NSURL::URLWithString("http://ad/a b"));
    EXPECT_FALSE(NSURL::URLWithString("http://ad/\n"));
    EXPECT_FALSE(NSURL::URLWithString("http://ad/%"));
    EXPECT_FALSE(NSURL::URLWithString("http://ad/%4"));
    EXPECT_FALSE(NSURL::URLWithString("http://ad/%zz"));
}

TEST(AnAddress, KeepsItsText)
{
    EXPECT_EQ(NSURL::URLWithString("http://ad/%4A?t={CurrentTime}").absoluteString(), "http://ad/%4A?t={CurrentTime}");
    EXPECT_FALSE(NSURL::URLWithString("http://ad/").is_file());
}

TEST(AnAddress, OfAFileHasItsPath)
{
    const NSURL file = NSURL::fileURLWithPath("/cache/my video.mp4");

    EXPECT_TRUE(file.is_file());
    EXPECT_EQ(file.absoluteString(), "/cache/my video.mp4");
    EXPECT_FALSE(NSURL::fileURLWithPath(nullptr));
}

TEST(PercentEscapes, AreDecodedAsUtf8)
{
    EXPECT_EQ(stringByReplacingPercentEscapes("Buy%20now%21"), "Buy now!");
    EXPECT_EQ(stringByReplacingPercentEscapes("%E2%82%ac"), "\xE2\x82\xAC");
    EXPECT_EQ(stringByReplacingPercentEscapes("a+b"), "a+b");
    EXPECT_EQ(stringByReplacingPercentEscapes(""), "");
}

TEST(PercentEscapes, ThatAreMalformedOrNotUtf8GiveNull)
{
    EXPECT_FALSE(stringByReplacingPercentEscapes("100%"));
    EXPECT_FALSE(stringByReplacingPercentEscapes("%4"));
    EXPECT_FALSE(stringByReplacingPercentEscapes("%G1"));
    EXPECT_FALSE(stringByReplacingPercentEscapes("%E2%82"));
    EXPECT_FALSE(stringByReplacingPercentEscapes(nullptr));
}
