#include "Places.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/DemoAd.h"
#include "tests/e2e/Picture.h"
#include "tests/e2e/PlayedAd.h"
#include "tests/e2e/ScreenReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

// The ad and the kit's screens for screen readers and keyboards. The device is a phone of 375x812 points; one point is
// one pixel of the X server.

namespace qoro::test
{

namespace
{

constexpr Colour PageColour{0x20, 0xa0, 0x40};
constexpr Colour OtherColour{0x40, 0x20, 0xa0};

class PlayAccessible : public testing::Test
{
protected:
    PlayAccessible()
    {
        setenv("GTK_A11Y", "atspi", 1);
        std::string name = (std::filesystem::temp_directory_path() / "accessible-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        std::filesystem::copy_file(QORO_SOURCE_DIR "/examples/demo/clip.mp4", folder_ + "/clip.mp4");
        server_.serve("/landing", {.body = "<title>Lamps</title><body style='background:#20a040'>"
                                           "<a href='/other'>further</a>",
                                   .type = "text/html"});
        server_.serve("/form", {.body = "<body style='background:#20a040'><input autofocus style='position:fixed;"
                                        "left:20px;top:100px;width:200px;height:60px' "
                                        "oninput='if (value === \"ha\") location = \"/other\"'>",
                                .type = "text/html"});
        server_.serve("/other", {.body = "<body style='background:#4020a0'><p>Further lamps", .type = "text/html"});
    }
    ~PlayAccessible() override
    {
        unsetenv("GTK_A11Y");
        std::filesystem::remove_all(folder_);
    }

    /// Plays the demo without a time limit for the reader; the viewer's touches keep the controls visible.
    std::unique_ptr<PlayedAd> play_demo(const nlohmann::json& changes = nlohmann::json::object())
    {
        return started({demo_.emplace(changes).file(), "--steps", demo_->touches()});
    }
    /// As above without touches: the controls hide while the video plays.
    std::unique_ptr<PlayedAd> play_demo_untouched() { return started({demo_.emplace().file()}); }
    static std::unique_ptr<PlayedAd> started(const std::vector<std::string>& arguments)
    {
        return std::make_unique<PlayedAd>(arguments);
    }
    /// Starts an ad and taps its button: the browser covers the ad.
    std::unique_ptr<PlayedAd> play_browser(const std::string& path) const
    {
        const nlohmann::json button{{"btn_text", "Go"},
                                    {"launch_type", "inapp"},
                                    {"data", {{"u", server_.address(path)}, {"show_nav_bar", true}}}};
        const nlohmann::json ad{{"strVideoUrl", "clip.mp4"},  {"fVideoWidth", 1280},
                                {"fVideoHeight", 720},        {"portraitModeType", 2},
                                {"portraitVideoPos", "TOP"},  {"bIsAutoStart", true},
                                {"landscapeModeType", 2},     {"iCloseBtnCountdown", 5},
                                {"iBufferingSufferTime", -1}, {"arrayButtonsInfo", {button}}};
        std::ofstream(folder_ + "/ad.json") << ad;
        std::ofstream(folder_ + "/steps.json") << nlohmann::json{{{"at", 1.2}, {"tap", "btnActionOne"}}};
        return std::make_unique<PlayedAd>(
            std::vector<std::string>{folder_ + "/ad.json", "--steps", folder_ + "/steps.json"});
    }

    /// Presses Tab until the named control has the keyboard focus.
    static bool tab_to(PlayedAd& ad, ScreenReader& reader, const std::string& name)
    {
        std::string now = reader.focused();
        for (int presses = 0; presses < 24 && now != name; ++presses) {
            ad.press("Tab");
            ad.eventually([&, before = now] { return (now = reader.focused()) != before; }, 5);
        }
        return now == name;
    }

    std::string folder_;
    std::optional<DemoAd> demo_;
    VideoServer server_;
};

} // namespace

TEST_F(PlayAccessible, EveryControlOfTheDemoHasItsNameAndItsRole)
{
    const auto ad = play_demo();
    ScreenReader reader(ad->process());

    EXPECT_TRUE(reader.find("push button", "Pause")) << ad->complaints();
    EXPECT_TRUE(reader.find("push button", "Mute"));
    EXPECT_TRUE(reader.find("push button", "Show the controls"));
    EXPECT_TRUE(reader.find("push button", "See all lamps"));
    EXPECT_TRUE(reader.find("push button", "Get one!"));
    EXPECT_TRUE(reader.find("image", "Video"));
    EXPECT_TRUE(reader.find("document text", "Page of the ad"));
    const auto countdown = reader.find("timer", "Can be closed in ", ScreenReader::Beginning);
    ASSERT_TRUE(countdown);
    EXPECT_TRUE(countdown->name.ends_with(" seconds")) << countdown->name;
    EXPECT_FALSE(reader.announces("push button", "Close")) << "it is not there yet";
}

TEST_F(PlayAccessible, TheCloseButtonTakesThePlaceOfTheCountdown)
{
    const auto ad = play_demo({{"iCloseBtnCountdown", 1}});
    ScreenReader reader(ad->process());

    EXPECT_TRUE(reader.find("push button", "Close")) << ad->complaints();
    EXPECT_FALSE(reader.announces("timer", "Can be closed in ", ScreenReader::Beginning));
}

TEST_F(PlayAccessible, MuteReportsItsStateAndCanBeUsedWithoutAPointer)
{
    const auto ad = play_demo();
    ScreenReader reader(ad->process());
    // The button is created with the picture of a muted video; the first volume change sets the right one.
    ASSERT_TRUE(ad->eventually([&] {
        const auto before = reader.find("push button", "Mute");
        return before && !before->pressed;
    })) << ad->complaints();

    EXPECT_TRUE(reader.use("Mute"));

    EXPECT_TRUE(ad->server_gets("/t/mute"));
    EXPECT_TRUE(ad->eventually([&] {
        const auto after = reader.find("push button", "Mute");
        return after && after->pressed;
    }));
}

TEST_F(PlayAccessible, HiddenControlsAreNotExposed)
{
    const auto ad = play_demo_untouched();
    ScreenReader reader(ad->process());
    // The controls hide three seconds after the start.
    ASSERT_TRUE(ad->reaches_second(4)) << ad->complaints();

    EXPECT_TRUE(reader.loses("push button", "Pause"));
    EXPECT_FALSE(reader.use("Pause"));
    // The controls hide again after three seconds, in which a slow reader may miss them; hence retries.
    EXPECT_TRUE(ad->eventually([&] { return reader.use("Show the controls") && reader.use("Pause"); }));
    EXPECT_TRUE(ad->hears("video_pause"));
}

TEST_F(PlayAccessible, TabReachesPlayAndPauseAndTheSpaceBarUsesIt)
{
    const auto ad = play_demo();
    ScreenReader reader(ad->process());
    ASSERT_TRUE(reader.find("push button", "Pause")) << ad->complaints();
    ASSERT_TRUE(tab_to(*ad, reader, "Pause"));

    ad->press("space");

    EXPECT_TRUE(ad->hears("video_pause"));
    EXPECT_TRUE(reader.find("push button", "Play"));
    EXPECT_TRUE(reader.focuses("Play")) << "the keyboard stays where it was";
}

TEST_F(PlayAccessible, AControlThatHidAndShowedItselfRegainsTheFocus)
{
    const auto ad = play_demo_untouched();
    ScreenReader reader(ad->process());
    // The controls of a paused video stay.
    ASSERT_TRUE(ad->hears("video_play")) << ad->complaints();
    ASSERT_TRUE(ad->eventually([&] { return reader.use("Show the controls") && reader.use("Pause"); }));
    ASSERT_TRUE(reader.find("push button", "Play"));
    ASSERT_TRUE(tab_to(*ad, reader, "Play"));

    ad->press("space"); // plays and hides the controls
    ASSERT_TRUE(reader.loses("push button", "Play"));
    ASSERT_TRUE(reader.loses("push button", "Pause"));
    EXPECT_TRUE(reader.focuses("Show the controls")) << "what a finger would reach there";
    ASSERT_TRUE(ad->plays());

    // Shows the controls, then uses the focused one again; shows them again if that took too long.
    EXPECT_TRUE(ad->eventually([&] {
        ad->press("Return");
        return !ad->plays();
    }));
    EXPECT_TRUE(reader.find("push button", "Play"));
    EXPECT_TRUE(reader.focuses("Play"));
}

TEST_F(PlayAccessible, ATwoToneRingShowsTheFocusUntilThePointerIsUsed)
{
    const auto ad = play_demo({{"iCloseBtnCountdown", 1}});
    ScreenReader reader(ad->process());
    ASSERT_TRUE(reader.find("push button", "Close")) << ad->complaints();
    ASSERT_TRUE(tab_to(*ad, reader, "Close"));

    // The close button is at the left edge of the video, 50 points wide; the ring's right side is beside it.
    EXPECT_TRUE(ad->shows([](const Picture& ring) {
        return alike(ring.at(52, 70), {255, 255, 255}) && alike(ring.at(50, 70), {5, 5, 10}) &&
               alike(ring.at(54, 70), {5, 5, 10});
    }));

    ad->click(187, 400);
    EXPECT_TRUE(ad->shows([](const Picture& none) { return !alike(none.at(52, 70), {255, 255, 255}); }));
}

TEST_F(PlayAccessible, TheBrowserExposesItsControlsAndNoneOfTheAdBelow)
{
    const auto ad = play_browser("/landing");
    ScreenReader reader(ad->process());

    ASSERT_TRUE(reader.find("document text", "Lamps")) << ad->complaints();
    const auto back = reader.find("push button", "Back");
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->enabled) << "there is no page to go back to";
    EXPECT_TRUE(reader.find("push button", "Forward"));
    EXPECT_TRUE(reader.find("push button", "Reload"));
    EXPECT_TRUE(reader.find("push button", "Close"));
    EXPECT_TRUE(reader.find("image", "The connection is not secure"));
    EXPECT_TRUE(reader.find("label", server_.address("/landing").substr(7)));
    EXPECT_FALSE(reader.announces("push button", "Go"));
    EXPECT_FALSE(reader.announces("push button", "Show the controls"));
}

TEST_F(PlayAccessible, TheBrowserKeepsTheFocusInsideAndCanBeClosedByKeyboard)
{
    const auto ad = play_browser("/landing");
    ScreenReader reader(ad->process());
    ASSERT_TRUE(reader.find("document text", "Lamps")) << ad->complaints();

    ad->press("Tab");
    EXPECT_TRUE(reader.focuses("Reload")) << "back and forward lead nowhere";
    ad->press("Tab");
    EXPECT_TRUE(reader.focuses("Close"));
    ad->press("Tab");
    EXPECT_TRUE(reader.focuses("Lamps"));
    ad->press("ctrl+Tab");
    EXPECT_TRUE(reader.focuses("Reload")) << "the way out of a page, and around";
    ad->press("shift+Tab");
    ad->press("ctrl+shift+Tab");
    ASSERT_TRUE(reader.focuses("Close"));
    ad->press("Return");

    EXPECT_TRUE(ad->reports({{"what", "super"}, {"do", "checkViewSizeAfterOpenOtherApp"}}));
}

TEST_F(PlayAccessible, InATextFieldArrowsAndLettersGoToThePageAndDoNotTurnTheDevice)
{
    const auto ad = play_browser("/form");
    ASSERT_TRUE(ad->shows(187, 400, PageColour)) << ad->complaints();

    ad->click(100, 178);
    ad->press("a");
    ad->press("Left");
    ad->press("h");
    ASSERT_TRUE(ad->shows(187, 400, OtherColour)) << "the h stands before the a";
    EXPECT_TRUE(ad->shows(187, 700, OtherColour)) << "the device is upright";
}

TEST_F(PlayAccessible, OnAPageWithoutATextFieldTheArrowsTurnTheDevice)
{
    const auto ad = play_browser("/other");
    ASSERT_TRUE(ad->shows(187, 400, OtherColour)) << ad->complaints();

    ad->click(187, 400);
    ad->press("Left");

    EXPECT_TRUE(ad->shows(700, 300, OtherColour));
}

TEST_F(PlayAccessible, OnAGermanDesktopTheBrowserIsInGerman)
{
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("LANGUAGE", "de", 1);
    const auto ad = play_browser("/landing");
    ScreenReader reader(ad->process());

    ASSERT_TRUE(reader.find("document text", "Lamps")) << ad->complaints();
    EXPECT_TRUE(reader.find("push button", "Zurück"));
    EXPECT_TRUE(reader.find("push button", "Schließen"));
    unsetenv("LANGUAGE");
    unsetenv("LC_ALL");
}

TEST_F(PlayAccessible, OnAGermanDesktopTheAdKeepsItsOwnWordsAndNumbersTheirPoint)
{
    ASSERT_EQ(std::system(("localedef -i de_DE -f UTF-8 " + folder_ + "/de_DE.UTF-8").c_str()), 0);
    setenv("LOCPATH", folder_.c_str(), 1);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    const auto ad = play_demo();
    ScreenReader reader(ad->process());
    ASSERT_TRUE(reader.find("push button", "Stumm")) << "the locale is in force";
    EXPECT_TRUE(reader.find("push button", "See all lamps"));
    ASSERT_TRUE(reader.use("Stumm"));
    ASSERT_TRUE(ad->server_gets("/t/progress/3"));
    ASSERT_TRUE(ad->server_gets("/t/mute"));

    for (const nlohmann::json& line : ad->trace()) {
        EXPECT_EQ(line.value("url", "").find(','), std::string::npos) << line;
        EXPECT_EQ(line.value("url", "").find("%2C"), std::string::npos) << line;
        EXPECT_EQ(line.dump().find(R"("volume":"0,)"), std::string::npos) << line;
    }
    unsetenv("LC_ALL");
    unsetenv("LOCPATH");
}

} // namespace qoro::test
