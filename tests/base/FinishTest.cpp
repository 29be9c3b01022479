#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// Plays and pauses at a time; the player's finish comes next.
void play_until(AdSession& session, double time)
{
    session.open();
    session.plays(30);
    session.pauses_at(time);
    session.forget();
}

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

TEST(Finish, AStopMoreThanOneSecondPastTheEndDoesNotComplete)
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

TEST(Finish, EitherFlagHidesAFullPortraitVideoAtItsEndInAnyOrientation)
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
    // Before the end: watched completely, but not stopped exactly at the end.
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

TEST(Finish, TheStepsAfterAnAutoCloseStillRun)
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

TEST(Finish, AfterAUserExitThePlayersNotificationsAreIgnored)
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

TEST(Finish, AnErrorMarksTheSpinnerAsStopped)
{
    AdSession session;
    session.open();

    session.player_reports_finish(MPMovieFinishReasonPlaybackError);

    EXPECT_TRUE(session->bIsStopProgreeebar);
}

} // namespace
} // namespace qoro
