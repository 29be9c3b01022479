#include "Places.h"
#include "tests/e2e/DemoAd.h"
#include "tests/e2e/Picture.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include <string>

// The demo ad on a phone of 375x812 points; the video's band is at (0, 44, 375, 210.9375) and its page begins below it.
// One point is one pixel of the X server; the window is at its origin.

namespace qoro::test
{

namespace
{

const std::string ShippedAd = QORO_SOURCE_DIR "/examples/demo/ad.json";
constexpr Colour PageBackground{0x17, 0x1a, 0x29};
constexpr Colour Cream{0xff, 0xf2, 0xdb};
constexpr Colour White{255, 255, 255};
constexpr Colour Black{0, 0, 0};

} // namespace

TEST(PlayDemo, TheBandThePageAndTheControlsAreShownAtTheirFrames)
{
    const DemoAd demo;
    PlayedAd ad({demo.file()});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();
    ad.click(47, 453); // the page's "Pause"; the bars of a paused video stay
    ASSERT_TRUE(ad.hears("video_pause"));
    ASSERT_TRUE(ad.shows([](const Picture& look) {
        return look.share_of(White, 162, 125, 50, 50) > 0.05 && look.share_of(Cream, 16, 262, 343, 40) > 0.03;
    })) << "the play button in the band's middle, and the page's headline";
    ad.photograph(ad.folder() + "/paused.png");
    const int second = ad.second();

    ad.click(47, 453); // the page's "Play"
    ASSERT_TRUE(ad.reaches_second(second + 2));
    EXPECT_TRUE(ad.shows([](const Picture& look) { return look.share_of(White, 162, 125, 50, 50) < 0.05; }))
        << "the bars go while it plays";

    const Picture paused(ad.folder() + "/paused.png");
    const Picture later(ad.folder() + "/look.png");
    EXPECT_EQ(share_changed(paused, later, 0, 0, 375, 43), 0) << "nothing moves above the band";
    EXPECT_GT(share_changed(paused, later, 0, 46, 375, 207), 0.1) << "the video moves in the band";
    EXPECT_TRUE(alike(paused.at(5, 260), PageBackground)) << "the page begins below the band";
    EXPECT_TRUE(alike(paused.at(5, 770), PageBackground)) << "and goes down to the lower inset";
    EXPECT_GT(paused.share_of(White, 325, 205, 50, 50), 0.05) << "the mute button at the band's lower right";
    EXPECT_GT(paused.share_of(White, 0, 44, 50, 50), 0.02) << "the countdown at the band's upper left";
}

TEST(PlayDemo, ATouchOfTheVideoShowsTheBarsThatHid)
{
    const DemoAd demo;
    PlayedAd ad({demo.file()});
    const auto has_bars = [](const Picture& look) { return look.share_of(White, 162, 125, 50, 50) > 0.05; };
    ASSERT_TRUE(ad.reaches_second(4)) << ad.complaints();
    ASSERT_TRUE(ad.shows([&](const Picture& look) { return !has_bars(look); }));

    // The bars hide again after three seconds, in which a slow machine may not capture a picture.
    EXPECT_TRUE(ad.eventually([&] {
        ad.click(80, 120);
        ad.photograph(ad.folder() + "/touched.png");
        return has_bars(Picture(ad.folder() + "/touched.png"));
    }));
    EXPECT_TRUE(ad.plays()) << "such a touch does nothing else";
}

/// Maximum difference in brightness of two adjacent pixels.
int sharpest_edge(const Picture& picture, int left, int top, int width, int height)
{
    int sharpest = 0;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x)
            sharpest = std::max(sharpest, std::abs(picture.at(x, y).green - picture.at(x + 1, y).green));
    return sharpest;
}

TEST(PlayDemo, TheCountdownIsAsCrispWhereAPointHasFourPixels)
{
    const DemoAd demo(nlohmann::json{{"iCloseBtnCountdown", 600}});
    PlayedAd ad({"--device", "phone-small", demo.file()}, {"env", "GDK_SCALE=2"});
    ASSERT_TRUE(ad.reaches_second(1)) << ad.complaints();

    EXPECT_TRUE(ad.shows([](const Picture& look) { return look.share_of(White, 0, 0, 82, 82) > 0.02; }))
        << "the countdown, in pixels";
    // If enlarged from half the size, adjacent pixels differ by at most half of the range from black to white.
    EXPECT_GT(sharpest_edge(Picture(ad.folder() + "/look.png"), 0, 0, 80, 82), 160);
}

TEST(PlayDemo, ASessionUnderThePointerSendsEachTrackerOnceWithItsMacrosExpanded)
{
    const DemoAd demo(nlohmann::json{{"strVideoUrl", DemoAd::OwnVideo}, {"iCloseBtnCountdown", 5}});
    PlayedAd ad({demo.file(), "--steps", demo.touches()});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();

    // In portrait: the buttons of the video, then the page's.
    ad.click(187, 149);
    EXPECT_TRUE(ad.server_gets("/t/pause?at="));
    ad.click(350, 230);
    EXPECT_TRUE(ad.server_gets("/t/mute?at="));
    ad.click(117, 453); // the page's own button, now labelled "Unmute"
    EXPECT_TRUE(ad.server_gets("/t/unmute?at="));
    ad.click(187, 149);
    EXPECT_TRUE(ad.server_gets("/t/resume?at="));

    // The video's end, and the close button after the countdown.
    ASSERT_TRUE(ad.server_gets("/t/complete?of=14.000000"));
    EXPECT_TRUE(ad.clicks_until(25, 69, [&] { return ad.hits_of("/t/close?at=") > 0; }));
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();

    for (const std::string path : {"/t/start?at=", "/t/firstQuartile?at=", "/t/midpoint?at=", "/t/thirdQuartile?at=",
                                   "/t/complete?of=", "/t/progress/3?at=", "/t/progress/8?at=", "/t/pause?at=",
                                   "/t/resume?at=", "/t/mute?at=", "/t/unmute?at=", "/t/close?at="})
        EXPECT_EQ(ad.hits_of(path), 1) << path;
    EXPECT_EQ(ad.hits_of("/t/replay"), 0);
    EXPECT_EQ(ad.hits_of("/t/heartbeat"), 0) << "milestones take the heartbeat's place";
    for (const nlohmann::json& line : ad.trace()) {
        EXPECT_EQ(line.value("url", "").find_first_of("{}"), std::string::npos) << line;
    }
}

/// A key that rotates the device from portrait.
class PlayDemoTurned : public testing::TestWithParam<const char*>
{
};

TEST_P(PlayDemoTurned, TheControlsAreUprightForTheViewerAndReactToTaps)
{
    const DemoAd demo;
    PlayedAd ad({demo.file(), "--steps", demo.touches()});
    ASSERT_TRUE(ad.reaches_second(1)) << ad.complaints();
    ad.press(GetParam());
    ASSERT_TRUE(ad.wait_for([](const nlohmann::json& line) {
                      return line.value("event", "") == "video_orientation" && line["data"].contains("e") &&
                             line["data"]["e"]["orientation"] == "landscape";
                  }).is_object());

    EXPECT_TRUE(ad.shows([](const Picture& turned) {
        return alike(turned.at(30, 200), Black) && turned.share_of(White, 768, 331, 44, 44) > 0.02 &&
               turned.share_of(White, 384, 165, 44, 44) > 0.05;
    })) << "the video keeps its aspect ratio on the wide screen; mute at the lower right, pause in the middle";
    ad.click(790, 353);
    EXPECT_TRUE(ad.server_gets("/t/mute?at="));
    ad.click(406, 187);
    EXPECT_TRUE(ad.server_gets("/t/pause?at="));

    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
}

INSTANTIATE_TEST_SUITE_P(Keys, PlayDemoTurned, testing::Values("Left", "Right"),
                         [](const auto& key) { return std::string(key.param); });

TEST(PlayDemo, TheReplayButtonPlaysAgainAndSendsItsTracker)
{
    PlayedAd ad({ShippedAd});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();
    ad.click(258, 453); // the page's "+5 s"
    ASSERT_TRUE(ad.reaches_second(6));
    ad.click(258, 453);
    ASSERT_TRUE(ad.wait_for([](const nlohmann::json& line) {
                      return line["what"] == "console" &&
                             line.value("message", "").starts_with("playbackFinished. Reason: Playback Ended");
                  }).is_object());

    ad.click(187, 149);

    EXPECT_TRUE(ad.server_gets("/t/replay"));
    EXPECT_TRUE(ad.eventually([&] { return ad.hits_of("/t/start") == 2; })) << "a replay reports its milestones anew";
    EXPECT_EQ(ad.hits_of("/t/replay"), 1);
    EXPECT_EQ(ad.hits_of("/t/resume"), 0);
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0);
}

TEST(PlayDemo, ThePageClosesTheAd)
{
    PlayedAd ad({ShippedAd});
    ASSERT_TRUE(ad.page_hears("video_timeupdate")) << ad.complaints();
    ad.click(328, 453);
    EXPECT_EQ(ad.exit_status(), 0);
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
    EXPECT_TRUE(ad.hears("onhide", 0));
}

TEST(PlayDemo, EscapeEndsTheAdBeforeItsCloseButtonAppears)
{
    PlayedAd ad({ShippedAd});
    ASSERT_TRUE(ad.hears("video_play")) << ad.complaints();
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0);
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
}

TEST(PlayDemo, LeavingTheAppPausesTheVideoUntilThePlayCommand)
{
    const DemoAd demo;
    PlayedAd ad({demo.file()});
    ASSERT_TRUE(ad.reaches_second(1)) << ad.complaints();
    ad.press("h");
    ASSERT_TRUE(ad.hears("video_pause"));
    const int second = ad.second();
    ad.press("h");
    ad.click(187, 149);
    EXPECT_TRUE(ad.reaches_second(second + 1));
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0);
}

} // namespace qoro::test
