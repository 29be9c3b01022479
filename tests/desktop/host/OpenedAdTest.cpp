#include "host/OpenedAd.h"
#include "Places.h"

#include "desktop/DesktopPlatform.h"
#include "host/desktop/ServedAd.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/desktop/support/Desktop.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

using namespace qoro;
using namespace qoro::test;

// Like tests/host/OpenedAdTest.cpp, with a real video, a real page and a real screen.

namespace
{
using testing::SizeIs;

constexpr double Deadline = 90;

DesktopPlatform::Options silent_options()
{
    DesktopPlatform::Options options;
    options.silent = true;
    return options;
}

/// Counts the failures and play commands of the video, and notes the failure of the page.
struct FailureCount final : EventSink {
    void receive(const Event& event) override
    {
        video += std::holds_alternative<event::PlayerFailed>(event) ? 1 : 0;
        plays += std::holds_alternative<event::PlayerStarted>(event) ? 1 : 0;
        page |= std::holds_alternative<event::AdFailed>(event);
    }
    int video = 0;
    /// The number of play commands from the controller.
    int plays = 0;
    bool page = false;
};

class OpenedAdOnTheDesktopTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    /// Opens an ad whose video lasts four seconds, and waits until it reports its end to the host.
    /// @param more further properties, each preceded by a comma
    void play(const std::string& more)
    {
        std::filesystem::copy_file(QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4", folder.path("clip.mp4"));
        folder.write("ad.json", R"({"strVideoUrl": "clip.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
            "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true)" +
                                    more + "}");
        DesktopPlatform platform(silent_options());
        const ServedAd served(folder.path("ad.json"));
        platform.display().show();
        const OpenedAd ad(platform, served.ad(), [this](const AdOutcome& outcome) { outcomes.push_back(outcome); });
        platform.loop().run_until([this] { return !outcomes.empty(); }, Deadline);
        platform.loop().run_until([] { return false; }, 0.2);
    }

    const ScratchFolder folder;
    std::vector<AdOutcome> outcomes;
};
} // namespace

TEST_F(OpenedAdOnTheDesktopTest, AnAdThatClosesAtItsVideosEndReportsTheTimePlayed)
{
    play(R"(, "bIsAutoClose": true)");

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Video);
    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_TRUE(outcomes[0].videos[0].reached_end);
    EXPECT_NEAR(outcomes[0].videos[0].duration.value_or(0), 4, 0.1);
    EXPECT_NEAR(outcomes[0].videos[0].played, 4, 0.1);
    EXPECT_EQ(outcomes[0].videos[0].error, std::nullopt);
    EXPECT_EQ(outcomes[0].page_error, std::nullopt);
}

TEST_F(OpenedAdOnTheDesktopTest, APageThatClosesItsAdIsReportedAsTheCause)
{
    folder.write("page.html", R"(<!DOCTYPE html><html><head><script src="mraid.js"></script></head><body><script>
        qoroPlayer.MRAIDClose();
        </script></body></html>)");

    play(R"(, "strWebViewUrl": "page.html")");

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Page);
    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_FALSE(outcomes[0].videos[0].reached_end);
}

TEST_F(OpenedAdOnTheDesktopTest, AMissingVideoAndPageReportTheReason)
{
    folder.write("ad.json", R"({"strVideoUrl": "none.mp4", "strWebViewUrl": "none.html", "fVideoWidth": 16,
        "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true})");
    DesktopPlatform platform(silent_options());
    FailureCount failures;
    platform.set_event_sink(&failures);
    const ServedAd served(folder.path("ad.json"));
    OpenedAd ad(platform, served.ad(), [this](const AdOutcome& outcome) { outcomes.push_back(outcome); });
    platform.loop().run_until([&] { return failures.video > 0 && failures.page; }, Deadline);

    ad.close();
    platform.loop().run_until([this] { return !outcomes.empty(); }, Deadline);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Host);
    EXPECT_NE(outcomes[0].page_error.value_or(""), "");
    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_NE(outcomes[0].videos[0].error.value_or(""), "");
}

namespace
{

VideoServer::Answer whole_video()
{
    std::ifstream file(QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4", std::ios::binary);
    VideoServer::Answer answer;
    answer.body = {std::istreambuf_iterator<char>(file), {}};
    return answer;
}

/// An ad whose video comes from a server.
class OpenedAdOfAServerTest : public OpenedAdOnTheDesktopTest
{
protected:
    /// Opens the ad, waits until it ends or its video has failed this often, and closes it.
    void open(int failures_until_closed)
    {
        folder.write("ad.json", R"({"strVideoUrl": ")" + server.address("/v.mp4") + R"(", "fVideoWidth": 16,
            "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true,
            "bIsAutoClose": true})");
        DesktopPlatform platform(silent_options());
        platform.set_event_sink(&failures);
        const ServedAd served(folder.path("ad.json"));
        OpenedAd ad(platform, served.ad(), [this](const AdOutcome& outcome) { outcomes.push_back(outcome); });
        platform.loop().run_until([&] { return !outcomes.empty() || failures.video == failures_until_closed; },
                                  Deadline);
        // Time for one more failure or play command, which would be an error.
        platform.loop().run_until([&] { return !outcomes.empty(); }, 0.5);
        ad.close();
        platform.loop().run_until([this] { return !outcomes.empty(); }, Deadline);
    }

    VideoServer server;
    FailureCount failures;
};

} // namespace

TEST_F(OpenedAdOfAServerTest, TheVideoPlaysAfterItsServerWasUnavailableOnce)
{
    VideoServer::Answer unavailable;
    unavailable.status = 503;
    unavailable.body = "Sorry";
    server.serve_in_turn("/v.mp4", {unavailable, whole_video()});

    open(2);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Video);
    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_TRUE(outcomes[0].videos[0].reached_end);
    EXPECT_NEAR(outcomes[0].videos[0].played, 4, 0.2);
    EXPECT_EQ(outcomes[0].videos[0].error, "HTTP status 503");
    EXPECT_EQ(failures.video, 1);
    EXPECT_EQ(failures.plays, 1);
}

TEST_F(OpenedAdOfAServerTest, TheVideoPlaysToItsEndThoughItsServerBreaksOffForAWhile)
{
    VideoServer::Answer half = whole_video();
    half.cuts_at = half.body.size() * 6 / 10;
    // The reader itself retries once.
    server.serve_in_turn("/v.mp4", {half, half, half, whole_video()});

    open(4);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Video);
    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_TRUE(outcomes[0].videos[0].reached_end);
    EXPECT_NEAR(outcomes[0].videos[0].played, 4, 0.3) << "the part that had played is not played again";
    EXPECT_GE(failures.video, 1);
}

TEST_F(OpenedAdOfAServerTest, APermanentlyUnavailableServerIsTriedFourTimesInAll)
{
    VideoServer::Answer unavailable;
    unavailable.status = 503;
    unavailable.body = "Sorry";
    server.serve("/v.mp4", unavailable);

    open(4);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Host);
    EXPECT_EQ(failures.video, 4);
    EXPECT_EQ(failures.plays, 4) << "the last one reaches a player that has given up";
    EXPECT_EQ(server.requests(), 4);
}
