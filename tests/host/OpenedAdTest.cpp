#include "host/OpenedAd.h"

#include "simulator/SimulatedPlatform.h"
#include "tests/host/PlayingAd.h"

#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

using testing::SizeIs;

World ten_second_world()
{
    World world;
    world.video.duration = 10;
    return world;
}

/// A host that opens one ad in virtual time, and the outcomes it received.
class OpenedAdTest : public testing::Test
{
protected:
    void open(World world = ten_second_world())
    {
        platform.emplace(std::move(world));
        opened = std::make_unique<OpenedAd>(*platform, ad,
                                            [this](const AdOutcome& outcome) { outcomes.push_back(outcome); });
    }
    void let_pass(double seconds) { platform->run_until(platform->loop().now() + seconds); }
    std::shared_ptr<QoroVideoWebViewController> controller() { return open_controller(*platform); }
    void tap(UIButton QoroVideoWebViewController::*button) { tap_on(*platform, button); }
    void script_says(const std::string& command, const NSArray& arguments = {})
    {
        const auto held = controller();
        platform->dispatch([&] { held->callFromScript({command, arguments}); });
    }
    void lie_down()
    {
        DeviceChange change;
        change.orientation = UIDeviceOrientationLandscapeLeft;
        change.status_bar_orientation = UIInterfaceOrientationLandscapeRight;
        platform->dispatch([&] { platform->change_device(change); });
    }
    void has_button(const NSDictionary& button) { ad->arrayButtonsInfo = NSArray{Value(button)}; }

    std::shared_ptr<QoroVideoAd> ad = playing_ad();
    std::optional<SimulatedPlatform> platform;
    std::unique_ptr<OpenedAd> opened;
    std::vector<AdOutcome> outcomes;
};

// ----------------------------------------------------------------------------------------------------------- the log

TEST_F(OpenedAdTest, TheHostGetsTheLinesOfTheLog)
{
    std::vector<std::pair<ZulixLogTag, std::string>> lines;
    HostSetup host;
    host.log = [&lines](ZulixLogTag level, std::string_view message) { lines.emplace_back(level, message); };
    platform.emplace(ten_second_world());
    opened = std::make_unique<OpenedAd>(*platform, ad, nullptr, host);

    let_pass(12);

    EXPECT_THAT(lines, testing::Contains(std::pair(ZulixLogTagOfInfo, std::string("video play"))));
    EXPECT_THAT(lines, testing::Contains(std::pair(ZulixLogTagOfInfo,
                                                   std::string("playbackFinished. Reason: Playback Ended 10.000000"))));
    const std::size_t before = lines.size();
    opened.reset();
    EXPECT_EQ(lines.size(), before) << "nothing is reported after the ad was destroyed";
}

// ------------------------------------------------------------------------------------------------------ end of an ad

TEST_F(OpenedAdTest, ARunningAdReportsNothing)
{
    open();

    let_pass(60);

    EXPECT_THAT(outcomes, SizeIs(0));
    EXPECT_FALSE(opened->has_ended());
}

TEST_F(OpenedAdTest, TheViewersCloseIsReported)
{
    open();
    let_pass(4);

    tap(&QoroVideoWebViewController::btnClose);
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
    EXPECT_EQ(outcomes[0].lasted, 4);
    EXPECT_EQ(outcomes[0].error, std::nullopt);
}

TEST_F(OpenedAdTest, ThePagesCloseIsReported)
{
    open();
    let_pass(4);

    script_says("MRAIDClose");
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Page);
}

TEST_F(OpenedAdTest, AnAutomaticCloseAtTheVideosEndIsReported)
{
    ad->bIsAutoClose = true;
    open();

    let_pass(20);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Video);
    EXPECT_NEAR(outcomes[0].lasted, 10.3, 1e-6);
}

TEST_F(OpenedAdTest, ACloseByTheViewerAfterTheVideosEndIsTheViewers)
{
    open();
    let_pass(20);

    tap(&QoroVideoWebViewController::btnClose);
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
    EXPECT_TRUE(outcomes[0].videos[0].reached_end);
}

TEST_F(OpenedAdTest, TheHostsCloseIsReported)
{
    open();
    let_pass(4);

    opened->close();
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Host);
    EXPECT_EQ(controller(), nullptr) << "it has left the screen";
}

TEST_F(OpenedAdTest, TheHostsCloseEndsAnAdWhoseCloseButtonHidesTheVideo)
{
    ad->landscapeModeType = VIDEO_AND_WEBVIEW;
    ad->bShowHideVideoBtn = true;
    open();
    lie_down();
    let_pass(4);
    ASSERT_TRUE(controller()->checkVideoNeedToHide());

    opened->close();
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Host);
}

TEST_F(OpenedAdTest, HidingTheVideoIsNoEndAndALaterTapIsACloseByTheViewer)
{
    ad->landscapeModeType = VIDEO_AND_WEBVIEW;
    ad->bShowHideVideoBtn = true;
    open();
    lie_down();
    let_pass(4);

    script_says("MRAIDClose");
    let_pass(1);
    ASSERT_THAT(outcomes, SizeIs(0));
    tap(&QoroVideoWebViewController::btnClose);
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
}

TEST_F(OpenedAdTest, AnAdWithoutAVideoFails)
{
    ad->strVideoUrl = nullptr;
    open();

    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Failed);
    EXPECT_EQ(outcomes[0].error, "the ad names no video");
    EXPECT_THAT(outcomes[0].videos, SizeIs(0));
}

TEST_F(OpenedAdTest, AnAdWithAnEmptyAddressFailsWithTheControllersReason)
{
    ad->strVideoUrl = "";
    open();

    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Failed);
    EXPECT_EQ(outcomes[0].error, "url = nil.");
}

TEST_F(OpenedAdTest, ANullAdFails)
{
    ad = nullptr;
    open();

    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Failed);
}

// ------------------------------------------------------------------------------------------------ time of the report

TEST_F(OpenedAdTest, TheEndIsReportedAsAnEventOfItsOwn)
{
    open();
    let_pass(4);

    tap(&QoroVideoWebViewController::btnClose);

    EXPECT_TRUE(opened->has_ended());
    EXPECT_THAT(outcomes, SizeIs(0)) << "the close is still under way";
}

TEST_F(OpenedAdTest, TheEndIsReportedOnceHoweverOftenTheAdIsClosed)
{
    open();
    let_pass(4);
    const auto held = controller();

    opened->close();
    opened->close();
    platform->dispatch([&] { held->closeAction(); });
    let_pass(60);
    opened->close();
    let_pass(60);

    EXPECT_THAT(outcomes, SizeIs(1));
}

TEST_F(OpenedAdTest, AnAdDestroyedByTheHostLeavesTheScreenAndReportsNothing)
{
    open();
    let_pass(4);

    opened.reset();
    let_pass(60);

    EXPECT_THAT(outcomes, SizeIs(0));
    EXPECT_EQ(controller(), nullptr);
}

TEST_F(OpenedAdTest, APendingEndIsNotReportedAfterTheHostDestroyedTheAd)
{
    open();
    let_pass(4);
    tap(&QoroVideoWebViewController::btnClose);

    opened.reset();
    let_pass(60);

    EXPECT_THAT(outcomes, SizeIs(0));
}

TEST_F(OpenedAdTest, TheHostMayDestroyTheAdInTheCallback)
{
    platform.emplace(ten_second_world());
    opened = std::make_unique<OpenedAd>(*platform, ad, [this](const AdOutcome& outcome) {
        opened.reset();
        outcomes.push_back(outcome);
    });
    let_pass(4);

    tap(&QoroVideoWebViewController::btnClose);
    let_pass(60);

    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
}

TEST_F(OpenedAdTest, TheHostMayOpenTheNextAdInTheCallback)
{
    platform.emplace(ten_second_world());
    const auto keep = [this](const AdOutcome& outcome) { outcomes.push_back(outcome); };
    opened = std::make_unique<OpenedAd>(*platform, ad, [this, keep](const AdOutcome& outcome) {
        keep(outcome);
        opened.reset();
        opened = std::make_unique<OpenedAd>(*platform, playing_ad(), keep);
    });
    let_pass(4);
    tap(&QoroVideoWebViewController::btnClose);
    let_pass(3);

    script_says("MRAIDClose");
    let_pass(0);

    ASSERT_THAT(outcomes, SizeIs(2));
    EXPECT_EQ(outcomes[1].end, AdEnd::Page);
    EXPECT_EQ(outcomes[1].lasted, 3);
}

TEST_F(OpenedAdTest, ASecondAdOnOnePlatformIsRefused)
{
    open();

    EXPECT_THROW(OpenedAd(*platform, playing_ad(), nullptr), std::logic_error);
}

TEST_F(OpenedAdTest, EventsStillReachThePreviousSinkAndOnlyThatOneAfterwards)
{
    struct Counter final : EventSink {
        void receive(const Event&) override { ++count; }
        int count = 0;
    } counter;
    platform.emplace(ten_second_world());
    platform->set_event_sink(&counter);
    opened = std::make_unique<OpenedAd>(*platform, ad, nullptr);
    EXPECT_GT(counter.count, 0);

    opened.reset();

    EXPECT_EQ(platform->event_sink(), &counter);
}

// -------------------------------------------------------------------------------------------------------------- video

TEST_F(OpenedAdTest, ReportsHowMuchOfTheVideoPlayed)
{
    open();
    let_pass(4);

    tap(&QoroVideoWebViewController::btnClose);
    let_pass(0);

    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_EQ(outcomes[0].videos[0].address, "http://ad/v.mp4");
    EXPECT_EQ(outcomes[0].videos[0].duration, 10);
    EXPECT_NEAR(outcomes[0].videos[0].played, 3.7, 1e-6);
    EXPECT_FALSE(outcomes[0].videos[0].reached_end);
    EXPECT_EQ(outcomes[0].videos[0].error, std::nullopt);
}

TEST_F(OpenedAdTest, AVideoThatWasNotLoadedYetHasNoDuration)
{
    open();
    let_pass(0.1);

    opened->close();
    let_pass(0);

    ASSERT_THAT(outcomes[0].videos, SizeIs(1));
    EXPECT_EQ(outcomes[0].videos[0].duration, std::nullopt);
    EXPECT_EQ(outcomes[0].videos[0].played, 0);
}

TEST_F(OpenedAdTest, APauseDoesNotCountAsPlayed)
{
    open();
    let_pass(2.3);
    script_says("setVideoPause");
    let_pass(30);
    script_says("setVideoPlay");
    let_pass(1);

    opened->close();
    let_pass(0);

    EXPECT_NEAR(outcomes[0].videos[0].played, 3, 1e-6);
}

TEST_F(OpenedAdTest, SkippedPartsDoNotCountAsPlayed)
{
    open();
    let_pass(2.3);
    script_says("setVideoSeekToTime", NSArray{8});
    let_pass(1);

    opened->close();
    let_pass(0);

    EXPECT_NEAR(outcomes[0].videos[0].played, 3, 1e-6);
}

TEST_F(OpenedAdTest, ReachingTheVideosEndIsReported)
{
    open();
    let_pass(20);

    opened->close();
    let_pass(0);

    EXPECT_TRUE(outcomes[0].videos[0].reached_end);
    EXPECT_NEAR(outcomes[0].videos[0].played, 10, 1e-6);
}

TEST_F(OpenedAdTest, AStalledVideoCountsOnlyTheTimePlayed)
{
    World world = ten_second_world();
    world.video.stalls = {{.at = 2, .lasts = 5}};
    open(world);
    let_pass(8.3);

    opened->close();
    let_pass(0);

    EXPECT_NEAR(outcomes[0].videos[0].played, 3, 1e-6);
}

TEST_F(OpenedAdTest, AFailedVideoIsReportedAndTheAdContinues)
{
    World world = ten_second_world();
    world.video.error = 2;
    open(world);
    let_pass(4);
    EXPECT_THAT(outcomes, SizeIs(0));

    tap(&QoroVideoWebViewController::btnClose);
    let_pass(0);

    EXPECT_EQ(outcomes[0].end, AdEnd::Viewer);
    EXPECT_TRUE(outcomes[0].videos[0].error.has_value());
}

TEST_F(OpenedAdTest, ThePagesNextVideoIsASecondEntry)
{
    open();
    let_pass(2.3);
    script_says("playNextVideo", NSArray{Value(NSDictionary{{"v_u", "http://ad/second.mp4"}})});
    let_pass(20);

    opened->close();
    let_pass(0);

    ASSERT_THAT(outcomes[0].videos, SizeIs(2));
    EXPECT_NEAR(outcomes[0].videos[0].played, 2, 1e-6);
    EXPECT_FALSE(outcomes[0].videos[0].reached_end);
    EXPECT_EQ(outcomes[0].videos[1].address, "http://ad/second.mp4");
    EXPECT_NEAR(outcomes[0].videos[1].played, 10, 1e-6);
    EXPECT_TRUE(outcomes[0].videos[1].reached_end);
}

// -------------------------------------------------------------------------------------------- page, clicks, impression

TEST_F(OpenedAdTest, AFailedPageIsReportedAndDoesNotEndTheAd)
{
    ad->strWebViewUrl = "http://ad/page.html";
    World world = ten_second_world();
    world.net["http://ad/page.html"] = {.ok = false, .error = "not found", .body = "", .after = 0.1};
    open(world);
    let_pass(4);
    EXPECT_THAT(outcomes, SizeIs(0));

    opened->close();
    let_pass(0);

    EXPECT_EQ(outcomes[0].page_error, "not found");
}

TEST_F(OpenedAdTest, ALoadedPageHasNoError)
{
    ad->strWebViewUrl = "http://ad/page.html";
    open();
    let_pass(4);

    opened->close();
    let_pass(0);

    EXPECT_EQ(outcomes[0].page_error, std::nullopt);
}

TEST_F(OpenedAdTest, AnUntouchedAdHasNoClickThrough)
{
    open();
    let_pass(4);

    opened->close();
    let_pass(0);

    EXPECT_EQ(outcomes[0].click_throughs, 0);
    EXPECT_EQ(outcomes[0].departures, 0);
}

TEST_F(OpenedAdTest, AClickThroughToAnotherProgramIsADeparture)
{
    has_button(
        NSDictionary{{"btn_text", "Buy"}, {"launch_type", "browser"}, {"data", NSDictionary{{"u", "http://shop/"}}}});
    open();
    let_pass(4);
    tap(&QoroVideoWebViewController::btnActionOne);
    let_pass(1);
    tap(&QoroVideoWebViewController::btnActionOne);
    let_pass(1);

    opened->close();
    let_pass(0);

    EXPECT_EQ(outcomes[0].click_throughs, 2);
    EXPECT_EQ(outcomes[0].departures, 2);
}

TEST_F(OpenedAdTest, AClickThroughToThePageInTheAppIsNoDeparture)
{
    has_button(
        NSDictionary{{"btn_text", "Look"}, {"launch_type", "inapp"}, {"data", NSDictionary{{"u", "http://shop/"}}}});
    open();
    let_pass(4);
    const auto held = controller();
    tap(&QoroVideoWebViewController::btnActionOne);
    let_pass(1);

    opened->close();
    let_pass(0);

    EXPECT_EQ(outcomes[0].click_throughs, 1);
    EXPECT_EQ(outcomes[0].departures, 0);
}

TEST_F(OpenedAdTest, ATouchThatOpensAMessageAndAPageIsOneClickThrough)
{
    has_button(NSDictionary{{"btn_text", "Write"},
                            {"action", "send_sms"},
                            {"launch_type", "browser"},
                            {"data", NSDictionary{{"tel", "123"}, {"b", "hello"}, {"u", "http://shop/"}}}});
    open();
    let_pass(4);
    tap(&QoroVideoWebViewController::btnActionOne);
    let_pass(1);

    opened->close();
    let_pass(0);

    EXPECT_EQ(outcomes[0].click_throughs, 1);
    EXPECT_EQ(outcomes[0].departures, 1);
}

TEST_F(OpenedAdTest, TheImpressionCountsOnceTheKitIsCalledForIt)
{
    open();
    let_pass(4);
    const auto held = controller();
    platform->dispatch([&] { held->sendImpression(); });

    opened->close();
    let_pass(0);

    EXPECT_TRUE(outcomes[0].impression_sent);
}

TEST_F(OpenedAdTest, AnImpressionThatTheKitDidNotCountIsNotReported)
{
    open();
    let_pass(20);

    opened->close();
    let_pass(0);

    EXPECT_FALSE(outcomes[0].impression_sent);
}

} // namespace
} // namespace qoro
