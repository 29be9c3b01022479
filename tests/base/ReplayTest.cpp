#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

void play_to_the_end(AdSession& session)
{
    session.open();
    session.plays();
    session.ends();
    session.forget();
}

TEST(VideoReplay, TheReplayButtonSendsEveryNonEmptyAddressOnceInOrder)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1?t={TotalTime}", "", nullptr, 5, "http://t/2"};
    play_to_the_end(session);

    session.tap(session->btnReplay);

    EXPECT_THAT(session.transcript(),
                ElementsAre("request http://t/1?t=30.000000 tracking", "request http://t/2 tracking", "player play"));
}

TEST(VideoReplay, AReplayByThePlayCommandSendsNoTracker)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);

    session->setVideoPlay();

    EXPECT_THAT(session.transcript(), ElementsAre("player play"));
}

TEST(VideoReplay, AnAutoReplaySendsNoTracker)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    session.ad().bIsAutoReplay = true;

    play_to_the_end(session);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_TRUE(session->btnReplay.isHidden());
}

TEST(VideoReplay, DuringANextVideosSwapSendsNoTracker)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);
    session->bPlayNextVideo = true;

    session.tap(session->btnReplay);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_FALSE(session->bPlayNextVideo);
}

TEST(VideoReplay, WithTheControlsRemovedANullSenderIsNotTheReplayButton)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);
    session->handleWebViewInFront();

    session->videoReplay(nullptr);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(VideoReplay, StartedByAnotherButtonSendsNoTracker)
{
    AdSession session;
    session.ad().arrayReplayTrackingUrls = {"http://t/1"};
    play_to_the_end(session);

    session->videoReplay(session->btnPlayAndPause);

    EXPECT_THAT(session.transcript(), ElementsAre("player play"));
}

TEST(VideoReplay, StartsProgressOverAndForgetsThatTheVideoFinished)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play_to_the_end(session);
    session->dicSendTrackingState.setObject("1", "start");

    session.tap(session->btnReplay);

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"0"})");
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(VideoReplay, WhileResumingKeepsTheProgressAndTheStatus)
{
    AdSession session;
    session.ad().dicTrackingUrls = {{"start", NSArray::of_strings({"http://t/start"})}};
    play(session);
    session->dicSendTrackingState.setObject("1", "start");
    session->changeMoviePlayerStatus(QoroMoviePlayerStatusResuming);

    session->videoReplay(nullptr);

    EXPECT_EQ(as_text(session->dicSendTrackingState), R"({"start":"1"})");
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusResuming);
}

TEST(VideoReplay, LetsEveryPausePointPauseAgain)
{
    AdSession session;
    play_to_the_end(session);
    session->prePauseStatusAtLocation(5);
    session->setPrePauseStatusWithStatus(true, 5);

    session.tap(session->btnReplay);

    EXPECT_EQ(as_text(session->prePauseStatusDict), R"({"5":false})");
}

TEST(VideoReplay, HidesTheReplayButtonAndShowsTheBars)
{
    AdSession session;
    play_to_the_end(session);
    session->setControlBottonInVisible(true);

    session.tap(session->btnReplay);

    EXPECT_TRUE(session->btnReplay.isHidden());
    EXPECT_FALSE(session->viewBottomBackground.isHidden());
}

TEST(VideoReplay, AnAddressOfOneCharacterCountsToo)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.ad().arrayReplayTrackingUrls = {"c", "x"};
    play_to_the_end(session);

    session.tap(session->btnReplay);

    EXPECT_THAT(session.fetched(), ElementsAre("x"));
    EXPECT_THAT(session.lines("parent"), ElementsAre("clickRequester"));
}

} // namespace
} // namespace qoro
