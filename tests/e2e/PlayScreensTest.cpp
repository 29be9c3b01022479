#include "Places.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/Picture.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

// The kit's screens over the demo's video, on a phone of 375x812 points; one point is one pixel of the X server. A page
// in one colour, served to the browser only, shows whether the browser is visible.

namespace qoro::test
{

namespace
{

constexpr Colour PageColour{0x20, 0xa0, 0x40};
constexpr Colour OtherColour{0x40, 0x20, 0xa0};
constexpr Colour Black{0, 0, 0};
constexpr Colour BarColour{0xf7, 0xf7, 0xf7};

/// An ad with the demo's video and one button, and a server for the button's page.
class PlayScreens : public testing::Test
{
protected:
    PlayScreens()
    {
        std::string name = (std::filesystem::temp_directory_path() / "screens-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        std::filesystem::copy_file(QORO_SOURCE_DIR "/examples/demo/clip.mp4", folder_ + "/clip.mp4");
        server_.serve("/landing", {.body = "<body style='background:#20a040'>", .type = "text/html"});
        server_.serve("/form", {.body = "<body style='background:#20a040'><input autofocus style='position:fixed;"
                                        "left:20px;top:100px;width:200px;height:60px' "
                                        "oninput='if (value === \"hh\") location = \"/landing2\"'>",
                                .type = "text/html"});
        server_.serve("/links", {.body = "<body style='margin:0;background:#20a040'>"
                                         "<a href='tel:+123' style='display:block;height:200px'></a>"
                                         "<a href='/landing2' style='display:block;height:200px'></a>",
                                 .type = "text/html"});
        server_.serve("/landing2", {.body = "<body style='background:#4020a0'>", .type = "text/html"});
    }
    ~PlayScreens() override { std::filesystem::remove_all(folder_); }

    std::string address(const std::string& path) const { return server_.address(path); }

    std::unique_ptr<PlayedAd> play(nlohmann::json properties, std::vector<std::string> options = {})
    {
        nlohmann::json ad{{"strVideoUrl", "clip.mp4"}, {"fVideoWidth", 1280},       {"fVideoHeight", 720},
                          {"portraitModeType", 2},     {"portraitVideoPos", "TOP"}, {"bIsAutoStart", true},
                          {"landscapeModeType", 2},    {"iCloseBtnCountdown", 5},   {"iBufferingSufferTime", -1}};
        ad.update(properties);
        const std::string file = folder_ + "/ad.json";
        std::ofstream(file) << ad;
        options.insert(options.begin(), file);
        return std::make_unique<PlayedAd>(options);
    }
    static nlohmann::json button(const nlohmann::json& action)
    {
        nlohmann::json described{{"btn_text", "Go"}};
        described.update(action);
        return {{"arrayButtonsInfo", {described}}};
    }
    nlohmann::json browser(const std::string& path, nlohmann::json data = nlohmann::json::object()) const
    {
        data["u"] = address(path);
        return button({{"launch_type", "inapp"}, {"data", data}});
    }
    /// Path of a steps file for --steps.
    std::string steps(const nlohmann::json& list) const
    {
        const std::string file = folder_ + "/steps.json";
        std::ofstream(file) << list;
        return file;
    }
    std::vector<std::string> tap_at_second_one() const
    {
        return {"--steps", steps({{{"at", 1.2}, {"tap", "btnActionOne"}}})};
    }

    std::string folder_;
    VideoServer server_;
};

} // namespace

TEST_F(PlayScreens, ALandingPageCoversTheAdUntilItsCloseButtonIsClicked)
{
    const auto ad = play(browser("/landing"), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();
    EXPECT_TRUE(ad->shows(20, 20, PageColour)) << "it fills the screen";

    ad->click(351, 24);

    EXPECT_TRUE(ad->reports({{"what", "super"}, {"do", "checkViewSizeAfterOpenOtherApp"}}));
    EXPECT_TRUE(ad->shows(3, 20, Black)) << "the ad is back, with its black edge above the video";
    ad->press("Escape");
    EXPECT_EQ(ad->exit_status(), 0);
}

TEST_F(PlayScreens, ANavigationBarIsAboveThePageAndItsCloseButtonWorks)
{
    const auto ad = play(browser("/landing", {{"show_nav_bar", true}, {"show_prog_bar", true}}), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();
    EXPECT_TRUE(ad->shows(187, 44, BarColour));

    ad->click(351, 24);

    EXPECT_TRUE(ad->reports({{"what", "super"}, {"do", "checkViewSizeAfterOpenOtherApp"}}));
}

TEST_F(PlayScreens, OnADeviceThatIsTurnedThePageFillsTheScreenAndCanBeLeft)
{
    const auto ad = play(browser("/landing", {{"show_nav_bar", true}}), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();

    ad->press("Left");
    ASSERT_TRUE(ad->shows(700, 300, PageColour));
    EXPECT_TRUE(ad->shows(406, 44, BarColour));
    ad->click(788, 24);

    EXPECT_TRUE(ad->reports({{"what", "super"}, {"do", "checkViewSizeAfterOpenOtherApp"}}));
}

TEST_F(PlayScreens, EscapeLeavesThePageFirstAndTheAdAfterIt)
{
    const auto ad = play(browser("/landing", {{"custom_close", true}}), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();

    ad->press("Escape");
    ASSERT_TRUE(ad->reports({{"what", "super"}, {"do", "checkViewSizeAfterOpenOtherApp"}}));
    EXPECT_EQ(ad->exit_status(0), -1) << "the ad goes on";

    ad->press("Escape");
    EXPECT_EQ(ad->exit_status(), 0);
}

TEST_F(PlayScreens, AFollowedLinkLoadsAndTheBarGoesBack)
{
    const auto ad = play(browser("/links", {{"show_nav_bar", true}}), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 600, PageColour)) << ad->complaints();

    ad->click(187, 350);
    ASSERT_TRUE(ad->shows(187, 600, OtherColour));
    ad->click(24, 24);
    EXPECT_TRUE(ad->shows(187, 600, PageColour));
    ad->click(72, 24);
    EXPECT_TRUE(ad->shows(187, 600, OtherColour));
}

TEST_F(PlayScreens, AFollowedTelephoneLinkIsPassedToTheSystemAndThePageStays)
{
    const auto ad = play(browser("/links"), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 600, PageColour)) << ad->complaints();

    ad->click(187, 100);

    EXPECT_TRUE(ad->reports({{"what", "kit"}, {"do", "page.handOn"}}));
    EXPECT_TRUE(ad->shows(187, 600, PageColour));
}

TEST_F(PlayScreens, AFormOnThePageCanBeFilledIn)
{
    const auto ad = play(browser("/form"), tap_at_second_one());
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();

    ad->click(100, 130);
    ad->press("h");
    ad->press("h");

    EXPECT_TRUE(ad->shows(187, 400, OtherColour)) << "the keys are the page's";
}

TEST_F(PlayScreens, ABrowserWhosePageFailsCanBeLeft)
{
    const auto ad =
        play(button({{"launch_type", "inapp"}, {"data", {{"u", "http://127.0.0.1:1/"}}}}), tap_at_second_one());
    ASSERT_TRUE(ad->reports({{"what", "kit"}, {"do", "browser.expand"}})) << ad->complaints();

    ad->click(351, 24);

    EXPECT_TRUE(ad->reports({{"what", "super"}, {"do", "checkViewSizeAfterOpenOtherApp"}}));
}

TEST_F(PlayScreens, OnAPhoneTheStorePageIsBelowTheVideoAndItsCloseButtonClosesTheAd)
{
    const auto ad = play({{"strStoreId", "org.example.Lamps"}}, {"--store-page", address("/landing") + "?{id}"});
    server_.serve("/landing?org.example.Lamps", {.body = "<body style='background:#20a040'>", .type = "text/html"});
    ASSERT_TRUE(ad->shows(187, 500, PageColour)) << ad->complaints();

    ad->click(351, 279);

    EXPECT_EQ(ad->exit_status(), 0);
    EXPECT_TRUE(ad->hears("onhide", 0));
}

TEST_F(PlayScreens, OnATabletTheStorePageCoversTheAdAndItsCloseButtonKeepsTheAdOpen)
{
    server_.serve("/store/42", {.body = "<body style='background:#20a040'>", .type = "text/html"});
    // The store page appears when the video is paused, here automatically.
    const auto ad = play({{"strStoreId", "42"}, {"arrayPrePauseLocations", {1}}},
                         {"--device", "600x800", "--store-page", address("/store/{id}")});
    ASSERT_TRUE(ad->shows(300, 400, PageColour)) << ad->complaints();

    ad->click(576, 24);

    EXPECT_TRUE(ad->reports({{"what", "kit"}, {"do", "store.dismiss"}}));
    EXPECT_EQ(ad->exit_status(0), -1) << "the ad stays";
}

TEST_F(PlayScreens, AnItemsPageCoversTheAdAndItsCloseButtonReturnsToTheAd)
{
    server_.serve("/store/42", {.body = "<body style='background:#20a040'>", .type = "text/html"});
    std::vector<std::string> options = tap_at_second_one();
    options.insert(options.end(), {"--store-page", address("/store/{id}")});
    const auto ad = play(button({{"action", "open_store"}, {"id", 42}, {"data", nlohmann::json::object()}}), options);
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();

    ad->click(351, 24);

    EXPECT_TRUE(ad->reports({{"what", "super"}, {"do", "closeInAppApplication"}}));
}

} // namespace qoro::test
