#include "tests/support/AdSession.h"
#include "tests/support/Allocations.h"

#include <gmock/gmock.h>

#include <vector>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RemainingTimeTick, IsOneSecondWithoutPrePauseLocations)
{
    AdSession session;
    session.open();

    session.plays();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 1.0);
    EXPECT_TRUE(session->timerUpdateRemainderTime.repeats());
}

TEST(RemainingTimeTick, IsATenthWithAListOfLocationsEvenAnEmptyOne)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = NSArray(std::vector<Value>{});
    session.open();

    session.plays();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 0.1);
}

TEST(RemainingTimeTick, IsChosenAgainWithEachPlay)
{
    AdSession session;
    session.open();
    session.plays();
    session.let_pass(0.5);
    session.script_says("cancelPrePauseLocations");

    session.plays_on();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 0.1);
    EXPECT_EQ(session->timerUpdateRemainderTime.fireDate(), 0.6);
}

TEST(RemainingTimeTick, ReplacesThePreviousOne)
{
    AdSession session;
    session.open();
    session.plays();
    session.let_pass(0.5);
    session.plays_on();
    session.forget();

    session.let_pass(0.9);
    EXPECT_THAT(session.events(), IsEmpty());
    session.let_pass(0.1);
    EXPECT_EQ(session.events().size(), 1U);
}

TEST(RemainingTimeTick, SendsTheScriptTheWholeSecondsPlayed)
{
    AdSession session;
    session.open();
    session.plays(95.7);
    session.player_is_at(30.2);
    session.forget();

    session.let_pass(1);

    EXPECT_EQ(session.count_of(R"(js video_timeupdate {"e":{"current_time":"30"}} 0)"), 1U);
    EXPECT_EQ(session->labelRemainderTime.text(), "01:05");
}

TEST(RemainingTimeTick, OfAPausedVideoSendsNothingButUpdatesTheLabel)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.pauses_at(8);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.events(), IsEmpty());
    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_EQ(session->labelRemainderTime.text(), "00:22");
}

TEST(RemainingTimeTick, AfterTheEndTheLabelShowsNothingLeft)
{
    AdSession session;
    session.open();
    session.plays();
    session.ends();
    session.player_is_at(12);

    session.let_pass(1);

    EXPECT_EQ(session->labelRemainderTime.text(), "00:00");
}

TEST(RemainingTimeTick, BeyondTheTotalTheLabelIsNegative)
{
    AdSession session;
    session.open();
    session.plays();
    session.player_is_at(35);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.text(), "00:-5");
}

TEST(RemainingTimeTick, WithoutADurationNothingIsSentAndTheLabelIsUnchanged)
{
    AdSession session;
    session.open();
    session.plays(0);
    session->labelRemainderTime.setText("as it was");
    session.forget();

    session->updateRemainderTime();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_EQ(session->labelRemainderTime.text(), "as it was");
}

TEST(RemainingTimeTick, TakesTheDurationOnceItIsKnown)
{
    AdSession session;
    session.open();
    session.plays(0);
    session.player_lasts(29.9);

    session->updateRemainderTime();

    EXPECT_EQ(session->fTotalTime, 29.9F);
}

TEST(RemainingTimeTick, KeepsAKnownTotal)
{
    AdSession session;
    session.open();
    session.plays(30);
    session.player_lasts(60);

    session->updateRemainderTime();

    EXPECT_EQ(session->fTotalTime, 30);
}

TEST(RemainingTimeTick, KeepsATotalOfLessThanASecond)
{
    AdSession session;
    session.open();
    session.plays(0.5);
    session.player_lasts(60);

    session->updateRemainderTime();

    EXPECT_EQ(session->fTotalTime, 0.5);
    EXPECT_EQ(session->labelRemainderTime.text(), "00:00");
}

TEST(RemainingTimeTick, BackFromAnotherAppTheVideoJumpsToItsLastPosition)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(7.5);
    session.return_to_app();
    session.plays_on();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), ElementsAre("seek 7.5"));
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

TEST(Tick, ThatChangesNothingVisibleAllocatesNoMemory)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(3.2);
    session->updateRemainderTime();
    const std::size_t before = test::allocations_so_far();

    session->updateRemainderTime();

    EXPECT_EQ(test::allocations_so_far(), before);
}

} // namespace
} // namespace qoro
