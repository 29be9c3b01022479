#include "tests/support/AdSession.h"

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
using testing::IsSupersetOf;
using testing::Not;

/// An ad that asks for every state's trackers.
void track(AdSession& session)
{
    session.ad().arrayPauseTrackingUrls = NSArray::of_strings({"http://t/pause"});
    session.ad().arrayResumeTrackingUrls = NSArray::of_strings({"http://t/resume"});
    session.ad().dicTrackingUrls = {{"complete", NSArray::of_strings({"http://t/complete"})}};
}

/// Played, and about to be told of its end with a last pause at a time.
void play_until(AdSession& session, double time)
{
    session.open();
    session.plays(30);
    session.pauses_at(time);
    session.forget();
}

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

TEST(ChangeVideoState, TellsTheScriptEachStateByItsName)
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

TEST(ChangeVideoState, AStateBeyondTheNamesIsKeptButNotTold)
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

TEST(VideoState, FollowsThePlayersReportsFromWhereverItStands)
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

TEST(VideoState, AnErrorLeavesItAndTellsTheScriptNothing)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.player_reports_finish(MPMovieFinishReasonPlaybackError);

    EXPECT_EQ(session->videoState, VideoPlay);
    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(MoviePlayerStatus, ChangesAccordingToWhereItStands)
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
        /// By the statuses above.
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

// --------------------------------------------------------------------------------------------------------- dispatching

TEST(MovieStateChange, StoppedTellsTheEndBeforeItsLogLineAndAppliesNoEndRule)
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

// ------------------------------------------------------------------------------------------------------------- playing

TEST(Playing, TheFirstPlayRunsItsStepsInOrder)
{
    AdSession session;
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);
    session.forget();

    session.player_reports_state(MPMoviePlaybackStatePlaying);

    EXPECT_THAT(session.transcript(), ElementsAre("js video_play null 0", "super stopProgressbar", "log 1 video play",
                                                  R"(js video_orientation {"e":{"orientation":"portrait"}} 0)",
                                                  R"(js video_visibilitychange {"e":{"visibility":1}} 0)"));
}

TEST(Playing, WithoutALoadReportTheFirstPlayIsLoadedFirst)
{
    AdSession session;
    session.open();
    session.forget();

    session.player_reports_state(MPMoviePlaybackStatePlaying);

    EXPECT_EQ(session.transcript().at(0), "volume 0.6");
    EXPECT_EQ(session.transcript().at(1), "js video_loaded null 0");
    EXPECT_EQ(session.transcript().at(2), "js video_play null 0");
}

TEST(Playing, TheFirstPlaySetsTheVideoUp)
{
    AdSession session;
    session->fVideoStopTime = 7;
    session.open();

    session.plays(29.9);

    EXPECT_EQ(session->fTotalTime, 29.9F);
    EXPECT_EQ(session->fVideoStopTime, 0.0F);
    EXPECT_TRUE(session->bIsInitVideoBeginStep);
    EXPECT_TRUE(session->bIsPlay);
    EXPECT_TRUE(session->bIsStopProgreeebar);
    EXPECT_EQ(session->labelRemainderTime.superview(), session->qoroMoviePlayer.view());
}

TEST(Playing, TheFirstPlayStartsTheTrackingTimerWithTheAdsInterval)
{
    AdSession session;
    session.ad().fTrackingInterval = 2.5F;
    session.open();

    session.plays();

    EXPECT_EQ(session->timerSendTrackingToServer.timeInterval(), 2.5);
}

TEST(Playing, LaterPlaysLeaveTheTrackingTimer)
{
    AdSession session;
    session.open();
    session.plays();
    const double due = session->timerSendTrackingToServer.fireDate();
    session.pauses_at(1);
    session.let_pass(1);

    session.plays_on();

    EXPECT_EQ(session->timerSendTrackingToServer.fireDate(), due);
}

TEST(Playing, TheFirstPlayNotFullScreenHidesTheBarsInThreeSeconds)
{
    AdSession session;
    session.open();
    session.let_pass(2);

    session.plays();

    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 5.0);
}

TEST(Playing, TheFirstPlayInFullScreenLeavesTheBarsTimer)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.let_pass(2);

    session.plays();

    EXPECT_EQ(session->timerSetControllerButtonHide.fireDate(), 3.0);
}

TEST(Playing, TheCloseCountdownTicksTenTimesASecond)
{
    AdSession session;
    session.open();

    session.plays();

    EXPECT_EQ(session->timerCloseBtnCountdown.timeInterval(), 0.1);
    EXPECT_TRUE(session->timerCloseBtnCountdown.repeats());
    EXPECT_TRUE(session->countDownView.isHidden());
}

TEST(Playing, TheCountdownIsVisibleWhereTheAdShowsIt)
{
    AdSession session;
    session.ad().iShowProgressWheel = 1;
    session.open();

    session.plays();

    EXPECT_FALSE(session->countDownView.isHidden());
}

TEST(Playing, AnAdWhoseCloseButtonComesAtTheEndCountsNothingDown)
{
    AdSession session;
    session.ad().bIsEndedCloseBtn = true;
    session.open();

    session.plays();

    EXPECT_FALSE(session->timerCloseBtnCountdown);
}

TEST(Playing, ACountdownThatHasRunOutIsNotStartedAgain)
{
    AdSession session;
    session.ad().iCloseBtnCountdown = 0;
    session.open();
    session.plays();
    session.let_pass(1);
    session.pauses_at(1);

    session.plays_on();

    EXPECT_FALSE(session->timerCloseBtnCountdown.isValid());
}

TEST(Playing, ACountdownOfNothingIsStartedAllTheSame)
{
    AdSession session;
    session.ad().iCloseBtnCountdown = 0;
    session.open();

    session.plays();

    EXPECT_TRUE(session->timerCloseBtnCountdown.isValid());
}

TEST(Playing, AgainReplacesTheCloseCountdown)
{
    AdSession session;
    session.open();
    session.plays();
    const NSTimer before = session->timerCloseBtnCountdown;

    session.plays_on();

    EXPECT_FALSE(before.isValid());
    EXPECT_TRUE(session->timerCloseBtnCountdown.isValid());
}

TEST(Playing, ThePlayButtonShowsThePauseImageAndReplayIsHidden)
{
    AdSession session;
    session.open();
    session->btnPlayAndPause.setHidden(true);
    session->btnReplay.setHidden(false);

    session.plays();

    EXPECT_FALSE(session->btnPlayAndPause.isHidden());
    EXPECT_EQ(session->btnPlayAndPause.backgroundImage().data().length(), 4614U);
    EXPECT_TRUE(session->btnReplay.isHidden());
}

TEST(Playing, TheFirstPlayIsNoResumption)
{
    AdSession session;
    track(session);
    session.open();

    session.plays();

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Playing, APauseThenAPlaySendPauseThenResume)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();

    session.pauses_at(3);
    session.plays_on();

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/pause", "http://t/resume"));
}

TEST(Playing, AReturnToTheAppIsNoResumption)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();
    session.pauses_at(3);
    session.return_to_app();
    session.forget();

    session.plays_on();

    EXPECT_THAT(session.fetched(), Not(Contains("http://t/resume")));
}

TEST(Playing, ASeekIsNoResumptionAndItsEndClearsTheStatus)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();
    session->setVideoSeekToTime(12);
    session.forget();

    session.plays_on();

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(Playing, AReplayAfterTheEndIsNoResumption)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();
    session.ends();
    session.tap(session->btnReplay);
    session.forget();

    session.plays_on();

    EXPECT_THAT(session.fetched(), Not(Contains("http://t/resume")));
    EXPECT_FALSE(session->bIsPlayFinish);
}

TEST(Playing, EndsTheNextVideosSwapAndBeingOutOfTheApp)
{
    AdSession session;
    session.open();
    session->bPlayNextVideo = true;
    session->bGoOutApp = true;

    session.plays();

    EXPECT_FALSE(session->bPlayNextVideo);
    EXPECT_FALSE(session->bGoOutApp);
}

// ------------------------------------------------------------------------------------------------------------- pausing

TEST(Pausing, RunsItsStepsInOrder)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();
    session.forget();

    session.pauses_at(3.25);

    EXPECT_THAT(session.transcript(),
                ElementsAre("js video_pause null 0", "log 1 video pause", "request http://t/pause tracking"));
    EXPECT_EQ(session->fVideoStopTime, 3.25F);
    EXPECT_FALSE(session->bIsPlay);
    EXPECT_EQ(session->btnPlayAndPause.backgroundImage().data().length(), 6483U);
}

TEST(Pausing, FreezesTheCloseCountdown)
{
    AdSession session;
    session.open();
    session.plays();

    session.pauses_at(3);

    EXPECT_FALSE(session->timerCloseBtnCountdown.isValid());
}

TEST(Pausing, AtTheVeryEndSendsNoPauseTrackingAndIsFinished)
{
    AdSession session;
    track(session);
    session.open();
    session.plays(30);

    session.pauses_at(30);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusFinishedVideo);
}

TEST(Pausing, TheVeryEndIsComparedInDoublePrecision)
{
    AdSession session;
    track(session);
    session.open();
    session.plays(30);

    // The same as 30 in single precision.
    session.pauses_at(29.9999999);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/pause"));
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(Pausing, AtTheVeryEndOfASeekIsFinishedToo)
{
    AdSession session;
    session.open();
    session.plays(30);
    session->setVideoSeekToTime(30);

    session.pauses_at(30);

    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusFinishedVideo);
}

TEST(Pausing, ASeeksPauseSendsNothingAndClearsTheStatus)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();
    session->setVideoSeekToTime(12);
    session.forget();

    session.pauses_at(12);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(Pausing, WhileTerminatingSendsNothing)
{
    AdSession session;
    track(session);
    session.open();
    session.plays();
    session->changeMoviePlayerStatus(QoroMoviePlayerStatusTerminating);

    session.pauses_at(3);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Pausing, BeforeTheFirstPlaySendsPauseTracking)
{
    AdSession session;
    track(session);
    session.open();
    session.player_lasts(30);

    session.pauses_at(3);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/pause"));
}

// -------------------------------------------------------------------------------------------------------------- ending

TEST(Finish, AnEndRunsItsStepsInOrder)
{
    AdSession session;
    track(session);
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.transcript(),
                ElementsAre("super stopProgressbar", "console playbackFinished. Reason: Playback Ended 30.000000",
                            "request http://t/complete tracking", "js video_ended null 0"));
    EXPECT_TRUE(session->bIsStopProgreeebar);
    EXPECT_TRUE(session->bIsPlayFinish);
    EXPECT_FALSE(session->bIsPlay);
    EXPECT_FALSE(session->timerSetControllerButtonHide);
}

TEST(Finish, AnEndShowsTheBarsAndOnlyTheReplayButton)
{
    AdSession session;
    play_until(session, 30);
    session->setControlBottonInVisible(true);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->viewBottomBackground.isHidden());
    EXPECT_FALSE(session->viewTopBackground.isHidden());
    EXPECT_TRUE(session->btnPlayAndPause.isHidden());
    EXPECT_FALSE(session->btnReplay.isHidden());
}

TEST(Finish, AStopHalfASecondShortOfTheEndNeitherCompletesNorCloses)
{
    AdSession session;
    track(session);
    session.ad().bIsAutoClose = true;
    play_until(session, 29.5);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.fetched(), IsEmpty());
    EXPECT_TRUE(session->qoroMoviePlayer);
}

TEST(Finish, AStopNineTenthsPastTheEndCompletesAndCloses)
{
    AdSession session;
    track(session);
    session.ad().bIsAutoClose = true;
    play_until(session, 30.9);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/complete"));
    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(Finish, AStopExactlyOneSecondPastTheEndStillCompletes)
{
    AdSession session;
    track(session);
    play_until(session, 31);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/complete"));
}

TEST(Finish, AStopMoreThanOneSecondPastTheEndDoesNot)
{
    AdSession session;
    track(session);
    play_until(session, 31.25);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Finish, OfAVideoThatNeverPlayedCountsAsReached)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    session.open();

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(Finish, WithoutMilestonesNothingCompletes)
{
    AdSession session;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Finish, AMilestoneTableThatCameAfterTheStartCompletesNothing)
{
    AdSession session;
    play_until(session, 30);
    track(session);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(Finish, AnEndWithoutALastPauseEndsThePlaying)
{
    AdSession session;
    session.open();
    session.plays();

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->bIsPlay);
}

TEST(Finish, AnAdWhoseCloseButtonComesAtTheEndShowsItAndCountsNothingDown)
{
    AdSession session;
    session.ad().bIsEndedCloseBtn = true;
    play_until(session, 30);
    session->btnClose.setHidden(true);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->btnClose.isHidden());
    EXPECT_FALSE(session->timerCloseBtnCountdown);
}

TEST(Finish, AnyOtherAdCountsOnBehindAHiddenCountdown)
{
    AdSession session;
    session.ad().iShowProgressWheel = 1;
    play_until(session, 30);
    session->btnClose.setHidden(true);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_TRUE(session->btnClose.isHidden());
    EXPECT_TRUE(session->timerCloseBtnCountdown.isValid());
    EXPECT_EQ(session->timerCloseBtnCountdown.timeInterval(), 0.1);
    EXPECT_TRUE(session->countDownView.isHidden());
}

TEST(Finish, AFullPortraitVideoIsHiddenAtItsEndWhereTheAdWantsIt)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().portraitVideoPos = FULL;
    session.ad().bIsHideFullPortraitVideoAtEnd = true;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_TRUE(session->bHideVideoToShowWebViewInPortraitMode);
}

TEST(Finish, AFullPortraitVideoStaysAtItsEndUnlessTheAdWantsItHidden)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().portraitVideoPos = FULL;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
}

TEST(Finish, APortraitBandIsNotHiddenByTheFullVideosFlag)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().bIsHideFullPortraitVideoAtEnd = true;
    play_until(session, 30);
    session->bIsFullScreen = true;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
}

TEST(Finish, ALandscapeVideoIsHiddenAtItsEndWhereTheAdWantsIt)
{
    AdSession session;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bIsHideLandscapeVideoAtEnd = true;
    session.rotate(UIDeviceOrientationLandscapeLeft);
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_TRUE(session->bHideVideoToShowWebViewInLandscapeMode);
    EXPECT_THAT(session.events(), Contains(R"(video_visibilitychange {"e":{"visibility":0}})"));
}

TEST(Finish, EitherFlagHidesAFullPortraitVideoAtItsEndHoweverTheDeviceIsHeld)
{
    for (const auto flag : {&QoroVideoAd::bIsHideFullPortraitVideoAtEnd, &QoroVideoAd::bIsHideLandscapeVideoAtEnd}) {
        for (const int orientation : {UIDeviceOrientationPortrait, UIDeviceOrientationLandscapeLeft}) {
            AdSession session;
            session.ad().strWebViewUrl = "http://ad/page.html";
            session.ad().portraitVideoPos = FULL;
            session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
            session.ad().*flag = true;
            session.rotate(orientation);
            play_until(session, 30);
            session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);
            EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden()) << orientation;
        }
    }
}

TEST(Finish, AnAutoReplayPlaysAgain)
{
    AdSession session;
    session.ad().bIsAutoReplay = true;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.lines("player"), ElementsAre("play"));
}

TEST(Finish, AnAutoReplayNeedsTheFinishedStatus)
{
    // Short of the end, and watched to it but not stopped exactly there.
    for (const double last_pause : {29.5, 30.5}) {
        AdSession session;
        session.ad().bIsAutoReplay = true;
        play_until(session, last_pause);
        session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);
        EXPECT_THAT(session.lines("player"), IsEmpty()) << last_pause;
    }
}

TEST(Finish, AutoCloseComesBeforeAutoReplay)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    session.ad().bIsAutoReplay = true;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_THAT(session.lines("player"), ElementsAre("drop"));
}

TEST(Finish, TheStepsAfterAnAutoCloseRunAllTheSame)
{
    AdSession session;
    session.ad().bIsAutoClose = true;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(session->btnClose);
    EXPECT_TRUE(session->timerCloseBtnCountdown.isValid());
}

TEST(Finish, AnEndGreysTheActionButtons)
{
    AdSession session;
    play_until(session, 30);

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_EQ(session->btnActionOne.backgroundColor(), UIColor::colorWithRed(0.5, 0.5, 0.5, 0.1));
    EXPECT_EQ(session->btnActionTwo.backgroundColor(), UIColor::colorWithRed(0.5, 0.5, 0.5, 0.1));
}

TEST(Finish, AnErrorPlaysOnceMoreAndShowsTheCloseButton)
{
    AdSession session;
    session.open();
    session.plays();
    session->btnClose.setHidden(true);
    session.forget();

    session.player_reports_finish(MPMovieFinishReasonPlaybackError);

    EXPECT_THAT(session.transcript(), ElementsAre("super stopProgressbar", "player play",
                                                  "console playbackFinished. Reason: Playback Error"));
    EXPECT_FALSE(session->btnClose.isHidden());
}

TEST(Finish, AUserExitDropsThePlayer)
{
    AdSession session;
    session.open();
    session.plays();
    const MPMoviePlayerController player = session->qoroMoviePlayer;
    session.forget();

    session.player_reports_finish(MPMovieFinishReasonUserExited);

    EXPECT_THAT(session.transcript(), ElementsAre("super stopProgressbar", "player drop"));
    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_FALSE(player.view().superview());
}

TEST(Finish, AfterAUserExitThePlayersNewsAreNotHeard)
{
    AdSession session;
    session.open();
    session.plays();
    session.player_reports_finish(MPMovieFinishReasonUserExited);
    session.forget();

    NSNotificationCenter::defaultCenter().deliver(MPMoviePlayerPlaybackStateDidChangeNotification);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(Finish, AfterAUserExitCommandsDoNothing)
{
    AdSession session;
    session.open();
    session.plays();
    session.player_reports_finish(MPMovieFinishReasonUserExited);
    session.forget();

    session->setPlayOrPause();
    session->setVideoSeekToTime(3);

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_EQ(session->getVideoTotalTime(), 0);
}

TEST(Finish, AnyOtherReasonOnlyStopsTheSpinner)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.player_reports_finish(3);

    EXPECT_THAT(session.transcript(), ElementsAre("super stopProgressbar"));
    EXPECT_TRUE(session->bIsPlay);
}

TEST(Finish, AnEndStopsTheTimersOfTheBarsAndTheCountdown)
{
    AdSession session;
    session.open();
    session.plays();
    const NSTimer bars = session->timerSetControllerButtonHide;
    const NSTimer countdown = session->timerCloseBtnCountdown;

    session.player_reports_finish(MPMovieFinishReasonPlaybackEnded);

    EXPECT_FALSE(bars.isValid());
    EXPECT_FALSE(countdown.isValid());
}

TEST(Finish, WhateverTheReasonTheSpinnerStaysAway)
{
    AdSession session;
    session.open();

    session.player_reports_finish(MPMovieFinishReasonPlaybackError);

    EXPECT_TRUE(session->bIsStopProgreeebar);
}

} // namespace
} // namespace qoro
