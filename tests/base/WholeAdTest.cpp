#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// A world whose player runs automatically.
World world_with_video(double duration)
{
    World world;
    world.video.duration = duration;
    return world;
}

void track_everything(AdSession& session)
{
    session.ad().bIsAutoStart = true;
    session.ad().arrayPauseTrackingUrls = NSArray::of_strings({"http://t/pause"});
    session.ad().arrayResumeTrackingUrls = NSArray::of_strings({"http://t/resume"});
    session.ad().arrayMuteTrackingUrls = NSArray::of_strings({"http://t/mute"});
    session.ad().arrayUnmuteTrackingUrls = NSArray::of_strings({"http://t/unmute"});
    session.ad().arrayReplayTrackingUrls = NSArray::of_strings({"http://t/replay"});
    session.ad().arrayCloseTrackingUrls = NSArray::of_strings({"http://t/close"});
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})},
                                    {"firstQuartile", NSArray::of_strings({"http://t/first"})},
                                    {"midpoint", NSArray::of_strings({"http://t/mid"})},
                                    {"thirdQuartile", NSArray::of_strings({"http://t/third"})},
                                    {"complete", NSArray::of_strings({"http://t/complete"})}};
}

TEST(WholeAd, WatchedToItsEndFetchesEachTrackerOnceInOrderAndClosesItself)
{
    AdSession session(world_with_video(12), host_with_parent());
    track_everything(session);
    session.ad().bIsAutoClose = true;

    session.open();
    session.let_pass(30);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/start", "http://t/first", "http://t/mid", "http://t/third",
                                               "http://t/complete", "http://t/close"));
    EXPECT_THAT(session.lines("parent"), ElementsAre("closeVideoAdUnit false"));
}

TEST(WholeAd, ItsEventsFollowItsLifeCycle)
{
    AdSession session(world_with_video(2.5));
    track_everything(session);
    session.ad().bIsAutoClose = true;
    session.open();
    session.forget();

    session.let_pass(30);

    EXPECT_THAT(session.events(),
                ElementsAre("video_loaded", "video_play", R"(video_orientation {"e":{"orientation":"portrait"}})",
                            R"(video_visibilitychange {"e":{"visibility":1}})",
                            R"(video_timeupdate {"e":{"current_time":"1"}})",
                            R"(video_timeupdate {"e":{"current_time":"2"}})", "video_pause", "video_ended", "onhide"));
}

TEST(WholeAd, LeavingTheAppPausesItAndReturningContinuesAtTheSamePosition)
{
    AdSession session(world_with_video(30));
    track_everything(session);
    session.open();
    session.let_pass(5.3);

    session.leave_app();
    session.let_pass(10);
    session.return_to_app();
    session.tap(session->btnPlayAndPause);
    session.forget();
    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), ElementsAre("seek 5"));
    EXPECT_THAT(session.fetched(), Not(Contains("http://t/resume")));
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(WholeAd, AReplayedVideoFetchesItsMilestonesAgain)
{
    AdSession session(world_with_video(4));
    track_everything(session);
    session.open();
    session.let_pass(10);
    session.forget();

    session.tap(session->btnReplay);
    session.let_pass(10);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/replay", "http://t/start", "http://t/first", "http://t/mid",
                                               "http://t/third", "http://t/complete"));
}

TEST(WholeAd, ASecondVideoStartsAutomaticallyAfterTheSwap)
{
    AdSession session(world_with_video(4));
    track_everything(session);
    session.open();
    session.let_pass(2);

    session.script_says("playNextVideo", {NSDictionary{{"v_u", "http://ad/next.mp4"}}});
    session.let_pass(2);

    EXPECT_TRUE(session->bIsPlay);
    EXPECT_EQ(session->qoroMoviePlayer.contentURL().absoluteString(), "http://ad/next.mp4");
}

TEST(WholeAd, AVideoThatFailsIsTriedAgainAndCanBeClosed)
{
    World world = world_with_video(10);
    world.video.error = 3;
    AdSession session(world);
    track_everything(session);
    session.open();

    session.let_pass(20);

    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false", "play"));
    EXPECT_FALSE(session->btnClose.isHidden());
}

TEST(WholeAd, AVideoThatFailsForGoodIsTriedThreeTimesMoreAndCanBeClosed)
{
    World world = world_with_video(10);
    world.video.error_for_good = 3;
    AdSession session(world);
    track_everything(session);
    session.open();

    session.let_pass(20);

    // Every finish with an error is answered with a play(); the fourth reaches a player that has failed permanently.
    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false", "play", "play", "play", "play"));
    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_FALSE(session->bIsPlay);
}

TEST(WholeAd, ClosedAndReleasedItIsDestroyedWithItsTimers)
{
    AdSession session(world_with_video(12));
    track_everything(session);
    session.open();
    session.let_pass(3);
    session.tap(session->btnClose);
    session.forget();

    session.release();
    session.let_pass(10);

    EXPECT_THAT(session.transcript(), Contains("released"));
    EXPECT_EQ(session.platform().loop().pending(), 0U);
}

TEST(WholeAd, NeverPlayedItIsClosedQuietly)
{
    AdSession session;
    track_everything(session);
    session.open();

    session.tap(session->btnClose);
    session.let_pass(60);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/close"));
    EXPECT_THAT(session.lines("fault"), IsEmpty());
}

} // namespace
} // namespace qoro
