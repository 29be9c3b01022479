#include "host/AdObserver.h"

#include "host/OpenedAd.h"
#include "simulator/SimulatedPlatform.h"
#include "tests/host/PlayingAd.h"

#include <gmock/gmock.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

/// Writes a word for each call, and calls a function in each.
struct Notes : AdObserver {
    void shown() override { add("shown"); }
    void first_frame() override { add("first frame"); }
    void playing() override { add("playing"); }
    void clicked_through(const std::string& address) override { add("to " + address); }
    void departed() override { add("departed"); }
    void returned() override { add("returned"); }
    void video_failed(const std::string&) override { add("video failed"); }
    void page_failed(const std::string&) override { add("page failed"); }
    void refused(const std::string& what, const std::string& detail) override { add(what + " refused: " + detail); }
    void closed(const AdOutcome&) override { add("closed"); }

    void add(std::string word)
    {
        words.push_back(std::move(word));
        if (on_call)
            on_call();
    }

    std::vector<std::string> words;
    std::function<void()> on_call;
};

/// The video lasts ten seconds and plays from 0.3 s on.
class AdObserverTest : public testing::Test
{
protected:
    AdObserverTest()
    {
        world.video.duration = 10;
        host.observer = &notes;
    }

    void open()
    {
        platform.emplace(world);
        opened.emplace(
            *platform, ad, [this](const AdOutcome& ended) { outcome = ended; }, host);
    }
    void tap(UIButton QoroVideoWebViewController::*button) { tap_on(*platform, button); }

    World world;
    std::shared_ptr<QoroVideoAd> ad = playing_ad();
    HostSetup host;
    Notes notes;
    std::optional<SimulatedPlatform> platform;
    std::optional<OpenedAd> opened;
    std::optional<AdOutcome> outcome;
};

TEST_F(AdObserverTest, FollowsAnAdFromItsOpeningToItsEnd)
{
    ad->bIsAutoClose = true;
    open();

    platform->run_until(20);

    EXPECT_THAT(notes.words, ElementsAre("shown", "first frame", "playing", "closed"));
}

TEST_F(AdObserverTest, IsNotCalledWithinTheOpening)
{
    open();

    EXPECT_THAT(notes.words, ElementsAre());
}

TEST_F(AdObserverTest, ReceivesPlayingAgainAfterAPause)
{
    open();
    platform->run_until(2);
    tap(&QoroVideoWebViewController::btnPlayAndPause);
    platform->run_until(3);
    tap(&QoroVideoWebViewController::btnPlayAndPause);

    platform->run_until(4);

    EXPECT_THAT(notes.words, ElementsAre("shown", "first frame", "playing", "playing"));
}

TEST_F(AdObserverTest, ReceivesTheAddressOfAClickThroughTheDepartureAndTheReturn)
{
    ad->arrayButtonsInfo = NSArray{Value(
        NSDictionary{{"btn_text", "Buy"}, {"launch_type", "browser"}, {"data", NSDictionary{{"u", "http://shop/"}}}})};
    open();
    platform->run_until(4);
    tap(&QoroVideoWebViewController::btnActionOne);
    platform->run_until(5);

    platform->dispatch([&] { platform->application_did_become_active(); });
    platform->run_until(6);

    EXPECT_THAT(notes.words, IsSupersetOf({"to http://shop/", "departed", "returned"}));
}

TEST_F(AdObserverTest, ReceivesAFailureOfTheVideoAndTheAdStaysOpen)
{
    world.video.error_for_good = 2;
    open();

    platform->run_until(60);

    EXPECT_THAT(notes.words, Contains("video failed"));
    EXPECT_THAT(notes.words, Not(Contains("closed")));
}

TEST_F(AdObserverTest, AVideoThatFailsClosesTheAdByTheHostsWish)
{
    world.video.error_for_good = 2;
    host.close_when_video_fails = true;
    open();

    platform->run_until(60);

    EXPECT_THAT(notes.words, ElementsAre("shown", "first frame", "playing", "video failed", "closed"));
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->end, AdEnd::Host) << "two seconds were played";
    EXPECT_EQ(outcome->error, std::nullopt);
}

TEST_F(AdObserverTest, AnAdOfWhichNothingWasPlayedHasFailed)
{
    world.video.error_for_good = 0;
    host.close_when_video_fails = true;
    open();

    platform->run_until(60);

    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->end, AdEnd::Failed);
    EXPECT_EQ(outcome->error, "the video cannot be played");
}

TEST_F(AdObserverTest, ReceivesARefusedRequest)
{
    host.tracker_limit = true;
    open();
    platform->run_until(1);

    platform->emit(event::RequestRefused{"http://ads.example/t", "too many", 1});
    platform->run_until(2);

    EXPECT_THAT(notes.words, Contains("request refused: http://ads.example/t"));
}

TEST_F(AdObserverTest, MayCloseTheAd)
{
    open();
    notes.on_call = [&] {
        if (notes.words.back() == "playing")
            opened->close();
    };

    platform->run_until(5);

    EXPECT_THAT(notes.words, ElementsAre("shown", "first frame", "playing", "closed"));
}

TEST_F(AdObserverTest, MayDestroyTheAd)
{
    open();
    notes.on_call = [&] {
        if (notes.words.back() == "playing")
            opened.reset();
    };

    platform->run_until(20);

    EXPECT_THAT(notes.words, ElementsAre("shown", "first frame", "playing"));
    EXPECT_FALSE(outcome);
}

} // namespace
} // namespace qoro
