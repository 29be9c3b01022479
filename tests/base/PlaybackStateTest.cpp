#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

#include <array>
#include <iterator>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// ------------------------------------------------------------------------------------------------------------- loading

TEST(LoadState, PlayableAloneIsLoaded)
{
    AdSession session;
    session.open();
    session.forget();

    session.player_reports_load(MPMovieLoadStatePlayable);

    EXPECT_THAT(session.transcript(), ElementsAre("volume 0.6", "js video_loaded null 0"));
    EXPECT_TRUE(session->bIsLoaded);
}

TEST(LoadState, PlayableWithPlaythroughAloneIsLeftToTheTimer)
{
    AdSession session;
    session.open();
    session.forget();

    session.player_reports_load(MPMovieLoadStatePlayable | MPMovieLoadStatePlaythroughOK);
    EXPECT_THAT(session.events(), IsEmpty());
    session.let_pass(1.5);

    EXPECT_THAT(session.events(), Contains("video_loaded"));
}

TEST(LoadState, LoadedIsEnteredOnce)
{
    AdSession session;
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);
    session.forget();

    session.player_reports_load(MPMovieLoadStatePlayable);
    session.let_pass(2);

    EXPECT_THAT(session.events(), Not(Contains("video_loaded")));
}

TEST(LoadState, AnyStateButLoadingStopsTheLoadedTimer)
{
    AdSession session;
    session.open();

    session->changeVideoState(VideoPause);

    EXPECT_FALSE(session->timerVideoLoaded.isValid());
}

TEST(LoadState, LoadingKeepsTheLoadedTimer)
{
    AdSession session;
    session.open();

    session->changeVideoState(VideoLoading);

    EXPECT_TRUE(session->timerVideoLoaded.isValid());
}

// ------------------------------------------------------------------------------------------------------- state changes

TEST(ChangeVideoState, SendsTheScriptEachStateByItsName)
{
    AdSession session;
    session.forget();

    session->changeVideoState(VideoLoading);
    session->changeVideoState(VideoLoaded);
    session->changeVideoState(VideoPlay);
    session->changeVideoState(VideoPause);
    session->changeVideoState(VideoEnded);

    EXPECT_THAT(session.events(),
                ElementsAre("video_loading", "video_loaded", "video_play", "video_pause", "video_ended"));
    EXPECT_EQ(session->videoState, VideoEnded);
}

TEST(ChangeVideoState, AnUnnamedStateIsStoredButNotSent)
{
    AdSession session;
    constexpr auto beyond = static_cast<VideoState>(6);

    session->changeVideoState(beyond);

    EXPECT_EQ(session->videoState, beyond);
    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(ChangeMoviePlayerStatus, OnlyAssigns)
{
    AdSession session;
    session.forget();

    session->changeMoviePlayerStatus(QoroMoviePlayerStatusTerminating);

    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusTerminating);
    EXPECT_THAT(session.transcript(), IsEmpty());
}

// --------------------------------------------------------------------------------------------------------- transitions

TEST(VideoState, FollowsThePlayersReportsFromAnyState)
{
    const struct {
        const char* report;
        void (*happens)(AdSession&);
        VideoState afterwards;
    } rows[] = {
        {"another video", [](AdSession& session) { session.open(); }, VideoLoading},
        {"playing", [](AdSession& session) { session.plays_on(); }, VideoPlay},
        {"paused", [](AdSession& session) { session.pauses_at(3); }, VideoPause},
        {"stopped", [](AdSession& session) { session.player_reports_state(MPMoviePlaybackStateStopped); }, VideoEnded},
        {"ended", [](AdSession& session) { session.player_reports_finish(MPMovieFinishReasonPlaybackEnded); },
         VideoEnded},
    };
    for (const auto& row : rows) {
        for (const VideoState from : {VideoLoading, VideoLoaded, VideoPlay, VideoPause, VideoEnded}) {
            AdSession session;
            session.open();
            session.plays();
            session->videoState = from;
            row.happens(session);
            EXPECT_EQ(session->videoState, row.afterwards) << row.report << " from " << from;
        }
    }
}

TEST(VideoState, IsUnchangedByAnErrorAndSendsTheScriptNothing)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.player_reports_finish(MPMovieFinishReasonPlaybackError);

    EXPECT_EQ(session->videoState, VideoPlay);
    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(MoviePlayerStatus, DependsOnTheCurrentStatus)
{
    constexpr auto none = QoroMoviePlayerStatusNone;
    constexpr auto resuming = QoroMoviePlayerStatusResuming;
    constexpr auto playing = QoroMoviePlayerStatusPlaying;
    constexpr auto seeking = QoroMoviePlayerStatusSeeking;
    constexpr auto finished = QoroMoviePlayerStatusFinishedVideo;
    constexpr auto terminating = QoroMoviePlayerStatusTerminating;
    const QoroMoviePlayerStatus from[] = {none, resuming, playing, seeking, finished, terminating};
    const struct {
        const char* event;
        void (*happens)(AdSession&);
        /// Indexed by the statuses above.
        std::array<QoroMoviePlayerStatus, 6> afterwards;
    } rows[] = {
        {"the app comes back",
         [](AdSession& session) { session->appWillEnterForeground(); },
         {resuming, resuming, resuming, resuming, finished, resuming}},
        {"a seek",
         [](AdSession& session) { session->setVideoSeekToTime(3); },
         {seeking, none, seeking, seeking, seeking, seeking}},
        {"playing",
         [](AdSession& session) { session.plays_on(); },
         {none, resuming, playing, none, finished, terminating}},
        {"paused",
         [](AdSession& session) { session.pauses_at(3); },
         {none, resuming, playing, none, finished, terminating}},
        {"paused at the very end",
         [](AdSession& session) { session.pauses_at(30); },
         {finished, finished, finished, finished, finished, finished}},
        {"a replay",
         [](AdSession& session) { session->videoReplay(nullptr); },
         {none, resuming, none, none, none, none}},
    };
    for (const auto& row : rows) {
        for (std::size_t status = 0; status < std::size(from); ++status) {
            AdSession session;
            session.open();
            session.plays();
            session->changeMoviePlayerStatus(from[status]);
            row.happens(session);
            EXPECT_EQ(session->qoroMoviePlayerStatus, row.afterwards[status]) << row.event << " from " << from[status];
        }
    }
}

TEST(MoviePlayerStatus, DecidesWhetherAPauseAndAPlayAreTracked)
{
    const struct {
        QoroMoviePlayerStatus status;
        std::vector<std::string> pause, play;
    } rows[] = {
        {QoroMoviePlayerStatusNone, {"http://t/pause"}, {"http://t/resume"}},
        {QoroMoviePlayerStatusResuming, {"http://t/pause"}, {}},
        {QoroMoviePlayerStatusPlaying, {"http://t/pause"}, {"http://t/resume"}},
        {QoroMoviePlayerStatusSeeking, {}, {}},
        {QoroMoviePlayerStatusFinishedVideo, {"http://t/pause"}, {"http://t/resume"}},
        {QoroMoviePlayerStatusTerminating, {}, {"http://t/resume"}},
    };
    for (const auto& row : rows) {
        AdSession session;
        track(session);
        session.open();
        session.plays();
        session->changeMoviePlayerStatus(row.status);
        session.pauses_at(3);
        EXPECT_EQ(session.fetched(), row.pause) << row.status;
        session.forget();
        session->changeMoviePlayerStatus(row.status);
        session.plays_on();
        EXPECT_EQ(session.fetched(), row.play) << row.status;
    }
}

// ------------------------------------------------------------------------------------------------------------ dispatch

TEST(MovieStateChange, StoppedReportsTheEndBeforeItsLogLineAndAppliesNoEndRule)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    session.ad().bIsAutoReplay = true;
    session.open();
    session.plays();
    session.forget();

    session.player_reports_state(MPMoviePlaybackStateStopped);

    EXPECT_THAT(session.transcript(), ElementsAre("js video_ended null 0", "log 1 video stop"));
    EXPECT_FALSE(session->bIsPlay);
    EXPECT_FALSE(session->bIsPlayFinish);
    EXPECT_TRUE(session->btnReplay.isHidden());
}

TEST(MovieStateChange, TheOtherStatesAreOnlyLogged)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.player_reports_state(MPMoviePlaybackStateInterrupted);
    session.player_reports_state(MPMoviePlaybackStateSeekingForward);
    session.player_reports_state(MPMoviePlaybackStateSeekingBackward);
    session.player_reports_state(6);

    EXPECT_THAT(session.transcript(), ElementsAre("log 1 video interrupted", "log 1 video forward",
                                                  "log 1 video backward", "log 1 video unknowed"));
    EXPECT_TRUE(session->bIsPlay);
}

} // namespace
} // namespace qoro
