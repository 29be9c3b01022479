#include "tests/workbench/CheckedAds.h"
#include "workbench/check/TextPlace.h"

#include <gtest/gtest.h>

#include <string>

// The line and column of a finding in its file.

namespace qoro::test
{
namespace
{

BaseScenario tag_of(const std::string& document)
{
    return {.kind = InputKind::Tag, .file = "tag.xml", .text = document, .scenario = ScenarioText("{}")};
}

} // namespace

TEST(CheckPlaces, OfAJsonTextAreKeysAndEntriesOfLists)
{
    const std::string text = "{\n  \"a\": {\"b\": [1, {\"c\": \"]}\\\"\"},\n    [true]]},\n  \"d\": -1.5e3\n}\n";
    using Place = std::optional<TextPlace>;
    EXPECT_EQ(place_in_json(text, "/a"), (Place{{2, 3}}));
    EXPECT_EQ(place_in_json(text, "/a/b"), (Place{{2, 9}}));
    EXPECT_EQ(place_in_json(text, "/a/b/0"), (Place{{2, 15}}));
    EXPECT_EQ(place_in_json(text, "/a/b/1/c"), (Place{{2, 19}}));
    EXPECT_EQ(place_in_json(text, "/a/b/2/0"), (Place{{3, 6}}));
    EXPECT_EQ(place_in_json(text, "/d"), (Place{{4, 3}}));
    EXPECT_EQ(place_in_json(text, "/a/b/3"), std::nullopt);
    EXPECT_EQ(place_in_json(text, "/d/e"), std::nullopt);
    EXPECT_EQ(place_in_json(text, ""), std::nullopt);
    EXPECT_EQ(place_in_json("{\"a\": ", "/a"), std::nullopt) << "no JSON";
}

TEST(CheckPlaces, OfAJsonTextCountCharactersAndReadEscapes)
{
    using Place = std::optional<TextPlace>;
    EXPECT_EQ(place_in_json("{\"ü\": 0, \"x\": 1}", "/x"), (Place{{1, 10}}));
    EXPECT_EQ(place_in_json("\xef\xbb\xbf{\"x\": 1}", "/x"), (Place{{1, 2}})) << "a byte order mark is no character";
    EXPECT_EQ(place_in_json(R"({"a/b~": {"\u0063": 1}})", "/a~1b~0/c"), (Place{{1, 11}}));
}

TEST(CheckPlaces, OfATagAreElements)
{
    const std::string document =
        "<VAST version=\"4.2\">\n <Ad><InLine>\n  <Survey/>\n  <Survey/></InLine></Ad>\n</VAST>";
    using Place = std::optional<TextPlace>;
    EXPECT_EQ(place_in(tag_of(document), "/VAST/Ad/InLine/Survey[2]"), (Place{{4, 4}}));
    EXPECT_EQ(place_in(tag_of(document), "/VAST/@version"), (Place{{1, 2}}));
    EXPECT_EQ(place_in(tag_of(document), "/VAST/Ad/InLine/Pricing"), std::nullopt);
    EXPECT_EQ(place_in(tag_of(""), "/VAST"), std::nullopt) << "a tag of an address";
    // The path may be one of the document that the wrapper leads to.
    EXPECT_EQ(place_in(tag_of("<VAST><Ad><Wrapper/></Ad></VAST>"), "/VAST/Ad"), std::nullopt);
}

TEST(CheckPlaces, AFindingHasThatOfItsPath)
{
    BaseScenario base = base_of(changed(R"({"ad": {"bCanRotate": true}})"));
    base.text = "{\n\"ad\": {\n \"bCanRotate\": true}}";
    const auto findings = found_in(base, Severity::Note, {.devices = false});
    const Finding* finding = of_rule(findings, "setting-without-effect");
    ASSERT_NE(finding, nullptr) << text_of(findings);
    EXPECT_EQ(finding->place, (TextPlace{3, 2}));
}

} // namespace qoro::test
