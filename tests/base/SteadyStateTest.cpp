#include "formats/Trace.h"
#include "host/Session.h"
#include "simulator/SimulatedPlatform.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <memory>
#include <string_view>
#include <variant>
#include <vector>

using namespace qoro;
using qoro::test::allocations_so_far;

namespace
{

std::shared_ptr<QoroVideoAd> ad_with_page()
{
    auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = "http://ad/v.mp4";
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitModeType = VIDEO_AND_WEBVIEW;
    ad->landscapeModeType = VIDEO_AND_WEBVIEW;
    ad->portraitVideoPos = TOP;
    ad->bIsAutoStart = true;
    ad->arrayPrePauseLocations = NSArray(std::vector<Value>{}); // ticks every tenth of a second
    return ad;
}

/// An ad that has played for some seconds, with the close guard on. What is repeated allocates no memory any more.
struct SteadyState : testing::Test {
    static constexpr double Played = 8.05;

    SimulatedPlatform platform;
    PlatformScope scope{platform};
    Trace trace{platform.loop(), TraceFormat::Json, [this](std::string_view line) { traced += line.size(); }};
    std::size_t traced = 0;
    Session session{platform, platform, {}, ad_with_page()};

    void SetUp() override
    {
        session.open(0);
        platform.run_until(Played);
    }
    void TearDown() override { platform.set_event_sink(nullptr); }

    QoroVideoWebViewController& ad() { return *session.controller(); }

    /// Allocations of the second of two equal calls: the first may allocate what the second uses again.
    template <typename Operation>
    std::size_t allocations_of_next(Operation&& operation)
    {
        operation();
        const std::size_t before = allocations_so_far();
        operation();
        return allocations_so_far() - before;
    }
};

/// Retains the data of script events, as a listener may.
struct Retainer : EventSink {
    std::vector<Value> data;
    std::vector<NSDictionary> results;

    void receive(const Event& event) override
    {
        if (const auto* sent = std::get_if<event::ScriptEvent>(&event)) {
            data.push_back(*sent->data);
            results.push_back(sent->data->dictionary()["e"].dictionary());
        }
    }
};

} // namespace

TEST_F(SteadyState, ATickAllocatesNothing)
{
    EXPECT_EQ(allocations_of_next([&] { ad().updateRemainderTime(); }), 0U);
}

TEST_F(SteadyState, ATracedTickAllocatesNothing)
{
    platform.set_event_sink(&trace);
    EXPECT_EQ(allocations_of_next([&] { ad().updateRemainderTime(); }), 0U);
    EXPECT_GT(traced, 0U);
}

TEST_F(SteadyState, APortraitLayoutAllocatesNothing)
{
    EXPECT_EQ(allocations_of_next([&] { ad().setPortraitModeScreen(); }), 0U);
}

TEST_F(SteadyState, ALandscapeLayoutOfATurnedDeviceAllocatesNothing)
{
    DeviceChange turn;
    turn.orientation = UIDeviceOrientationLandscapeLeft;
    platform.change_device(turn);
    platform.run_until(Played + 1);
    EXPECT_EQ(allocations_of_next([&] { ad().setLandscapeFullScreenVideo(); }), 0U);
}

TEST_F(SteadyState, AnEventToTheScriptAllocatesNothing)
{
    EXPECT_EQ(allocations_of_next([&] { ad().sendOrientationEvent(); }), 0U);
}

TEST_F(SteadyState, PlayingOnAllocatesNothing)
{
    double until = Played;
    EXPECT_EQ(allocations_of_next([&] { platform.run_until(until += 5); }), 0U);
    EXPECT_EQ(ad().qoroMoviePlayer.playbackState(), MPMoviePlaybackStatePlaying);
}

TEST_F(SteadyState, DataThatAListenerRetainsIsNotUsedAgain)
{
    Retainer retainer;
    platform.set_event_sink(&retainer);
    ad().bIsVideoOrientationLandscape = false;
    ad().sendOrientationEvent();
    ad().bIsVideoOrientationLandscape = true;
    ad().sendOrientationEvent();

    ASSERT_EQ(retainer.results.size(), 2U);
    EXPECT_EQ(retainer.results[0]["orientation"].string(), NSString("portrait"));
    EXPECT_EQ(retainer.results[1]["orientation"].string(), NSString("landscape"));
    // The controller empties the data of an event once it is sent.
    EXPECT_EQ(retainer.data[0].dictionary().count(), 0U);
    EXPECT_EQ(retainer.data[1].dictionary().count(), 0U);
}
