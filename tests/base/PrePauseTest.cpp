#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PrePauseStatus, AnUnknownLocationHasNotPaused)
{
    AdSession session;

    EXPECT_FALSE(session->prePauseStatusAtLocation(5));
    EXPECT_EQ(as_text(session->prePauseStatusDict), "{}");
}

TEST(PrePauseStatus, ALocationsStatusIsKept)
{
    AdSession session;
    session->prePauseStatusAtLocation(5);

    session->setPrePauseStatusWithStatus(true, 5);

    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
    EXPECT_FALSE(session->prePauseStatusAtLocation(6));
}

TEST(PrePauseStatus, SettingItBeforeAnyQueryHasNoEffect)
{
    AdSession session;

    session->setPrePauseStatusWithStatus(true, 5);

    EXPECT_FALSE(session->prePauseStatusDict);
    EXPECT_FALSE(session->prePauseStatusAtLocation(5));
}

TEST(PrePauseStatus, ResettingKeepsTheLocationsAndTurnsThemOff)
{
    AdSession session;
    session->prePauseStatusAtLocation(5);
    session->setPrePauseStatusWithStatus(true, 5);
    session->setPrePauseStatusWithStatus(true, 10);

    session->resetPrePauseStatus();

    EXPECT_EQ(as_text(session->prePauseStatusDict), R"({"5":false,"10":false})");
}

TEST(PrePauseStatus, ResettingBeforeAnyQueryMakesNoTable)
{
    AdSession session;

    session->resetPrePauseStatus();

    EXPECT_FALSE(session->prePauseStatusDict);
}

TEST(PrePauseStatus, ClearingForgetsEverything)
{
    AdSession session;
    session->prePauseStatusAtLocation(5);

    session->clearPrePauseStatus();

    EXPECT_FALSE(session->prePauseStatusDict);
}

TEST(PrePause, APassedLocationPausesOnce)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    play(session);

    session.player_is_at(5.02);
    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
}

TEST(PrePause, BeforeTheLocationNothingPauses)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    play(session);

    session.player_is_at(4.99);
    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
}

TEST(PrePause, TheLocationZeroNeverPauses)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {0};
    play(session);

    session.player_is_at(5);
    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
}

TEST(PrePause, ASeekPastTwoLocationsPausesTwiceInOneTick)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5, 10};
    play(session);
    session.player_is_at(3);
    session->setVideoSeekToTime(12);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause", "pause"));
    EXPECT_EQ(as_text(session->prePauseStatusDict), R"({"5":true,"10":true})");
}

TEST(PrePause, AfterResumingPastALocationItDoesNotPauseAgain)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    play(session);
    session.player_is_at(5);
    session.let_pass(0.1);
    session.pauses_at(5);
    session.plays_on();
    session.forget();

    session.player_is_at(6);
    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
}

TEST(PrePause, AfterAReplayALocationPausesOnceMore)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    play(session);
    session.player_is_at(5);
    session.let_pass(0.1);
    session.ends();
    session.tap(session->btnReplay);
    session.plays_on();
    session.forget();

    session.player_is_at(5);
    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
}

TEST(PrePause, AfterCancellingNoLocationPausesAndTheListIsEmpty)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    play(session);

    session->cancelPrePauseLocations();
    session.player_is_at(6);
    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_EQ(as_text(session.ad().arrayPrePauseLocations), "[]");
    EXPECT_FALSE(session->prePauseStatusDict);
}

TEST(PrePause, AfterCancellingTheFineTickStays)
{
    AdSession session;
    play(session);
    session->cancelPrePauseLocations();

    session.plays_on();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 0.1);
}

TEST(PrePause, CancellingForgetsWhichLocationsHavePaused)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session->prePauseStatusAtLocation(5);
    session->setPrePauseStatusWithStatus(true, 5);

    session->cancelPrePauseLocations();

    EXPECT_FALSE(session->prePauseStatusDict);
}

TEST(PrePauseTick, PausesAtALocationThatIsReached)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.player_is_at(4.9);
    session.let_pass(0.1);
    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false"));

    session.player_is_at(5);
    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false", "pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
}

TEST(PrePauseTick, PassesEveryLocationInOneTick)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5, 10};
    session.open();
    session.plays();
    session.player_is_at(12);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause", "pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
    EXPECT_TRUE(session->prePauseStatusAtLocation(10));
}

TEST(PrePauseTick, PausesAtEachLocationOnce)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.player_is_at(5);
    session.let_pass(0.1);
    session.pauses_at(5);
    session.plays_on();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
}

TEST(PrePauseTick, ReportsTheTimeThenJumpsBackThenPauses)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.pauses_at(7.5);
    session.return_to_app();
    session.plays_on();
    session.forget();

    session->updateRemainderTime();

    EXPECT_THAT(session.transcript(),
                ElementsAre(R"(js video_timeupdate {"e":{"current_time":"7"}} 0)", "player seek 7.5", "player pause"));
}

TEST(PrePauseTick, ALocationCountsByItsWholeSeconds)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5.7};
    session.open();
    session.plays();
    session.player_is_at(5);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
}

TEST(PrePauseTick, ALocationBeforeTheStartIsReachedAtOnce)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {-3};
    session.open();
    session.plays();
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(-3));
}

TEST(PrePauseTick, IgnoresALocationOfZero)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {0};
    session.open();
    session.plays();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_FALSE(session->prePauseStatusAtLocation(0));
}

} // namespace
} // namespace qoro
