#include "tests/vast/Corpus.h"
#include "tests/vast/Tags.h"
#include "vast/Describe.h"
#include "vast/Reader.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

// Each document of the corpus with its expected description.

namespace qoro::test
{

namespace
{

using Json = nlohmann::json;

/// Removes the words, for people, that the expected descriptions do not have; they are never empty.
void remove_words(Json& description)
{
    description.erase("why");
    for (Json& failed : description["failed"]) {
        EXPECT_NE(failed["why"], "");
        failed.erase("why");
    }
    for (Json& wrapper : description["wrappers"]) {
        EXPECT_EQ(wrapper["why"].is_null(), wrapper["error"].is_null());
        wrapper.erase("why");
    }
    for (Json& ad : description["ads"]) {
        EXPECT_NE(ad["chosenBecause"], "");
        ad.erase("chosenBecause");
        for (Json& ignored : ad["ignored"]) {
            EXPECT_NE(ignored["why"], "");
            ignored.erase("why");
        }
    }
}

/// Replaces each reason against a file of these ads that has the expected words with them.
void replace_reasons(Json& actual, const Json& expected)
{
    for (std::size_t n = 0; n < std::min(actual.size(), expected.size()); ++n) {
        Json& files = actual[n]["mediaFiles"];
        const Json& wanted = expected[n]["mediaFiles"];
        for (std::size_t file = 0; file < std::min(files.size(), wanted.size()); ++file) {
            Json& reason = files[file]["reason"];
            const Json& words = wanted[file]["reason"];
            if (reason.is_string() && words.is_string() &&
                reason.get<std::string>().find(words.get<std::string>()) != std::string::npos)
                reason = words;
        }
    }
}

std::string differences(const Json& expected, const Json& actual)
{
    return Json::diff(expected, actual).dump(1);
}

class Corpus : public testing::TestWithParam<std::string>
{
};

} // namespace

TEST_P(Corpus, ADocumentIsDescribedAsExpected)
{
    const std::string text = corpus_document(GetParam());
    Json expected = corpus_expectation(GetParam());
    expected.erase("session");
    expected.erase("scenario");
    Tags tags;
    tags.world = corpus_network(GetParam());
    tags.options.permits = [](const std::string&, const std::string& to) { return !to.starts_with("http://127."); };

    if (expected.contains("refused")) {
        try {
            vast::read_document(text);
            FAIL() << "the document is not refused";
        } catch (const vast::DocumentError& error) {
            const std::string line = error.what();
            EXPECT_EQ(error.code, expected["refused"]["code"]);
            EXPECT_TRUE(line.starts_with(expected["refused"]["begins"].get<std::string>())) << line;
            EXPECT_EQ(line.find('\n'), std::string::npos);
        }
        return;
    }
    Json actual = Json::parse(vast::describe(tags.resolve_text(text)));
    EXPECT_EQ(tags.calls, 1);
    remove_words(actual);
    replace_reasons(actual["ads"], expected["ads"]);
    if (expected.contains("failed"))
        replace_reasons(actual["failed"], expected["failed"]);
    else
        actual.erase("failed");
    EXPECT_EQ(actual, expected) << differences(expected, actual);
}

INSTANTIATE_TEST_SUITE_P(Documents, Corpus, testing::ValuesIn(corpus_names()),
                         [](const auto& test) { return test_name(test.param); });

TEST(CorpusAsAWhole, HasEveryElementAndAttributeOfTheStandard)
{
    const std::string all = whole_corpus();
    // VAST 2.0 to 4.3, the elements.
    for (const char* element : {"VAST",
                                "Error",
                                "Ad",
                                "InLine",
                                "Wrapper",
                                "AdSystem",
                                "AdTitle",
                                "AdServingId",
                                "Description",
                                "Advertiser",
                                "Pricing",
                                "Survey",
                                "Impression",
                                "Category",
                                "Expires",
                                "ViewableImpression",
                                "Viewable",
                                "NotViewable",
                                "ViewUndetermined",
                                "AdVerifications",
                                "Verification",
                                "JavaScriptResource",
                                "ExecutableResource",
                                "FlashResource",
                                "VerificationParameters",
                                "Extensions",
                                "Extension",
                                "Creatives",
                                "Creative",
                                "UniversalAdId",
                                "CreativeExtensions",
                                "CreativeExtension",
                                "Linear",
                                "Duration",
                                "AdParameters",
                                "MediaFiles",
                                "MediaFile",
                                "Mezzanine",
                                "InteractiveCreativeFile",
                                "ClosedCaptionFiles",
                                "ClosedCaptionFile",
                                "TrackingEvents",
                                "Tracking",
                                "VideoClicks",
                                "ClickThrough",
                                "ClickTracking",
                                "CustomClick",
                                "Icons",
                                "Icon",
                                "StaticResource",
                                "IFrameResource",
                                "HTMLResource",
                                "IconClicks",
                                "IconClickThrough",
                                "IconClickTracking",
                                "IconClickFallbackImages",
                                "IconClickFallbackImage",
                                "IconViewTracking",
                                "NonLinearAds",
                                "NonLinear",
                                "NonLinearClickThrough",
                                "NonLinearClickTracking",
                                "CompanionAds",
                                "Companion",
                                "AltText",
                                "CompanionClickThrough",
                                "CompanionClickTracking",
                                "VASTAdTagURI",
                                "BlockedAdCategories"})
        EXPECT_TRUE(all.find("<" + std::string(element) + ">") != std::string::npos ||
                    all.find("<" + std::string(element) + " ") != std::string::npos)
            << element;
    for (const char* attribute : {"version",
                                  "id",
                                  "sequence",
                                  "conditionalAd",
                                  "adType",
                                  "followAdditionalWrappers",
                                  "allowMultipleAds",
                                  "fallbackOnNoAd",
                                  "model",
                                  "currency",
                                  "authority",
                                  "vendor",
                                  "apiFramework",
                                  "browserOptional",
                                  "type",
                                  "event",
                                  "offset",
                                  "AdID",
                                  "adId",
                                  "idRegistry",
                                  "idValue",
                                  "skipoffset",
                                  "xmlEncoded",
                                  "delivery",
                                  "width",
                                  "height",
                                  "codec",
                                  "bitrate",
                                  "minBitrate",
                                  "maxBitrate",
                                  "scalable",
                                  "maintainAspectRatio",
                                  "fileSize",
                                  "mediaType",
                                  "variableDuration",
                                  "language",
                                  "program",
                                  "xPosition",
                                  "yPosition",
                                  "duration",
                                  "pxratio",
                                  "altText",
                                  "hoverText",
                                  "creativeType",
                                  "required",
                                  "assetWidth",
                                  "assetHeight",
                                  "expandedWidth",
                                  "expandedHeight",
                                  "adSlotID",
                                  "adSlotId",
                                  "renderingMode",
                                  "minSuggestedDuration"})
        EXPECT_NE(all.find(" " + std::string(attribute) + "=\""), std::string::npos) << attribute;
}

TEST(CorpusAsAWhole, HasAtLeastEightyDocumentsEachWithItsDescription)
{
    EXPECT_GE(corpus_names().size(), 80U);
    for (const std::string& name : corpus_names())
        EXPECT_FALSE(corpus_expectation(name).empty()) << name;
}

} // namespace qoro::test
