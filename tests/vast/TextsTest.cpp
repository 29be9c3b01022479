#include "vast/Texts.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace qoro::test
{

using vast::Offset;

TEST(VastTexts, ATimeHasHoursMinutesAndSeconds)
{
    EXPECT_EQ(vast::time_in("00:00:30"), 30);
    EXPECT_EQ(vast::time_in("01:02:03.250"), 3723.25);
    EXPECT_EQ(vast::time_in(" \n00:00:00.5\t"), 0.5);
    EXPECT_EQ(vast::time_in("100:00:00"), 360000);
    for (const char* wrong :
         {"",          "30",          "00:30",    "00:00",     "00:00:",    "00:00:5",    "00:00:60",  "00:60:00",
          "-00:00:01", "00:-1:00",    "00:00:-1", "00:00:01.", "00:00:.5",  "00:00:01,5", "00:00:1e1", "0000:00:00",
          "00:000:00", "00:00:00:00", "aa:bb:cc", "00: 1:00",  " 0 :00:00", "00:00:01s",  "+0:00:01"})
        EXPECT_EQ(vast::time_in(wrong), std::nullopt) << wrong;
}

TEST(VastTexts, AnOffsetIsATimeOrAPercentage)
{
    EXPECT_EQ(vast::offset_in("00:00:05"), (Offset{5, false}));
    EXPECT_EQ(vast::offset_in("25%"), (Offset{25, true}));
    EXPECT_EQ(vast::offset_in(" 12.5% "), (Offset{12.5, true}));
    EXPECT_EQ(vast::offset_in("0%"), (Offset{0, true}));
    EXPECT_EQ(vast::offset_in("100%"), (Offset{100, true}));
    for (const char* wrong : {"", "%", "101%", "-1%", "5", "x%", "5 5%", ".5%", "1e1%"})
        EXPECT_EQ(vast::offset_in(wrong), std::nullopt) << wrong;
    EXPECT_EQ((Offset{25, true}).seconds(30), 7.5);
    EXPECT_EQ((Offset{25, true}).seconds(std::nullopt), std::nullopt);
    EXPECT_EQ((Offset{25, false}).seconds(std::nullopt), 25);
}

TEST(VastTexts, NumbersAreDecimalAndNotNegative)
{
    EXPECT_EQ(vast::whole_number_in(" 640 "), 640);
    EXPECT_EQ(vast::whole_number_in("2147483648"), std::nullopt);
    for (const char* wrong : {"", "-1", "+1", "1.5", "640px", "0x10"})
        EXPECT_EQ(vast::whole_number_in(wrong), std::nullopt) << wrong;
    EXPECT_EQ(vast::position_in("1"), 1);
    EXPECT_EQ(vast::position_in("0"), std::nullopt);
    EXPECT_EQ(vast::number_in("1.5"), 1.5);
    EXPECT_EQ(vast::number_in("-1.5"), std::nullopt);
}

TEST(VastTexts, ABooleanIsAWordOrADigit)
{
    for (const char* yes : {"true", "TRUE", " 1 "})
        EXPECT_EQ(vast::boolean_in(yes), true) << yes;
    for (const char* no : {"false", "False", "0"})
        EXPECT_EQ(vast::boolean_in(no), false) << no;
    for (const char* neither : {"", "yes", "2", "truefalse"})
        EXPECT_EQ(vast::boolean_in(neither), std::nullopt) << neither;
}

TEST(VastTexts, AnAddressIsOfTheWebAndHasAHost)
{
    for (const char* address : {"http://a", "https://a/b?[c]", "HTTPS://A/", "http://a/b c", "https://[DOMAIN]/x",
                                "http://a?x=//b/c", "http://a#//b"})
        EXPECT_TRUE(vast::is_address(address)) << address;
    for (const char* other :
         {"", "http:", "http://", "http:///x", "//a/b", "/b", "b", "ftp://a", "javascript:x", "data:,x", "[MACRO]",
          "mailto:a@b", "http:/x//a/b", "http:x//a", "http://?x=//a/b", "http://u@/x", "ftp://a/http://b", "a//b"})
        EXPECT_FALSE(vast::is_address(other)) << other;
}

TEST(VastTexts, WhatAnAddressMayNotHaveIsRequestedPercentEncoded)
{
    EXPECT_EQ(vast::requestable("http://a/b c\t\u00e4?x=[Y]%20"), "http://a/b%20c%09%C3%A4?x=[Y]%20");
    EXPECT_TRUE(vast::has_blanks("a b"));
    EXPECT_TRUE(vast::has_blanks("a\nb"));
    EXPECT_TRUE(vast::has_blanks("a\x7f"));
    EXPECT_TRUE(vast::has_blanks(" a"));
    EXPECT_FALSE(vast::has_blanks(""));
    EXPECT_FALSE(vast::has_blanks("a\u00e4%20b"));
}

} // namespace qoro::test
