#include "host/desktop/Preload.h"

#include "Places.h"
#include "desktop/DesktopPlatform.h"
#include "host/OpenedAd.h"
#include "host/desktop/ServedAd.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/RawHttp.h"
#include "tests/desktop/support/Desktop.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

using namespace qoro;
using namespace qoro::test;

// A video that is fetched and decoded before its ad opens.

namespace
{
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double Deadline = 90;
const std::string Clip = QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4";

std::string clip_bytes()
{
    std::ifstream file(Clip, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What the controller does, in order, until its video plays.
struct PlayerLog final : EventSink {
    void receive(const Event& event) override
    {
        pictures += std::holds_alternative<event::FirstPictureShown>(event) ? 1 : 0;
        if (plays())
            return;
        if (const auto* created = std::get_if<event::PlayerCreated>(&event))
            lines.push_back("created " + std::string(created->url.view()));
        else if (std::holds_alternative<event::PlayerStarted>(event))
            lines.emplace_back("play");
        else if (const auto* posted = std::get_if<event::NotificationPosted>(&event))
            lines.emplace_back(posted->name.view());
        else if (const auto* told = std::get_if<event::ScriptEvent>(&event))
            lines.emplace_back(told->event.view());
        else if (const auto* line = std::get_if<event::Logged>(&event))
            lines.emplace_back(line->message.view());
    }
    bool plays() const { return !lines.empty() && lines.back() == "video_play"; }
    std::vector<std::string> lines;
    int pictures = 0;
};

class PreloadTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    /// @param more further properties, each preceded by a comma
    void write_ad(const std::string& video, const std::string& more = "") const
    {
        folder.write("ad.json", R"({"strVideoUrl": ")" + video + R"(", "fVideoWidth": 16, "fVideoHeight": 9,
            "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true,
            "iBufferingSufferTime": -1)" +
                                    more + "}");
    }
    void open_platform()
    {
        DesktopPlatform::Options options;
        options.silent = true;
        options.video_cache.folder = folder.path("videos");
        platform.emplace(options);
        platform->set_event_sink(&log);
        platform->display().show();
    }
    /// Reads the ad, serves its folder and preloads its video.
    void preload(PreloadOptions options = {})
    {
        if (!platform)
            open_platform();
        served.emplace(folder.path("ad.json"),
                       [this](const AdServerHit& hit) { hits += hit.target.starts_with("/clip.mp4") ? 1 : 0; });
        ahead.emplace(
            *platform, *served->ad(), [this](const std::string& error) { results.push_back(error); },
            std::move(options));
    }
    bool wait_until(const std::function<bool()>& condition) { return platform->loop().run_until(condition, Deadline); }
    void wait_for_result()
    {
        ASSERT_TRUE(wait_until([this] { return !results.empty(); }));
    }
    /// Opens the ad and waits until its video is seen and plays.
    void open()
    {
        ad.emplace(*platform, served->ad(), nullptr);
        EXPECT_TRUE(wait_until([this] { return log.pictures > 0 && log.plays(); }));
    }
    std::vector<CachedVideo> copies() const { return VideoCache({.folder = folder.path("videos")}).videos(); }

    const ScratchFolder folder;
    VideoServer server;
    PlayerLog log;
    std::atomic<int> hits = 0;
    std::vector<std::string> results;
    std::optional<DesktopPlatform> platform;
    std::optional<ServedAd> served;
    std::optional<Preload> ahead;
    std::optional<OpenedAd> ad;
};
} // namespace

TEST_F(PreloadTest, TheAdTakesTheVideoOverWithoutAnotherRequest)
{
    server.serve("/v.mp4", {.body = clip_bytes()});
    write_ad(server.address("/v.mp4"));
    preload();
    wait_for_result();
    EXPECT_THAT(results, ElementsAre(""));
    EXPECT_TRUE(ahead->is_ready());
    const int before = server.requests();

    open();

    EXPECT_EQ(server.requests(), before);
    EXPECT_FALSE(ahead->is_ready());
    EXPECT_EQ(log.pictures, 1);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(PreloadTest, TheControllerSeesTheSameEventsAsWithout)
{
    server.serve("/v.mp4", {.body = clip_bytes()});
    write_ad(server.address("/v.mp4"));
    preload();
    ahead.reset();
    open();
    ad.reset();
    const std::vector<std::string> without = std::exchange(log.lines, {});
    ASSERT_THAT(without, Contains("video_loaded"));
    log.pictures = 0;

    preload();
    wait_for_result();
    open();
    ad.reset();

    EXPECT_EQ(log.lines, without);
}

TEST_F(PreloadTest, AnAdThatOpensEarlyTakesOverWhatIsThere)
{
    server.serve("/v.mp4", {.body = clip_bytes(), .holds_at = 1000});
    write_ad(server.address("/v.mp4"));
    preload();
    ASSERT_TRUE(wait_until([this] { return server.requests() > 0; }));
    ad.emplace(*platform, served->ad(), nullptr);
    server.release();
    EXPECT_TRUE(wait_until([this] { return log.pictures > 0; }));
    EXPECT_THAT(results, IsEmpty()) << "the ad has the video";
}

TEST_F(PreloadTest, AFileOfTheServedFolderIsPreparedAndNotCached)
{
    std::filesystem::copy_file(Clip, folder.path("clip.mp4"));
    write_ad("clip.mp4", R"(, "bIsUseVideoCache": true)");
    preload();
    wait_for_result();
    EXPECT_THAT(results, ElementsAre(""));
    const int before = hits;
    EXPECT_GT(before, 0);

    open();

    EXPECT_EQ(hits, before) << "taken over";
    EXPECT_THAT(copies(), IsEmpty()) << "its address names a port, which is another one next time";
}

TEST_F(PreloadTest, AVideoForTheCacheIsFetchedIntoItAndPlayedFromThere)
{
    const NamesHere names;
    const std::string bytes = clip_bytes();
    server.serve("/v.mp4", {.body = bytes, .holds_at = bytes.size() / 2});
    std::string address = server.address("/v.mp4");
    address.replace(address.find("127.0.0.1"), 9, "ads.example");
    write_ad(address, R"(, "bIsUseVideoCache": true)");
    std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
    PreloadOptions options;
    options.on_progress = [&](std::uint64_t received, std::uint64_t all) { progress.emplace_back(received, all); };
    preload(options);
    // On the main thread: this test's loop runs meanwhile.
    EXPECT_TRUE(wait_until([&] { return !progress.empty(); }));
    EXPECT_THAT(results, IsEmpty());
    server.release();
    wait_for_result();
    EXPECT_THAT(results, ElementsAre(""));
    ASSERT_THAT(copies(), SizeIs(1));
    EXPECT_EQ(copies()[0].address, address);
    ASSERT_FALSE(progress.empty());
    EXPECT_LE(progress[0].first, bytes.size() / 2);
    EXPECT_EQ(progress[0].second, bytes.size());

    open();

    EXPECT_EQ(server.requests(), 1);
    EXPECT_THAT(log.lines, Contains("created " + copies()[0].path));
}

TEST_F(PreloadTest, AServerThatIsTooSlowIsGivenUp)
{
    RawServer slow([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: 100000\r\n\r\n");
        while (connection.send("x"))
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    PreloadOptions options;
    options.least_speed = 1000;
    options.speed_seconds = 0.5;

    write_ad(slow.base() + "/v.mp4");
    preload(options);
    wait_for_result();

    const NamesHere names;
    write_ad("http://ads.example:" + std::to_string(slow.port()) + "/v.mp4", R"(, "bIsUseVideoCache": true)");
    preload(options);
    ASSERT_TRUE(wait_until([this] { return results.size() == 2; }));

    EXPECT_THAT(results, ElementsAre("the server sends less than 1000 bytes a second",
                                     "the server sends less than 1000 bytes a second"));
    EXPECT_FALSE(ahead->is_ready());
}

TEST_F(PreloadTest, ACancelledPreloadIsNotReportedAndLeavesNothing)
{
    const NamesHere names;
    RawServer silent([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: 100000\r\n\r\nhalf");
        connection.wait_for_close();
    });
    const std::string port = std::to_string(silent.port());
    for (const std::string& more : {std::string(), std::string(R"(, "bIsUseVideoCache": true)")}) {
        write_ad("http://ads.example:" + port + "/v.mp4", more);
        const int before = silent.connections();
        preload();
        ASSERT_TRUE(wait_until([&] { return silent.connections() > before; }));
        ahead->cancel();
        EXPECT_FALSE(ahead->is_ready());
        ahead.reset();
    }
    platform->loop().run_until([] { return false; }, 0.2);
    EXPECT_THAT(results, IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(PreloadTest, TheHostsHeadersGoWithTheVideo)
{
    std::atomic<int> with = 0;
    RawServer recorder([&with](const std::string& head, const auto& connection) {
        with += head.find("X-Partner: 7\r\n") != std::string::npos ? 1 : 0;
        connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    open_platform();
    platform->set_origin_headers({{recorder.base(), {{"X-Partner", "7"}}}});
    write_ad(recorder.base() + "/v.mp4");
    preload();
    wait_for_result();
    EXPECT_EQ(with, 1);
}

TEST_F(PreloadTest, AFailureHasItsReason)
{
    write_ad(server.address("/none.mp4"));
    preload();
    wait_for_result();
    const NamesHere names;
    std::string address = server.address("/none.mp4");
    address.replace(address.find("127.0.0.1"), 9, "ads.example");
    write_ad(address, R"(, "bIsUseVideoCache": true)");
    preload();
    ASSERT_TRUE(wait_until([this] { return results.size() == 2; }));
    auto none = std::make_shared<QoroVideoAd>();
    ahead.emplace(*platform, *none, [this](const std::string& error) { results.push_back(error); });
    ASSERT_TRUE(wait_until([this] { return results.size() == 3; }));
    EXPECT_THAT(results, ElementsAre("HTTP status 404", "HTTP status 404", "the ad names no video that can be played"));
}

TEST_F(PreloadTest, TheAdMayBeOpenedWhenItIsReady)
{
    server.serve("/v.mp4", {.body = clip_bytes()});
    write_ad(server.address("/v.mp4"));
    open_platform();
    served.emplace(folder.path("ad.json"));
    ahead.emplace(*platform, *served->ad(), [this](const std::string&) {
        ad.emplace(*platform, served->ad(), nullptr);
        ahead.reset();
    });
    EXPECT_TRUE(wait_until([this] { return log.pictures > 0; }));
    EXPECT_EQ(server.requests(), 1);
}
