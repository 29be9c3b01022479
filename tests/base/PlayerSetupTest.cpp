#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

#include <vector>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::string_view opened = R"(notification NotifyOpenVideoExResult {"Result":"1"})";

World world_with_cached_video()
{
    World world = AdSession::manual_world();
    world.cached["http://ad/v.mp4"] = "/cache/v.mp4";
    return world;
}

World tablet_world()
{
    World world = AdSession::manual_world();
    world.device.facts.phone = false;
    return world;
}

HostSetup host_that_allows(std::vector<std::int64_t> orientations)
{
    HostSetup host = unguarded_host();
    host.autorotates = std::move(orientations);
    return host;
}

TEST(PlayVideo, RunsItsStepsInOrder)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().strBrandIconUrl = "http://ad/icon.png";
    session.ad().strStoreId = "42";
    session.open();
    session.forget();

    session.open();

    EXPECT_THAT(session.transcript(),
                ElementsAre("player drop", "request http://ad/page.html page", "js video_loading null 0",
                            "player create http://ad/v.mp4 false", "log 1 Ad view add on custom window",
                            "fetch http://ad/icon.png brandIcon", R"(kit store.create ["42",null,null,null])",
                            R"(js video_orientation {"orientation":"portrait"} 0)",
                            R"(js video_visibilitychange {"e":{"visibility":1}} 0)",
                            R"(js video_orientation {"e":{"orientation":"portrait"}} 0)",
                            "super showProgressbar 167 85", "log 0 Added Video Close Button",
                            "log 0 Added Count Down View", opened));
}

TEST(PlayVideo, AnEmptyAddressMakesNoPlayerAndPostsAnError)
{
    AdSession session;
    session.ad().strVideoUrl = "";
    session.forget();

    session.open();

    EXPECT_THAT(session.transcript(),
                ElementsAre(R"(notification NotifyOpenVideoExResult {"Result":"9","e":"url = nil."})"));
    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_FALSE(session->dicSendTrackingState);
    EXPECT_FALSE(session->musicPlayer);
}

TEST(PlayVideo, AnAbsentAddressIsAnEmptyOne)
{
    AdSession session;
    session.forget();

    session->play_video(nullptr);

    EXPECT_THAT(session.transcript(),
                ElementsAre(R"(notification NotifyOpenVideoExResult {"Result":"9","e":"url = nil."})"));
}

TEST(PlayVideo, AnEmptyAddressStillStartsTheBufferingWatchdog)
{
    AdSession session;
    session.ad().strVideoUrl = "";
    session.ad().iBufferingSufferTime = 3;

    session.open();

    EXPECT_TRUE(session->timerBufferSufferTime.isValid());
    EXPECT_FALSE(session->timerVideoLoaded);
}

TEST(PlayVideo, AnEmptyAddressStillListensForInterruptions)
{
    AdSession session;
    session.ad().strVideoUrl = "";
    session.open();
    session.forget();

    session.interrupt(0);

    EXPECT_THAT(session.events(), Contains(StartsWith("video_orientation")));
}

TEST(PlayVideo, AHostIsPortraitOnlyWhenItAllowsPortraitAndNeitherLandscapeSide)
{
    constexpr auto upright = UIInterfaceOrientationPortrait;
    constexpr auto upside_down = UIInterfaceOrientationPortraitUpsideDown;
    constexpr auto left = UIInterfaceOrientationLandscapeLeft;
    constexpr auto right = UIInterfaceOrientationLandscapeRight;
    const struct {
        std::vector<std::int64_t> allowed;
        bool portrait_only;
    } rows[] = {
        {{upright}, true},      {{upright, upside_down}, true},  {{upright, left}, false}, {{upright, right}, false},
        {{left, right}, false}, {{upright, left, right}, false}, {{upside_down}, false},   {{}, false},
    };
    for (const auto& row : rows) {
        AdSession session(AdSession::manual_world(), host_that_allows(row.allowed));
        session.open();
        EXPECT_EQ(session->bIsPortraitOnly, row.portrait_only) << testing::PrintToString(row.allowed);
    }
}

TEST(PlayVideo, OnceTheHostIsPortraitOnlyItStaysSo)
{
    AdSession session;
    session.open();
    session->allowedInterfaceOrientations = {UIInterfaceOrientationPortrait, UIInterfaceOrientationLandscapeLeft};

    session.open();

    EXPECT_TRUE(session->bIsPortraitOnly);
}

TEST(PlayVideo, WithoutAPageTheArrangementsDecideWhichFlagsAreCleared)
{
    constexpr VideoAdMode none{};
    const struct {
        ViewPosition position;
        VideoAdMode portrait, landscape;
        VideoAdMode portrait_afterwards;
        bool hides_full, hides_landscape;
    } rows[] = {
        {FULL, VIDEO_AND_WEBVIEW, none, ONLY_VIDEO, false, false},
        {FULL, VIDEO_AND_WEBVIEW, ONLY_VIDEO, ONLY_VIDEO, false, false},
        {FULL, ONLY_VIDEO, none, ONLY_VIDEO, true, false},
        {TOP, VIDEO_AND_WEBVIEW, none, VIDEO_AND_WEBVIEW, true, false},
        {TOP, VIDEO_AND_WEBVIEW, VIDEO_AND_WEBVIEW, VIDEO_AND_WEBVIEW, true, false},
        // With a landscape layout only, hiding the video at its end stays enabled.
        {TOP, none, ONLY_VIDEO, none, true, true},
        {FULL, none, VIDEO_AND_WEBVIEW, none, true, true},
        {TOP, none, none, none, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.position << ' ' << row.portrait << ' ' << row.landscape);
        AdSession session;
        session.ad().portraitVideoPos = row.position;
        session.ad().portraitModeType = row.portrait;
        session.ad().landscapeModeType = row.landscape;
        session.ad().bIsHideFullPortraitVideoAtEnd = true;
        session.ad().bIsHideLandscapeVideoAtEnd = true;
        session.ad().bIsWebViewInFront = true;

        session.open();

        EXPECT_EQ(session.ad().portraitModeType, row.portrait_afterwards);
        EXPECT_EQ(session.ad().bIsHideFullPortraitVideoAtEnd, row.hides_full);
        EXPECT_EQ(session.ad().bIsHideLandscapeVideoAtEnd, row.hides_landscape);
        EXPECT_FALSE(session.ad().bIsWebViewInFront);
    }
}

TEST(PlayVideo, WithAPageTheFlagsStay)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().portraitVideoPos = FULL;
    session.ad().bIsHideFullPortraitVideoAtEnd = true;
    session.ad().bIsHideLandscapeVideoAtEnd = true;
    session.ad().bIsWebViewInFront = true;

    session.open();

    EXPECT_EQ(session.ad().portraitModeType, VIDEO_AND_WEBVIEW);
    EXPECT_TRUE(session.ad().bIsHideFullPortraitVideoAtEnd);
    EXPECT_TRUE(session.ad().bIsHideLandscapeVideoAtEnd);
    EXPECT_TRUE(session.ad().bIsWebViewInFront);
}

TEST(PlayVideo, ANegativeBufferingTimeStartsNoWatchdog)
{
    AdSession session;
    session.ad().iBufferingSufferTime = -1;

    session.open();

    EXPECT_FALSE(session->timerBufferSufferTime);
}

TEST(PlayVideo, ABufferingTimeOfZeroStartsTheWatchdog)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 0;

    session.open();

    EXPECT_TRUE(session->timerBufferSufferTime.isValid());
    EXPECT_TRUE(session->timerBufferSufferTime.repeats());
    EXPECT_EQ(session->timerBufferSufferTime.timeInterval(), 1.0);
}

TEST(PlayVideo, MilestonesStartUnsent)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/s"})},
                                    {"complete", NSArray::of_strings({"http://t/c"})}};

    session.open();

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"0","complete":"0"})");
    EXPECT_TRUE(session->bUseVASTTracking);
}

TEST(PlayVideo, AnEmptyMilestoneTableCountsAsAbsent)
{
    AdSession session;
    session.ad().dicTrackingUrls = NSDictionary::dictionary();

    session.open();

    EXPECT_FALSE(session->bUseVASTTracking);
    EXPECT_EQ(as_text(session->dicSendTrackingState), "{}");
}

TEST(PlayVideo, WithoutALoadReportTheVideoCountsAsLoadedAfterOneAndAHalfSeconds)
{
    AdSession session;
    session.open();
    session.forget();

    session.let_pass(1.499999);
    EXPECT_THAT(session.events(), IsEmpty());
    session.let_pass(0.000001);

    EXPECT_THAT(session.events(), Contains("video_loaded"));
    EXPECT_EQ(session->videoState, VideoLoaded);
}

TEST(PlayVideo, ACachedVideoIsPlayedWhenTheAdWantsIt)
{
    AdSession session(world_with_cached_video());
    session.ad().bIsUseVideoCache = true;

    session.open();

    EXPECT_THAT(session.lines("player"), ElementsAre("create /cache/v.mp4 true"));
}

TEST(PlayVideo, ACachedVideoIsLeftAloneWhenTheAdDoesNotWantIt)
{
    AdSession session(world_with_cached_video());
    session.ad().bIsUseVideoCache = false;

    session.open();

    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false"));
}

TEST(PlayVideo, AVideoThatIsNotCachedComesFromItsAddress)
{
    AdSession session;
    session.ad().bIsUseVideoCache = true;

    session.open();

    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false"));
}

TEST(PlayVideo, AutoplayIsTheAdsWish)
{
    AdSession session;
    session.ad().bIsAutoStart = true;

    session.open();

    EXPECT_TRUE(session->qoroMoviePlayer.settings().should_autoplay);
}

TEST(PlayVideo, AnAdWithBothArrangementsCanTurn)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;

    session.open();

    EXPECT_FALSE(session->bOnlyOneSideVideo);
}

TEST(PlayVideo, AnAdWithOneArrangementCannotTurn)
{
    AdSession session;

    session.open();

    EXPECT_TRUE(session->bOnlyOneSideVideo);
}

TEST(PlayVideo, OnAPhoneTheStorePageIsMadeAtTheStart)
{
    AdSession session;
    session.ad().strStoreId = "42";
    session.ad().strCampaignId = "c";

    session.open();

    EXPECT_THAT(session.lines("kit"), ElementsAre(R"(store.create ["42","c",null,null])"));
    EXPECT_TRUE(session->appStoreWindow);
}

TEST(PlayVideo, OnATabletTheStorePageIsMadeAtEachPause)
{
    AdSession session(tablet_world());
    session.ad().strStoreId = "42";
    session.open();
    session.plays();
    EXPECT_THAT(session.lines("kit"), IsEmpty());

    session.pauses_at(3);

    EXPECT_THAT(session.lines("kit"), Contains(StartsWith("store.create")));
}

TEST(PlayVideo, OnATabletAnAdWithoutAStoreHasNoStorePage)
{
    AdSession session(tablet_world());
    session.open();
    session.plays();

    session.pauses_at(3);

    EXPECT_THAT(session.lines("kit"), IsEmpty());
}

TEST(PlayVideo, TheBarsAreToHideInThreeSeconds)
{
    AdSession session;
    // No layout runs during a click-through.
    session->setBDoButtonAction(true);

    session.open();

    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 3.0);
}

TEST(PlayVideo, AfterAnEndTheBarsAreNotToHide)
{
    AdSession session;
    session->setBDoButtonAction(true);
    session->bIsPlayFinish = true;

    session.open();

    EXPECT_FALSE(session->timerSetControllerButtonHide);
}

TEST(PlayVideo, ASecondVideoLoadsAgainAndReplacesTheTimers)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 10;
    session.open();
    const NSTimer watchdog = session->timerBufferSufferTime;
    const NSTimer loaded = session->timerVideoLoaded;
    session->bIsLoaded = true;

    session.open();

    EXPECT_FALSE(session->bIsLoaded);
    EXPECT_FALSE(watchdog.isValid());
    EXPECT_FALSE(loaded.isValid());
    EXPECT_TRUE(session->timerBufferSufferTime.isValid());
    EXPECT_TRUE(session->timerVideoLoaded.isValid());
}

} // namespace
} // namespace qoro
