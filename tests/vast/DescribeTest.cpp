#include "vast/Describe.h"
#include "tests/vast/Tags.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <string>

// The shape of a description. Its values: CorpusTest.cpp.

namespace qoro::test
{

namespace
{

using Json = nlohmann::json;

std::set<std::string> keys(const Json& object)
{
    std::set<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.insert(key);
    return keys;
}

bool has_keys(const Json& object, const std::set<std::string>& expected)
{
    const auto all = keys(object);
    return std::ranges::includes(all, expected);
}

} // namespace

TEST(VastDescribe, EveryKeyIsPresentThoughTheDocumentHasNone)
{
    Tags tags;
    const Json none = Json::parse(vast::describe(tags.resolve_text("<VAST/>")));
    EXPECT_TRUE(has_keys(none, {"version", "wrappers", "ads", "error", "errors"})) << none;
    EXPECT_TRUE(none["version"].is_null());
    EXPECT_EQ(none["ads"], Json::array());
    EXPECT_EQ(none["errors"], Json::array());
    EXPECT_EQ(none["error"], 303);

    std::string text = vast_of(inline_ad("1"));
    text.insert(text.find("</Linear>"), "<Icons><Icon/></Icons>");
    text.insert(text.find("</Creatives>"), "<Creative><CompanionAds><Companion/></CompanionAds></Creative>");
    text.insert(text.find("<Creatives>"), "<AdVerifications><Verification/></AdVerifications>");
    const Json one = Json::parse(vast::describe(tags.resolve_text(text)));
    EXPECT_TRUE(one["error"].is_null());
    const Json& ad = one["ads"][0];
    EXPECT_TRUE(has_keys(
        ad, {"id",       "sequence",     "system",        "title",       "advertiser",  "adType",   "universalAdIds",
             "duration", "skipOffset",   "mediaFiles",    "chosen",      "impressions", "trackers", "viewable",
             "errors",   "clickThrough", "clickTracking", "customClick", "companions",  "icons",    "verifications",
             "ignored"}))
        << ad;
    EXPECT_EQ(ad["trackers"], Json::object());
    EXPECT_TRUE(has_keys(ad["mediaFiles"][0],
                         {"address", "type", "delivery", "width", "height", "bitrate", "codec", "usable", "reason"}));
    EXPECT_EQ(keys(ad["viewable"]), (std::set<std::string>{"viewable", "notViewable", "viewUndetermined"}));
    EXPECT_TRUE(has_keys(ad["companions"][0], {"width", "height", "required", "kind", "resource", "clickThrough",
                                               "clickTracking", "creativeView"}));
    EXPECT_TRUE(has_keys(ad["icons"][0], {"program", "kind", "resource", "offset", "duration", "clickThrough",
                                          "clickTracking", "viewTracking"}));
    EXPECT_EQ(ad["verifications"], Json::parse(R"([{"vendor": null, "notExecuted": []}])"));
    for (const Json& ignored : ad["ignored"])
        EXPECT_TRUE(has_keys(ignored, {"element", "why"}));
}

TEST(VastDescribe, IsUtf8EvenOfADocumentThatIsNot)
{
    Tags tags;
    std::string text = vast_of(inline_ad("1"));
    text.replace(text.find("<AdTitle>t"), 10, "<AdTitle>a\xff\xc3");
    const std::string description = vast::describe(tags.resolve_text(text));
    EXPECT_EQ(Json::parse(description)["ads"][0]["title"], "a\ufffd\ufffd");
    EXPECT_TRUE(description.ends_with("}\n"));
}

} // namespace qoro::test
