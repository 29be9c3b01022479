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

TEST(Playing, ACountdownOfZeroIsStartedToo)
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

TEST(Playing, ClearsTheNextVideoAndOutOfAppFlags)
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

    // Equals 30 in single precision.
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

} // namespace
} // namespace qoro
