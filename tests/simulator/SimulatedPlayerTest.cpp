#include "simulator/SimulatedPlatform.h"

#include "platform/Numbers.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using Reports = std::vector<std::string>;

/// A player on its own platform; records the time, the report and the player's state.
struct PlayerRun : PlayerListener {
    explicit PlayerRun(const VideoSetup& video, const NSURL& source = NSURL::URLWithString("http://ad/v.mp4"))
        : platform(world_with(video))
    {
        player = platform.players().make_player(source, *this);
    }

    static World world_with(const VideoSetup& video)
    {
        World world;
        world.video = video;
        return world;
    }

    void autoplay(bool on)
    {
        PlayerSettings settings;
        settings.should_autoplay = on;
        player->apply(settings);
    }
    void run_until(double seconds) { platform.run_until(seconds); }

    void load_state_changed() override { note("load " + std::to_string(player->load_state())); }
    void playback_state_changed() override { note("state " + std::to_string(player->playback_state())); }
    void finished(MPMovieFinishReason reason) override { note("finish " + std::to_string(reason)); }
    void note(const std::string& what) { reports.push_back(shortest_text(platform.loop().now()) + " " + what); }

    SimulatedPlatform platform;
    std::unique_ptr<PlayerEngine> player;
    Reports reports;
};

VideoSetup lasting(double duration)
{
    VideoSetup video;
    video.duration = duration;
    return video;
}

VideoSetup manual()
{
    VideoSetup video;
    video.manual = true;
    return video;
}

TEST(AutomaticPlayer, BehavesAsTheVideoAtItsAddress)
{
    World world;
    world.video.duration = 30;
    world.videos["http://ad/second.mp4"].duration = 15;
    SimulatedPlatform platform(world);
    PlayerRun listener(lasting(1));
    const auto first = platform.players().make_player(NSURL::URLWithString("http://ad/v.mp4"), listener);
    const auto second = platform.players().make_player(NSURL::URLWithString("http://ad/second.mp4"), listener);
    platform.run_until(1);

    EXPECT_EQ(first->duration(), 30);
    EXPECT_EQ(second->duration(), 15);
}

TEST(AutomaticPlayer, ReadsZeroBeforeItIsLoaded)
{
    PlayerRun run(lasting(30));

    EXPECT_EQ(run.player->current_time(), 0);
    EXPECT_EQ(run.player->duration(), 0);
    EXPECT_EQ(run.player->load_state(), 0);
    EXPECT_EQ(run.player->playback_state(), 0);
}

TEST(AutomaticPlayer, ReportsPlayableThenPlaythroughThenPlaying)
{
    PlayerRun run(lasting(30));

    run.run_until(0.3);

    EXPECT_EQ(run.reports, (Reports{"0.3 load 1", "0.3 load 3", "0.3 state 1"}));
    EXPECT_EQ(run.player->duration(), 30);
}

TEST(AutomaticPlayer, WithoutAutoplayWaitsForPlay)
{
    PlayerRun run(lasting(30));
    run.autoplay(false);

    run.run_until(1);
    run.player->play();
    run.run_until(3);

    EXPECT_EQ(run.reports, (Reports{"0.3 load 1", "0.3 load 3", "1 state 1"}));
    EXPECT_EQ(run.player->current_time(), 2);
}

TEST(AutomaticPlayer, APlayBeforeTheVideoIsLoadedIsRemembered)
{
    PlayerRun run(lasting(30));
    run.autoplay(false);

    run.player->play();
    run.run_until(0.3);

    EXPECT_EQ(run.reports.back(), "0.3 state 1");
}

TEST(AutomaticPlayer, APauseBeforeTheVideoIsLoadedRevokesAPlay)
{
    PlayerRun run(lasting(30));
    run.autoplay(false);

    run.player->play();
    run.player->pause();
    run.run_until(1);

    EXPECT_EQ(run.reports, (Reports{"0.3 load 1", "0.3 load 3"}));
}

TEST(AutomaticPlayer, APauseBeforeTheVideoIsLoadedDoesNotRevokeAutoplay)
{
    PlayerRun run(lasting(30));

    run.player->pause();
    run.run_until(1);

    EXPECT_EQ(run.player->playback_state(), 1);
}

TEST(AutomaticPlayer, PlayingAdvancesTheTimeAndAPauseHoldsIt)
{
    PlayerRun run(lasting(30));
    run.run_until(2.5);

    run.player->pause();
    run.run_until(4);

    EXPECT_EQ(run.player->current_time(), 2.2);
    EXPECT_EQ(run.reports.back(), "2.5 state 2");
}

TEST(AutomaticPlayer, ACommandChangesTheStateAtOnceAndReportsItLater)
{
    PlayerRun run(lasting(30));
    run.run_until(1);
    const std::size_t before = run.reports.size();

    run.player->pause();

    EXPECT_EQ(run.player->playback_state(), 2);
    EXPECT_EQ(run.reports.size(), before);
}

TEST(AutomaticPlayer, PlayingAgainWhilePlayingReportsNothing)
{
    PlayerRun run(lasting(30));
    run.run_until(1);
    const std::size_t before = run.reports.size();

    run.player->play();
    run.run_until(2);

    EXPECT_EQ(run.reports.size(), before);
}

TEST(AutomaticPlayer, AtTheEndTheTimeIsExactlyTheDurationAndPausedIsReportedBeforeTheFinish)
{
    PlayerRun run(lasting(0.1 + 0.2));
    run.run_until(0.3);
    run.reports.clear();

    run.run_until(10);

    EXPECT_EQ(run.reports, (Reports{"0.6 state 2", "0.6 finish 0"}));
    EXPECT_EQ(run.player->current_time(), 0.1 + 0.2);
}

TEST(AutomaticPlayer, ADurationWithFractionsOfAMicrosecondIsReachedExactly)
{
    PlayerRun run(lasting(1.0000004));

    run.run_until(10);

    EXPECT_EQ(run.player->current_time(), 1.0000004);
}

TEST(AutomaticPlayer, PlayAfterTheEndStartsFromTheBeginning)
{
    PlayerRun run(lasting(1));
    run.run_until(5);

    run.player->play();
    run.run_until(5.5);

    EXPECT_EQ(run.player->current_time(), 0.5);
    EXPECT_EQ(run.reports.back(), "5 state 1");
}

TEST(AutomaticPlayer, ASeekAfterTheEndRevokesItAndPlayContinuesFromThere)
{
    PlayerRun run(lasting(10));
    run.run_until(20);

    run.player->seek(4);
    run.player->play();
    run.run_until(21);

    EXPECT_EQ(run.player->current_time(), 5);
}

TEST(AutomaticPlayer, ASeekIsClampedToTheVideo)
{
    PlayerRun run(lasting(10));
    run.autoplay(false);
    run.run_until(1);

    run.player->seek(-3);
    EXPECT_EQ(run.player->current_time(), 0);
    run.player->seek(99);
    EXPECT_EQ(run.player->current_time(), 10);
}

TEST(AutomaticPlayer, ASeekWhilePlayingMovesTheEnd)
{
    PlayerRun run(lasting(10));
    run.run_until(1.3);

    run.player->seek(8);
    run.run_until(10);

    EXPECT_EQ(run.reports.back(), "3.3 finish 0");
}

TEST(AutomaticPlayer, ASeekKeepsItsFullPrecision)
{
    constexpr double Sought = 2.34567890123;
    PlayerRun run(lasting(10));
    run.run_until(0.3);

    run.player->seek(Sought);
    EXPECT_EQ(run.player->current_time(), Sought);
    run.run_until(1.55);
    EXPECT_DOUBLE_EQ(run.player->current_time(), Sought + 1.25);

    run.player->pause();
    run.run_until(3);
    run.player->play();
    run.run_until(3.5);
    EXPECT_DOUBLE_EQ(run.player->current_time(), Sought + 1.75);
}

TEST(AutomaticPlayer, TheEndIsNotPassedWhereItLiesBetweenTwoMicroseconds)
{
    PlayerRun run(lasting(10));
    run.run_until(0.3);
    double at_end = 0;
    // Older than the player's own timer, it runs first.
    run.platform.loop().start_timer(9, false, [&] { at_end = run.player->current_time(); });

    run.player->seek(1.0000004);
    run.run_until(20);

    EXPECT_EQ(at_end, 10);
    EXPECT_EQ(run.player->current_time(), 10);
    EXPECT_EQ(run.reports.back(), "9.3 finish 0");
}

TEST(AutomaticPlayer, TwoStallsAtOnePlaceBothHappen)
{
    VideoSetup video = lasting(10);
    video.stalls = {{4, 1}, {4, 1}};
    PlayerRun run(video);
    run.run_until(0.3);

    run.player->seek(3.4999996);
    run.run_until(20);

    EXPECT_EQ(run.reports.back(), "8.8 finish 0");
}

TEST(AutomaticPlayer, NewsOfAStallInterruptAPlayingVideo)
{
    PlayerRun run(lasting(4));
    run.autoplay(true);
    run.run_until(1.3);
    PlayerNews news;
    news.stall = 2;
    static_cast<SimulatedPlayer&>(*run.player).take(news);
    run.reports.clear();
    run.run_until(10);
    EXPECT_EQ(run.reports,
              (Reports{"1.3 load 4", "1.3 state 3", "3.3 load 3", "3.3 state 1", "6.3 state 2", "6.3 finish 0"}));
}

TEST(AutomaticPlayer, AnEndlessStallNeverEnds)
{
    PlayerRun run(lasting(4));
    run.autoplay(true);
    run.run_until(1.3);
    PlayerNews news;
    news.stall = std::numeric_limits<double>::infinity();
    static_cast<SimulatedPlayer&>(*run.player).take(news);
    run.player->play();
    run.run_until(1e7);
    EXPECT_EQ(run.player->playback_state(), MPMoviePlaybackStateInterrupted);
    EXPECT_EQ(run.player->current_time(), 1);
}

TEST(AutomaticPlayer, ABrokenVideoFailsAgainWhenItIsPlayed)
{
    PlayerRun run(lasting(4));
    run.autoplay(true);
    run.run_until(1.3);
    PlayerNews news;
    news.broken = true;
    static_cast<SimulatedPlayer&>(*run.player).take(news);
    run.reports.clear();
    run.run_until(2);
    run.player->play();
    run.run_until(3);
    EXPECT_EQ(run.reports, (Reports{"1.3 state 0", "1.3 finish 1", "2 state 0", "2 finish 1"}));
}

TEST(AutomaticPlayer, AStallIsReportedAndThenItsEnd)
{
    VideoSetup video = lasting(10);
    video.stalls = {{2, 1.5}};
    PlayerRun run(video);
    run.run_until(0.3);
    run.reports.clear();

    run.run_until(5);

    EXPECT_EQ(run.reports, (Reports{"2.3 load 4", "2.3 state 3", "3.8 load 3", "3.8 state 1"}));
    EXPECT_EQ(run.player->current_time(), 3.2);
}

TEST(AutomaticPlayer, ACommandDuringAStallDoesNothing)
{
    VideoSetup video = lasting(10);
    video.stalls = {{2, 1}};
    PlayerRun run(video);
    run.run_until(2.5);

    run.player->pause();
    run.player->seek(7);
    run.run_until(3.3);

    EXPECT_EQ(run.player->playback_state(), 1);
    EXPECT_EQ(run.player->current_time(), 2);
}

TEST(AutomaticPlayer, AStallHappensOncePerPlayer)
{
    VideoSetup video = lasting(10);
    video.stalls = {{2, 1}};
    PlayerRun run(video);
    run.run_until(4);
    run.reports.clear();

    run.player->seek(1);
    run.run_until(6);

    EXPECT_TRUE(run.reports.empty());
    EXPECT_EQ(run.player->current_time(), 3);
}

TEST(AutomaticPlayer, AFailureReportsStoppedAndThenAFinishOncePerPlayer)
{
    VideoSetup video = lasting(10);
    video.error = 3;
    PlayerRun run(video);
    run.run_until(0.3);
    run.reports.clear();

    run.run_until(5);
    run.player->play();
    run.run_until(20);

    EXPECT_EQ(run.reports, (Reports{"3.3 state 0", "3.3 finish 1", "5 state 1", "12 state 2", "12 finish 0"}));
}

TEST(AutomaticPlayer, APermanentFailureAnswersThreePlaysWithAnotherAndThenNothing)
{
    VideoSetup video = lasting(10);
    video.error_for_good = 3;
    PlayerRun run(video);
    run.run_until(0.3);
    run.reports.clear();

    for (const double time : {5.0, 6.0, 7.0, 8.0}) {
        run.run_until(time);
        run.player->play();
    }
    run.run_until(20);

    EXPECT_EQ(run.reports, (Reports{"3.3 state 0", "3.3 finish 1", "5 state 0", "5 finish 1", "6 state 0", "6 finish 1",
                                    "7 state 0", "7 finish 1"}));
    EXPECT_EQ(run.player->current_time(), 3);
}

TEST(AutomaticPlayer, AVideoThatFailsAtItsBeginningForGoodNeverLoads)
{
    VideoSetup video = lasting(10);
    video.error_for_good = 0;
    PlayerRun run(video);
    for (const double time : {1.0, 2.0, 3.0, 4.0}) {
        run.run_until(time);
        run.player->play();
    }
    run.run_until(20);

    EXPECT_EQ(run.reports, (Reports{"0.3 state 0", "0.3 finish 1", "1 state 0", "1 finish 1", "2 state 0", "2 finish 1",
                                    "3 state 0", "3 finish 1"}));
    EXPECT_EQ(run.player->duration(), 0);
}

TEST(AutomaticPlayer, ATemporaryFailureMayPrecedeAPermanentOne)
{
    VideoSetup video = lasting(10);
    video.stalls = {{4, 1}};
    video.error = 3;
    video.error_for_good = 4;
    PlayerRun run(video);
    run.run_until(0.3);
    run.reports.clear();

    run.run_until(5);
    run.player->play();
    run.run_until(20);

    EXPECT_EQ(run.reports, (Reports{"3.3 state 0", "3.3 finish 1", "5 state 1", "6 load 4", "6 state 3", "7 load 3",
                                    "7 state 1", "7 state 0", "7 finish 1"}));
}

TEST(AutomaticPlayer, WithoutAnAddressFailsOnceInsteadOfLoading)
{
    PlayerRun run(lasting(10), NSURL());
    run.player->play();

    run.run_until(5);
    EXPECT_EQ(run.reports, (Reports{"0.3 state 0", "0.3 finish 1"}));
    for (int i = 0; i < 10; ++i)
        run.player->play();
    run.run_until(6);

    EXPECT_EQ(run.reports, (Reports{"0.3 state 0", "0.3 finish 1"}));
    EXPECT_EQ(run.player->load_state(), 0);
}

TEST(AutomaticPlayer, LeavingTheAppPausesAPlayingVideo)
{
    PlayerRun run(lasting(10));
    run.run_until(1);
    run.reports.clear();

    run.platform.leave_app();
    EXPECT_TRUE(run.reports.empty());
    run.run_until(2);

    EXPECT_EQ(run.reports, Reports{"1 state 2"});
}

TEST(AutomaticPlayer, LeavingTheAppReportsNothingOfAPausedPlayer)
{
    PlayerRun run(lasting(10));
    run.autoplay(false);
    run.run_until(1);
    run.reports.clear();

    run.platform.leave_app();
    run.run_until(2);

    EXPECT_TRUE(run.reports.empty());
}

TEST(AutomaticPlayer, ADestroyedPlayerReportsNothing)
{
    PlayerRun run(lasting(10));
    run.run_until(1);
    run.reports.clear();

    run.player->pause();
    run.player.reset();
    run.run_until(20);

    EXPECT_TRUE(run.reports.empty());
}

TEST(AutomaticPlayer, AStepsNotificationsMoveTheVideo)
{
    PlayerRun run(lasting(10));
    run.run_until(1.3);

    PlayerNews news;
    news.time = 6;
    static_cast<SimulatedPlayer&>(*run.player).take(news);
    run.run_until(2.3);

    EXPECT_EQ(run.player->current_time(), 7);
}

PlayerNews playing_news()
{
    PlayerNews news;
    news.state = MPMoviePlaybackStatePlaying;
    return news;
}

TEST(AutomaticPlayer, PlayingByAStepBeforeItIsLoadedReachesItsEnd)
{
    PlayerRun run(lasting(10));
    static_cast<SimulatedPlayer&>(*run.player).take(playing_news());

    run.run_until(20);

    EXPECT_EQ(run.reports, (Reports{"0 state 1", "0.3 load 1", "0.3 load 3", "10 state 2", "10 finish 0"}));
    EXPECT_EQ(run.player->current_time(), 10);
}

TEST(AutomaticPlayer, PlayingByAStepBeforeItIsLoadedPausesWhenTheAppIsLeft)
{
    PlayerRun run(lasting(10));
    run.autoplay(false);
    static_cast<SimulatedPlayer&>(*run.player).take(playing_news());
    run.run_until(0.1);

    run.platform.leave_app();
    run.run_until(20);

    EXPECT_EQ(run.reports, (Reports{"0 state 1", "0.1 state 2", "0.3 load 1", "0.3 load 3"}));
    EXPECT_EQ(run.player->current_time(), 0.1);
}

TEST(ManualPlayer, DoesNothingWithoutSteps)
{
    PlayerRun run(manual());

    run.player->play();
    run.player->pause();
    run.platform.leave_app();
    run.run_until(60);

    EXPECT_TRUE(run.reports.empty());
    EXPECT_EQ(run.player->playback_state(), 0);
}

TEST(ManualPlayer, ASeekSetsTheTime)
{
    PlayerRun run(manual());

    run.player->seek(12.5);

    EXPECT_EQ(run.player->current_time(), 12.5);
}

TEST(ManualPlayer, PostsItsNotificationsAsLoadThenStateThenFinishInsideTheCall)
{
    PlayerRun run(manual());
    PlayerNews news;
    news.time = 30;
    news.duration = 30;
    news.load = MPMovieLoadStatePlayable | MPMovieLoadStatePlaythroughOK;
    news.state = MPMoviePlaybackStatePaused;
    news.finish = MPMovieFinishReasonPlaybackEnded;

    static_cast<SimulatedPlayer&>(*run.player).take(news);

    EXPECT_EQ(run.reports, (Reports{"0 load 3", "0 state 2", "0 finish 0"}));
    EXPECT_EQ(run.player->current_time(), 30);
    EXPECT_EQ(run.player->duration(), 30);
}

TEST(ManualPlayer, AHugeTimeDoesNotStopLaterNotifications)
{
    PlayerRun run(manual());
    PlayerNews far = playing_news();
    far.time = 1e300;
    static_cast<SimulatedPlayer&>(*run.player).take(far);
    run.run_until(2);

    PlayerNews news;
    news.time = 3;
    static_cast<SimulatedPlayer&>(*run.player).take(news);

    EXPECT_EQ(run.player->current_time(), 3);
}

TEST(AutomaticPlayer, PlayingFromATimeFarBeforeTheStartDoesNotReachTheEnd)
{
    PlayerRun run(lasting(10));
    run.run_until(1.3);
    PlayerNews far;
    far.time = -1e300;
    static_cast<SimulatedPlayer&>(*run.player).take(far);

    run.run_until(1000);

    EXPECT_EQ(run.player->playback_state(), MPMoviePlaybackStatePlaying);
    EXPECT_LT(run.player->current_time(), -1e12);
}

TEST(AutomaticPlayer, ASeekInAVideoOfNegativeDurationStaysAtTheStart)
{
    PlayerRun run(lasting(10));
    run.run_until(1);
    PlayerNews news;
    news.duration = -5;
    static_cast<SimulatedPlayer&>(*run.player).take(news);

    run.player->seek(3);

    EXPECT_EQ(run.player->current_time(), 0);
}

} // namespace
} // namespace qoro
