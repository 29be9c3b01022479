#include "vast/AdDescription.h"
#include "vast/CreativeChoice.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace qoro::vast
{
namespace
{

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

const Surroundings Around{.page = "http://page/0.html", .button = "More", .language = "en", .closes_at_end = false};

/// An ad with one media file.
ResolvedAd playable()
{
    ResolvedAd resolved;
    resolved.ad.title = "Tea & <b>cake</b>";
    resolved.ad.linear.emplace().media_files.push_back({.address = "http://m/v.mp4"});
    resolved.media.chosen = 0;
    return resolved;
}

json description_of(const ResolvedAd& resolved, const Surroundings& around = Around)
{
    return json::parse(ad_description(resolved, around));
}

Companion companion(const std::string& required, std::vector<Resource> resources, const std::string& path = "/a/b[1]")
{
    return {.required = required, .resources = std::move(resources), .path = path};
}

const Resource Image{Resource::Kind::Static, "http://i/c.png", "image/png"};
const Resource Film{Resource::Kind::Static, "http://i/c.swf", "application/x-shockwave-flash"};

// ----------------------------------------------------------------------------------------------------- the description

TEST(AdDescription, ShowsTheVideoOverThePageAndItsTrackersAreEmpty)
{
    ResolvedAd resolved = playable();
    resolved.ad.linear->media_files[0].width = 640;
    resolved.ad.linear->media_files[0].height = 480;
    resolved.ad.linear->trackers.push_back({.event = "start", .address = "http://t/start"});
    const json description = description_of(resolved);

    EXPECT_EQ(description["strVideoUrl"], "http://m/v.mp4");
    EXPECT_EQ(description["strWebViewUrl"], "http://page/0.html");
    EXPECT_EQ(description["fVideoWidth"], 640);
    EXPECT_EQ(description["fVideoHeight"], 480);
    EXPECT_EQ(description["iBufferingSufferTime"], -1);
    EXPECT_THAT(description.dump(), Not(HasSubstr("http://t/start")));
}

TEST(AdDescription, AFileOfUnknownSizeIsTakenAsWide)
{
    const json description = description_of(playable());

    EXPECT_EQ(description["fVideoWidth"], 16);
    EXPECT_EQ(description["fVideoHeight"], 9);
}

TEST(AdDescription, ASkipOffsetIsTheCountdownOfTheCloseButton)
{
    ResolvedAd resolved = playable();
    resolved.ad.linear->duration = 30;
    const auto countdown = [&](const Offset& offset) {
        resolved.ad.linear->skip_offset = offset;
        return description_of(resolved).value("iCloseBtnCountdown", -1);
    };

    EXPECT_EQ(countdown({.value = 5}), 5);
    EXPECT_EQ(countdown({.value = 0}), 0);
    EXPECT_EQ(countdown({.value = 4.2}), 5) << "never before the time that the tag permits";
    EXPECT_EQ(countdown({.value = 50, .percent = true}), 15);
    EXPECT_EQ(countdown({.value = 30}), -1) << "at the end";
    EXPECT_EQ(description_of(resolved)["bIsEndedCloseBtn"], true);
    resolved.ad.linear->duration.reset();
    EXPECT_EQ(countdown({.value = 50, .percent = true}), -1) << "of an unknown duration";
}

TEST(AdDescription, WithoutASkipOffsetTheCloseButtonComesAtTheEnd)
{
    const json description = description_of(playable());

    EXPECT_EQ(description["bIsEndedCloseBtn"], true);
    EXPECT_FALSE(description.contains("iCloseBtnCountdown"));
}

TEST(AdDescription, AnAdOfAPodClosesAtItsEnd)
{
    Surroundings around = Around;
    around.closes_at_end = true;

    EXPECT_EQ(description_of(playable(), around)["bIsAutoClose"], true);
    EXPECT_EQ(description_of(playable())["bIsAutoClose"], false);
}

TEST(AdDescription, AClickThroughIsAButton)
{
    ResolvedAd resolved = playable();
    resolved.ad.linear->click_through = "http://shop/a b";
    const json button = description_of(resolved)["arrayButtonsInfo"].at(0);

    EXPECT_EQ(button["btn_text"], "More");
    EXPECT_EQ(button["launch_type"], "inapp");
    EXPECT_EQ(button["data"]["u"], "http://shop/a%20b");
}

TEST(AdDescription, ACustomClickWithoutAClickThroughIsAButtonThatLeadsNowhere)
{
    ResolvedAd resolved = playable();
    EXPECT_FALSE(description_of(resolved).contains("arrayButtonsInfo"));
    resolved.ad.linear->custom_click.push_back("http://t/custom");

    EXPECT_FALSE(description_of(resolved)["arrayButtonsInfo"].at(0).contains("data"));
}

// ------------------------------------------------------------------------------------------------------------ the page

TEST(AdPage, WithoutACompanionIsAnEndCardWithoutMarkupFromTheTag)
{
    ResolvedAd resolved = playable();
    resolved.ad.advertiser = "\"Tea\" & Co";
    resolved.ad.linear->click_through = "http://shop/?a=</script><script>evil()";
    const std::string page = ad_page(resolved, Around);

    EXPECT_THAT(page, HasSubstr("<h1>Tea &amp; &lt;b&gt;cake&lt;/b&gt;</h1>"));
    EXPECT_THAT(page, HasSubstr("&quot;Tea&quot; &amp; Co"));
    EXPECT_THAT(page, HasSubstr("<button id=\"ad\" type=\"button\">More</button>"));
    EXPECT_THAT(page, HasSubstr("mraid.open("));
    EXPECT_THAT(page, Not(HasSubstr("</script><script>evil")));
}

TEST(AdPage, WithoutAClickThroughHasNoButton)
{
    EXPECT_THAT(ad_page(playable(), Around), Not(HasSubstr("<button")));
}

TEST(AdPage, AStaticCompanionIsAPictureWithItsTextThatOpensItsAddress)
{
    ResolvedAd resolved = playable();
    resolved.ad.companions.push_back(companion("none", {Image}));
    resolved.ad.companions[0].alternative_text = "A \"cup\"";
    resolved.ad.companions[0].click_through = "http://shop/";
    const std::string page = ad_page(resolved, Around);

    EXPECT_THAT(page, HasSubstr("<img src=\"http://i/c.png\" alt=\"A &quot;cup&quot;\">"));
    EXPECT_THAT(page, HasSubstr("mraid.open(\"http://shop/\")"));
}

TEST(AdPage, AnHtmlCompanionIsThePageAndReceivesTheScriptFirst)
{
    ResolvedAd resolved = playable();
    resolved.ad.companions.push_back(companion(
        "none", {{Resource::Kind::Html, "<!DOCTYPE html><HTML><Head lang=x><title>t</title></Head></HTML>"}}));
    const std::string page = ad_page(resolved, Around);

    EXPECT_THAT(page, testing::StartsWith("<!DOCTYPE html><HTML><Head lang=x><!-- receives mraid.js -->"));
    EXPECT_THAT(page, HasSubstr("a[href]")) << "its links open as the kit opens addresses";
}

TEST(AdPage, APieceOfHtmlIsPutIntoAPage)
{
    ResolvedAd resolved = playable();
    resolved.ad.companions.push_back(companion("none", {{Resource::Kind::Html, "<header>Tea</header>"}}));

    EXPECT_THAT(ad_page(resolved, Around), HasSubstr("<body>\n<header>Tea</header>"));
}

/// The page's own frames load nothing.
TEST(AdPage, AFrameIsThePage)
{
    ResolvedAd resolved = playable();
    resolved.ad.companions.push_back(companion("none", {{Resource::Kind::Frame, "http://f/?a&b"}}));

    EXPECT_THAT(ad_description(resolved, Around), HasSubstr("\"strWebViewUrl\": \"http://f/?a&b\""));
}

// ------------------------------------------------------------------------------------------------------ the companion

TEST(ChooseCompanion, TakesTheFirstThatCanBeShown)
{
    const auto choice = choose_companion({companion("none", {Film}), companion("none", {Film, Image})});

    EXPECT_EQ(choice.chosen, 1U);
    EXPECT_EQ(choice.resource, 1U);
    EXPECT_FALSE(choice.lacks_required);
}

TEST(ChooseCompanion, PrefersARequiredOne)
{
    EXPECT_EQ(choose_companion({companion("none", {Image}), companion("all", {Image}, "/w/b[1]")}).chosen, 1U);
    EXPECT_EQ(choose_companion({companion("none", {Image}), companion("any", {Image}, "/w/b[1]")}).chosen, 1U);
}

struct Requirement {
    std::vector<Companion> companions;
    bool lacks;
};

class RequiredCompanions : public testing::TestWithParam<Requirement>
{
};

TEST_P(RequiredCompanions, AreLackingWhereFewerAreShownThanRequired)
{
    EXPECT_EQ(choose_companion(GetParam().companions).lacks_required, GetParam().lacks);
}

INSTANTIATE_TEST_SUITE_P(
    Standard, RequiredCompanions,
    testing::Values(Requirement{{}, false}, Requirement{{companion("none", {Film})}, false},
                    Requirement{{companion("all", {Image})}, false}, Requirement{{companion("all", {Film})}, true},
                    Requirement{{companion("all", {Image}), companion("all", {Image}, "/a/b[2]")}, true},
                    Requirement{{companion("any", {Film}), companion("any", {Image}, "/a/b[2]")}, false},
                    Requirement{{companion("any", {Film})}, true},
                    Requirement{{companion("any", {Image}), companion("any", {Image}, "/w/b[1]")}, true},
                    Requirement{{companion("all", {Image}), companion("any", {Image}, "/w/b[1]")}, true},
                    Requirement{{companion("any", {Film}), companion("none", {Image}, "/w/b[1]")}, true}));

// ------------------------------------------------------------------------------------------------------------ the icon

TEST(ChooseIcon, TakesAdChoicesFirstAndNothingWithoutAPicture)
{
    const Icon other{.program = "other", .resources = {Image}};
    const Icon choices{.program = "adchoices", .resources = {Image}};
    const Icon page{.program = "AdChoices", .resources = {{Resource::Kind::Frame, "http://f/"}}};
    const std::vector<Icon> all{page, other, choices};
    const std::vector<Icon> without{page, other};
    const std::vector<Icon> none{page};

    EXPECT_EQ(choose_icon(all), &all[2]);
    EXPECT_EQ(choose_icon(without), &without[1]);
    EXPECT_EQ(choose_icon(none), nullptr);
}

TEST(NotShown, NamesTheCompanionsAndIconsThatAreLeftOut)
{
    Ad ad;
    ad.companions = {companion("none", {Image}), companion("none", {Image}, "/a/b[2]")};
    ad.linear.emplace().icons = {{.program = "a", .offset = 0, .resources = {Image}},
                                 {.program = "b", .resources = {Image}}};
    const std::vector<Ignored> list = not_shown(ad);

    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0], (Ignored{"Companion", "only one companion is shown", "/a/b[2]"}));
    EXPECT_EQ(list[1].element, "Icon");
}

TEST(ReplaceAddresses, ChangesWhatIsShownAndOpenedAndNoTracker)
{
    ResolvedAd resolved = playable();
    Linear& linear = *resolved.ad.linear;
    linear.click_through = "http://shop/";
    linear.click_tracking = {"http://t/click"};
    linear.icons.push_back({.resources = {Image}, .click_through = "http://why/", .view_tracking = {"http://t/icon"}});
    resolved.ad.companions.push_back(companion("none", {Image, {Resource::Kind::Html, "<p>"}}));
    replace_addresses(resolved, [](const std::string& address) { return address + "!"; });

    EXPECT_EQ(linear.media_files[0].address, "http://m/v.mp4!");
    EXPECT_EQ(linear.click_through, "http://shop/!");
    EXPECT_EQ(linear.click_tracking, std::vector<std::string>{"http://t/click"});
    EXPECT_EQ(linear.icons[0].resources[0].text, "http://i/c.png!");
    EXPECT_EQ(linear.icons[0].click_through, "http://why/!");
    EXPECT_EQ(linear.icons[0].view_tracking, std::vector<std::string>{"http://t/icon"});
    EXPECT_EQ(resolved.ad.companions[0].resources[0].text, "http://i/c.png!");
    EXPECT_EQ(resolved.ad.companions[0].resources[1].text, "<p>");
    EXPECT_EQ(resolved.ad.companions[0].click_through, "") << "nothing stays nothing";
}

} // namespace
} // namespace qoro::vast
