#include "tests/contract/PlayerContract.h"

namespace qoro::test
{

namespace
{
/// Seconds to wait for an unexpected action of the player.
constexpr double Moment = 0.15;
/// Seek target shortly before the end.
constexpr double NearTheEnd = VideoSeconds - 0.3;
} // namespace

void PlayerContract::expect_three_vain_plays(PlayerEngine& player)
{
    for (int play = 1; play <= PlayerEngine::MostVainPlays; ++play) {
        reports.clear();
        player.play();
        EXPECT_EQ(reports, Reports{}) << "a report is an event of its own";
        ASSERT_TRUE(until_heard("finished 1")) << "play " << play;
        // Playback near the failure may restart once.
        std::erase(reports, "state 1");
        EXPECT_EQ(reports, (Reports{"state 0", "finished 1"})) << "play " << play;
        EXPECT_EQ(player.playback_state(), MPMoviePlaybackStateStopped);
    }
    reports.clear();
    player.play();
    let_pass(Moment);
    EXPECT_EQ(reports, Reports{});
}

TEST_P(PlayerContract, LoadsPlaysAndEndsInThisOrderAndEndsAtExactlyItsDuration)
{
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("state 1"));
    player.seek(NearTheEnd);

    ASSERT_TRUE(until_heard("finished 0"));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
    EXPECT_EQ(durations, std::vector<double>(5, VideoSeconds));
    EXPECT_EQ(times[3], VideoSeconds) << "already when the pause is reported";
    EXPECT_EQ(times[4], VideoSeconds);
    EXPECT_EQ(player.current_time(), player.duration());
    EXPECT_EQ(player.playback_state(), MPMoviePlaybackStatePaused);
}

TEST_P(PlayerContract, ReadsZeroBeforeItIsLoadedAndReportsNothingInsideItsMaking)
{
    PlayerEngine& player = open();

    EXPECT_EQ(player.duration(), 0);
    EXPECT_EQ(player.current_time(), 0);
    EXPECT_EQ(player.load_state(), 0);
    EXPECT_EQ(player.playback_state(), MPMoviePlaybackStateStopped);
    EXPECT_EQ(reports, Reports{});
}

TEST_P(PlayerContract, WithoutAutoplayItLoadsAndWaitsAtItsStartForAPlay)
{
    PlayerEngine& player = open(false);
    ASSERT_TRUE(until_heard("load 3"));
    let_pass(Moment);
    EXPECT_EQ(reports, (Reports{"load 1", "load 3"}));
    EXPECT_EQ(player.current_time(), 0);

    player.play();

    EXPECT_EQ(reports, (Reports{"load 1", "load 3"})) << "a report is an event of its own";
    ASSERT_TRUE(until_heard("state 1"));
    EXPECT_TRUE(until([&] { return player.current_time() > 0; }));
}

TEST_P(PlayerContract, APlayBeforeItIsLoadedCountsAndAPauseRevokesIt)
{
    open(false).play();
    ASSERT_TRUE(until_heard("state 1"));
    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1"}));
    reports.clear();

    PlayerEngine& again = open(false);
    again.play();
    again.pause();
    ASSERT_TRUE(until_heard("load 3"));
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"load 1", "load 3"}));
}

TEST_P(PlayerContract, APauseBeforeItIsLoadedLeavesAutoplay)
{
    open().pause();

    EXPECT_TRUE(until_heard("state 1"));
}

TEST_P(PlayerContract, HoldsItsPositionWhilePausedAndContinuesThere)
{
    PlayerEngine& player = open();
    ASSERT_TRUE(until([&] { return player.current_time() > 0.1; }));

    player.pause();
    ASSERT_TRUE(until_heard("state 2"));
    const double stood = player.current_time();
    let_pass(Moment);
    EXPECT_EQ(player.current_time(), stood);
    player.play();
    ASSERT_TRUE(until([&] { return player.current_time() > stood && reports.size() == 5; }));

    EXPECT_LT(player.current_time(), VideoSeconds);
    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1", "state 2", "state 1"}));
}

TEST_P(PlayerContract, APlayWhileItPlaysAndAPauseWhileItIsPausedReportNothing)
{
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("state 1"));
    player.play();
    let_pass(Moment);
    player.pause();
    ASSERT_TRUE(until_heard("state 2"));
    player.pause();
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1", "state 2"}));
}

TEST_P(PlayerContract, APlayAfterTheEndStartsAt0AndEndsOnceMore)
{
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("state 1"));
    player.seek(NearTheEnd);
    ASSERT_TRUE(until_heard("finished 0"));
    reports.clear();
    times.clear();

    player.play();
    ASSERT_TRUE(until_heard("state 1"));
    EXPECT_LT(times[0], NearTheEnd);
    player.seek(NearTheEnd);
    ASSERT_TRUE(until_heard("finished 0"));

    EXPECT_EQ(reports, (Reports{"state 1", "state 2", "finished 0"}));
    EXPECT_EQ(times[1], VideoSeconds);
}

TEST_P(PlayerContract, ASeekRevokesTheEndAndPlayContinuesFromThere)
{
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("state 1"));
    player.seek(NearTheEnd);
    ASSERT_TRUE(until_heard("finished 0"));
    reports.clear();
    times.clear();

    player.seek(2);
    EXPECT_EQ(player.current_time(), 2);
    player.play();
    ASSERT_TRUE(until_heard("state 1"));

    EXPECT_GE(times[0], 2);
    EXPECT_LT(times[0], NearTheEnd);
}

TEST_P(PlayerContract, ASeekWhilePausedIsClampedToTheVideoAndReportsNothing)
{
    PlayerEngine& player = open(false);
    ASSERT_TRUE(until_heard("load 3"));

    player.seek(-7);
    EXPECT_EQ(player.current_time(), 0);
    player.seek(1.5);
    EXPECT_EQ(player.current_time(), 1.5);
    player.seek(1000);
    EXPECT_EQ(player.current_time(), VideoSeconds);
    let_pass(Moment);

    EXPECT_EQ(player.current_time(), VideoSeconds);
    EXPECT_EQ(reports, (Reports{"load 1", "load 3"}));
}

TEST_P(PlayerContract, AStallIsReportedAndEndsWhenDataArrives)
{
    begin({.clip = Clip::Stalling});
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("state 3"));
    EXPECT_EQ(player.load_state(), MPMovieLoadStateStalled);
    const double stood = player.current_time();
    let_pass(Moment);
    EXPECT_EQ(player.current_time(), stood);

    world().data_comes_again();
    ASSERT_TRUE(until([&] { return reports.size() == 7; }));
    player.seek(NearTheEnd);
    ASSERT_TRUE(until_heard("finished 0"));

    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1", "load 4", "state 3", "load 3", "state 1", "state 2",
                                "finished 0"}));
}

TEST_P(PlayerContract, AFailureInMidVideoIsReportedAndAPlayContinuesFromThere)
{
    begin({.clip = Clip::Breaking});
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("finished 1"));
    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
    const double failed_at = player.current_time();
    EXPECT_GT(failed_at, 0.5);
    let_pass(Moment);
    EXPECT_EQ(player.current_time(), failed_at);
    reports.clear();
    times.clear();

    world().it_can_be_played_again();
    player.play();
    EXPECT_EQ(player.current_time(), failed_at) << "already while it is loaded anew";
    ASSERT_TRUE(until_heard("state 1"));
    EXPECT_GE(times[0], failed_at);
    EXPECT_LT(times[0], failed_at + 0.5);
    ASSERT_TRUE(until_heard("finished 0"));

    EXPECT_EQ(reports, (Reports{"state 1", "state 2", "finished 0"}));
    EXPECT_EQ(times[2], VideoSeconds);
    EXPECT_EQ(durations, std::vector<double>(durations.size(), VideoSeconds)) << "once reported it does not change";
}

TEST_P(PlayerContract, ASeekAfterAFailureMovesThePositionAtWhichAPlayContinues)
{
    begin({.clip = Clip::Breaking});
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("finished 1"));
    reports.clear();
    times.clear();

    world().it_can_be_played_again();
    player.seek(NearTheEnd);
    EXPECT_EQ(player.current_time(), NearTheEnd);
    player.play();
    ASSERT_TRUE(until_heard("finished 0"));

    EXPECT_EQ(reports, (Reports{"state 1", "state 2", "finished 0"}));
    EXPECT_GE(times[0], NearTheEnd);
}

TEST_P(PlayerContract, APermanentFailureAnswersThreePlaysWithAnotherAndThenNothing)
{
    begin({.clip = Clip::Broken});
    PlayerEngine& player = open();
    ASSERT_TRUE(until_heard("finished 1"));
    EXPECT_EQ(reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
    const double failed_at = player.current_time();

    expect_three_vain_plays(player);

    EXPECT_EQ(player.current_time(), failed_at);
    EXPECT_EQ(durations, std::vector<double>(durations.size(), VideoSeconds)) << "once reported it does not change";
}

TEST_P(PlayerContract, ANullAddressFailsOnceAsAnEventOfItsOwn)
{
    PlayerEngine& player = open(true, NSURL());
    EXPECT_EQ(reports, Reports{});
    ASSERT_TRUE(until_heard("finished 1"));
    let_pass(Moment);
    EXPECT_EQ(reports, (Reports{"state 0", "finished 1"}));

    player.play();
    let_pass(Moment);

    EXPECT_EQ(reports, (Reports{"state 0", "finished 1"}));
    EXPECT_EQ(player.duration(), 0);
    EXPECT_EQ(player.load_state(), 0);
}

TEST_P(PlayerContract, ADestroyedPlayerReportsNothing)
{
    open();
    ASSERT_TRUE(until_heard("state 1"));
    reports.clear();

    drop();
    let_pass(Moment);

    EXPECT_EQ(reports, Reports{});
}

} // namespace qoro::test
