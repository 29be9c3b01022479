#include "Places.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The creatives of docs/creative.md, from examples/creatives, on a phone of 375x812 points. Where the video is a band,
// the page begins below it, at 255 points.

namespace qoro::test
{

namespace
{

using nlohmann::json;

/// A creative's ad, on a device with a handler for web addresses.
class Creative
{
public:
    explicit Creative(const std::string& name)
    {
        std::string folder = (std::filesystem::temp_directory_path() / "creative-XXXXXX").string();
        if (!mkdtemp(folder.data()))
            throw std::runtime_error("no folder could be made");
        folder_ = folder;
        std::ofstream(folder_ / "host.json") << R"({"device": {"canOpen": ["https:"]}})";
        ad.emplace(std::vector<std::string>{"--host", (folder_ / "host.json").string(),
                                            QORO_SOURCE_DIR "/examples/creatives/" + name + ".json"});
    }
    ~Creative() { std::filesystem::remove_all(folder_); }
    Creative(const Creative&) = delete;
    Creative& operator=(const Creative&) = delete;

    std::optional<PlayedAd> ad;

private:
    std::filesystem::path folder_;
};

} // namespace

TEST(PlayCreatives, TheMinimalOneOpensItsShopWhenTheViewerTouchesIt)
{
    Creative minimal("minimal");
    ASSERT_TRUE(minimal.ad->reports({{"what", "mraid"}, {"facts", {{"state", "default"}, {"viewable", true}}}}))
        << minimal.ad->complaints();

    minimal.ad->click(187, 300);

    EXPECT_TRUE(minimal.ad->reports({{"what", "mraid"}, {"do", "open"}, {"url", "https://lumo.example/lamps"}}));
    EXPECT_TRUE(minimal.ad->reports({{"what", "openURL"}, {"url", "https://lumo.example/lamps"}}));
    EXPECT_TRUE(minimal.ad->reports({{"what", "super"}, {"do", "qoroLeaveApplication"}}));
}

TEST(PlayCreatives, TheEndCardsReplayButtonPlaysTheHiddenVideoAgainAndTheOtherCloses)
{
    Creative card("end-card");
    const auto count = [&](const std::string& event) {
        return std::ranges::count_if(card.ad->trace(),
                                     [&](const json& line) { return line.value("event", "") == event; });
    };
    const auto hidden = [&] {
        const auto& trace = card.ad->trace();
        const auto last = std::find_if(trace.rbegin(), trace.rend(), [](const json& line) {
            return line.value("event", "") == "video_visibilitychange";
        });
        return last != trace.rend() && (*last)["data"]["e"]["visibility"] == 0;
    };
    ASSERT_TRUE(card.ad->eventually(hidden)) << card.ad->complaints();
    ASSERT_EQ(count("video_play"), 1);

    // The page begins below the sensor housing (44 points), its first button below the close button (50 points).
    EXPECT_TRUE(card.ad->clicks_until(187, 44 + 50 + 50, [&] { return count("video_play") == 2; })) << "watch again";
    EXPECT_TRUE(card.ad->eventually([&] { return count("video_ended") == 2 && hidden(); }));
    EXPECT_TRUE(card.ad->clicks_until(187, 44 + 50 + 2 * 110 + 50, [&] { return card.ad->exit_status(0) == 0; }));

    EXPECT_TRUE(card.ad->reports({{"what", "mraid"}, {"do", "close"}}));
}

TEST(PlayCreatives, TheOneWithTwoVideosPlaysTheOther)
{
    Creative two("two-videos");
    ASSERT_TRUE(two.ad->reaches_second(1)) << two.ad->complaints();

    EXPECT_TRUE(two.ad->clicks_until(187, 300 + 110, [&] {
        return std::ranges::any_of(two.ad->trace(), [](const json& line) {
            return line.value("do", "") == "create" && line.value("url", "").ends_with("/second.mp4");
        });
    }));
    EXPECT_FALSE(two.ad
                     ->wait_for([](const json& line) {
                         return line.value("what", "") == "request" &&
                                line["url"].get<std::string>().ends_with("/t/start?video=second.mp4");
                     })
                     .is_null());
}

} // namespace qoro::test
