#include "vast/Reader.h"
#include "tests/vast/Tags.h"

#include <gtest/gtest.h>

#include <string>

// What the corpus' descriptions do not show: limits, and values that only other parts of the kit use.

namespace qoro::test
{

namespace
{

using vast::read_document;

std::string repeated(const std::string& text, int times)
{
    std::string result;
    for (int n = 0; n < times; ++n)
        result += text;
    return result;
}

/// The line with which a document is refused; empty for a document that is not.
std::string refusal(const std::string& text, const vast::DocumentLimits& limits = {})
{
    try {
        read_document(text, limits);
        return "";
    } catch (const vast::DocumentError& error) {
        return error.what();
    }
}

} // namespace

TEST(VastReader, TakesTenThousandElementsAndNoMore)
{
    EXPECT_EQ(read_document(vast_of(repeated("\n<Error>http://t.example/e</Error>", 9999))).errors.size(), 9999U);
    EXPECT_EQ(refusal(vast_of(repeated("\n<Error>http://t.example/e</Error>", 10000))),
              "line 10001, column 2: the document has more than 10000 elements");
}

TEST(VastReader, TakesFiveMebibytesAndNoMore)
{
    const std::string begin = "<VAST version=\"3.0\"><!--";
    const std::string end = "--></VAST>";
    const std::size_t most = 5242880;
    const std::string filling(most - begin.size() - end.size(), 'x');

    EXPECT_EQ(refusal(begin + filling + end), "");
    EXPECT_EQ(refusal(begin + filling + "x" + end), "byte 5242881: the document is larger than 5242880 bytes");
}

TEST(VastReader, CountsLevelsOfElementsFromTheRoot)
{
    const vast::DocumentLimits three{.depth = 3};
    EXPECT_EQ(refusal("<VAST version=\"3.0\"><a><b>text</b></a></VAST>", three), "");
    EXPECT_EQ(refusal("<VAST version=\"3.0\">\n <a><b><c/></b></a></VAST>", three),
              "line 2, column 9: the document has more than 3 levels of elements");
}

TEST(VastReader, AMillionLevelsAreRefusedWithoutRecursion)
{
    EXPECT_NE(refusal(repeated("<a>", 1000000)), "");
    EXPECT_NE(refusal(repeated("<a>", 700000) + repeated("</a>", 700000)), "");
}

TEST(VastReader, ThePlaceOfAFaultCountsCharactersInEveryEncoding)
{
    const vast::DocumentLimits two{.elements = 2};
    const std::u16string text = u"<VAST version=\"3.0\">\n<a>\u00e4\u20ac\U0001d11e</a><b/></VAST>";
    std::string big;
    std::string little;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8U);
        const char low = static_cast<char>(unit & 0xffU);
        big += {high, low};
        little += {low, high};
    }
    const std::string expected = "line 2, column 12: the document has more than 2 elements";
    EXPECT_EQ(refusal("<VAST version=\"3.0\">\n<a>\u00e4\u20ac\U0001d11e</a><b/></VAST>", two), expected);
    EXPECT_EQ(refusal("\xef\xbb\xbf<VAST version=\"3.0\">\n<a>\u00e4\u20ac\U0001d11e</a><b/></VAST>", two), expected);
    EXPECT_EQ(refusal(big, two), expected);
    EXPECT_EQ(refusal(little, two), expected);
    EXPECT_EQ(refusal("\xff\xfe" + little, two), expected);
    EXPECT_EQ(refusal("\xfe\xff" + big, two), expected);
}

TEST(VastReader, EntitiesOfADocumentTypeAreNotExpanded)
{
    const auto document =
        read_document("<!DOCTYPE VAST [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">"
                      "<!ENTITY c \"&b;&b;&b;&b;\">]><VAST version=\"3.0\"><Error>http://t.example/&c;"
                      "</Error></VAST>");
    EXPECT_EQ(document.errors, std::vector<std::string>{"http://t.example/&c;"});
}

TEST(VastReader, TenThousandTrackersAreAllKept)
{
    const std::string trackers = repeated("<Impression>http://t.example/i</Impression>", 9900);
    std::string ad = inline_ad("1");
    ad.insert(ad.find("<Impression>"), trackers);
    EXPECT_EQ(read_document(vast_of(ad)).ads.at(0).impressions.size(), 9901U);
}

TEST(VastReader, EachOfManyAdsHasItsPath)
{
    const auto document = read_document(vast_of(repeated("<Ad/><Other/>", 4999)));
    ASSERT_EQ(document.ads.size(), 4999U);
    EXPECT_EQ(document.ads.front().path, "/VAST/Ad[1]");
    EXPECT_EQ(document.ads.back().path, "/VAST/Ad[4999]");
    EXPECT_EQ(document.ignored.back().path, "/VAST/Other[4999]");
    EXPECT_EQ(document.ads.back().ignored.at(0).path, "/VAST/Ad[4999]");
}

TEST(VastReader, APathHasAPositionOnlyAmongElementsOfTheSameName)
{
    const auto document = read_document(vast_of("<A/><B/><A/><n:A xmlns:n=\"urn:n\"/>"));
    std::vector<std::string> paths;
    for (const auto& ignored : document.ignored)
        paths.push_back(ignored.path);
    EXPECT_EQ(paths, (std::vector<std::string>{"/VAST/A[1]", "/VAST/B", "/VAST/A[2]", "/VAST/A[3]"}));
}

TEST(VastReader, AWrapperSaysHowItLeadsOn)
{
    const auto plain = read_document(vast_of(wrapper_of("http://a/"))).ads.at(0).onward;
    EXPECT_EQ(plain->address, "http://a/");
    EXPECT_TRUE(plain->follow_additional_wrappers);
    EXPECT_FALSE(plain->allow_multiple_ads);
    EXPECT_EQ(plain->fallback_on_no_ad, std::nullopt);

    std::string text = vast_of(wrapper_of("http://a/"));
    text.replace(text.find("<Wrapper>"), 9,
                 "<Wrapper followAdditionalWrappers=\" 0 \" allowMultipleAds=\"1\" fallbackOnNoAd=\"false\">");
    const auto given = read_document(text).ads.at(0).onward;
    EXPECT_FALSE(given->follow_additional_wrappers);
    EXPECT_TRUE(given->allow_multiple_ads);
    EXPECT_EQ(given->fallback_on_no_ad, false);
}

TEST(VastReader, CategoriesKeepTheirAuthority)
{
    std::string text = vast_of(inline_ad("1"));
    text.insert(text.find("<Impression>"), "<Category authority=\"a.example\"> Food, drink </Category><Category/>"
                                           "<AdServingId>s-1</AdServingId>");
    const vast::Ad ad = read_document(text).ads.at(0);
    EXPECT_EQ(ad.categories, (std::vector<vast::Category>{{"a.example", "Food, drink"}}));
    EXPECT_EQ(ad.serving_id, "s-1");

    std::string refusing = vast_of(wrapper_of("http://a/"));
    refusing.insert(refusing.find("<Impression>"),
                    "<BlockedAdCategories authority=\"a.example\">1, ,2,</BlockedAdCategories>"
                    "<BlockedAdCategories>3</BlockedAdCategories>");
    EXPECT_EQ(read_document(refusing).ads.at(0).blocked_categories,
              (std::vector<vast::Category>{{"a.example", "1"}, {"a.example", "2"}, {"", "3"}}));
}

TEST(VastReader, AnIconKeepsItsPlaceAndSize)
{
    std::string text = vast_of(inline_ad("1"));
    text.insert(text.find("</Linear>"), "<Icons><Icon program=\"p\" width=\"20.5\" height=\"10\" xPosition=\"right\" "
                                        "yPosition=\"5\"><StaticResource creativeType=\"image/png\">http://i/</"
                                        "StaticResource></Icon></Icons>");
    const vast::Icon icon = read_document(text).ads.at(0).linear->icons.at(0);
    EXPECT_EQ(icon.width, 20.5);
    EXPECT_EQ(icon.height, 10);
    EXPECT_EQ(icon.x, "right");
    EXPECT_EQ(icon.y, "5");
    EXPECT_EQ(icon.resources.at(0).type, "image/png");
    EXPECT_EQ(icon.offset, std::nullopt);
}

} // namespace qoro::test
