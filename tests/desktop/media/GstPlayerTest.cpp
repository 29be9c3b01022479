#include "FrameColour.h"
#include "PlayerTest.h"

#include <cmath>
#include <filesystem>
#include <limits>

namespace qoro::test
{
namespace
{

// ---------------------------------------------------------------------------------------------- start, play, end

TEST_F(GstPlayerTest, LoadsPlaysAndEndsInThisOrder)
{
    GstPlayer& player = watch.open(file());

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
    EXPECT_EQ(watch.durations, (std::vector<double>{Duration, Duration, Duration, Duration, Duration}));
    EXPECT_EQ(player.current_time(), player.duration());
}

TEST_F(GstPlayerTest, TheTimeIsExactlyTheDurationWhenThePauseAtTheEndIsReported)
{
    GstPlayer& player = watch.open(file());
    double time = 0;
    watch.on_report = [&] {
        if (watch.reports.back() == "state 2")
            time = player.current_time();
    };

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(time, Duration);
}

TEST_F(GstPlayerTest, HasNoDurationOrPositionBeforeItIsLoaded)
{
    GstPlayer& player = watch.open(file());

    EXPECT_EQ(player.duration(), 0);
    EXPECT_EQ(player.current_time(), 0);
    EXPECT_EQ(player.load_state(), 0);
    EXPECT_EQ(player.playback_state(), MPMoviePlaybackStateStopped);
}

TEST_F(GstPlayerTest, WithoutAutoplayItLoadsAndWaits)
{
    GstPlayer& player = watch.open(file(), false);

    ASSERT_TRUE(watch.until("load 3"));
    watch.let_pass(0.3);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3"}));
    EXPECT_EQ(player.current_time(), 0);
}

TEST_F(GstPlayerTest, APlayBeforeItIsLoadedCounts)
{
    watch.open(file(), false).play();

    EXPECT_TRUE(watch.until("state 1"));
}

TEST_F(GstPlayerTest, APauseBeforeItIsLoadedRevokesAPlay)
{
    GstPlayer& player = watch.open(file(), false);
    player.play();
    player.pause();

    ASSERT_TRUE(watch.until("load 3"));
    watch.let_pass(0.2);

    EXPECT_FALSE(watch.has("state 1"));
}

TEST_F(GstPlayerTest, APauseBeforeItIsLoadedLeavesAutoplay)
{
    watch.open(file()).pause();

    EXPECT_TRUE(watch.until("state 1"));
}

TEST_F(GstPlayerTest, APlayWhileItPlaysReportsNothing)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    player.play();
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1"}));
}

TEST_F(GstPlayerTest, TheTimeMovesWithTheClockWhileItPlays)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    // A busy machine may pause between two lines, so the position is read between two clock readings.
    const double before = loop.now();
    const double from = player.current_time();
    const double after = loop.now();

    watch.let_pass(1);

    const double least = loop.now() - after;
    const double moved = player.current_time() - from;
    const double most = loop.now() - before;
    EXPECT_GE(moved, least - 0.05);
    EXPECT_LE(moved, most + 0.05);
}

TEST_F(GstPlayerTest, TheTimeDoesNotMoveWhilePaused)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    player.pause();
    const double from = player.current_time();

    ASSERT_TRUE(watch.until("state 2"));
    watch.let_pass(0.3);

    EXPECT_EQ(player.current_time(), from);
}

TEST_F(GstPlayerTest, ContinuesAfterAPauseAtTheSamePosition)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    player.pause();
    const double from = player.current_time();
    watch.let_pass(1.5);

    const double before = loop.now();
    player.play();
    ASSERT_TRUE(watch.until([&] { return watch.reports.size() == 5 && player.current_time() > from; }));
    const double moved = player.current_time() - from;

    // The pipeline pauses slightly later than the command.
    EXPECT_LE(moved, loop.now() - before + 0.75) << "and not where it would be without the pause";
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "state 1"}));
}

TEST_F(GstPlayerTest, APlayingVideoPausesWhenTheAppIsLeft)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    watch.factory().leave_app();
    watch.factory().leave_app();
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2"}));
    EXPECT_EQ(player.playback_state(), MPMoviePlaybackStatePaused);
}

TEST_F(GstPlayerTest, APlayAfterTheEndStartsAt0)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.5);
    ASSERT_TRUE(watch.until("finished 0"));
    watch.reports.clear();

    player.play();
    const double time = player.current_time();
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.2; }));

    EXPECT_EQ(time, 0);
    EXPECT_EQ(watch.reports, (Reports{"state 1"}));
    EXPECT_LT(player.current_time(), 3.5);
}

TEST_F(GstPlayerTest, AReplayEndsLikeTheFirstRun)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.5);
    ASSERT_TRUE(watch.until("finished 0"));
    player.play();
    player.seek(3.5);
    watch.reports.clear();

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"state 1", "state 2", "finished 0"}));
    EXPECT_EQ(player.current_time(), Duration);
}

TEST_F(GstPlayerTest, AReplayRequestsNothingAgain)
{
    GstPlayer& player = watch.open(served());
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.5);
    ASSERT_TRUE(watch.until("finished 0"));
    const int asked = server.requests();

    player.play();
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.2; }));

    EXPECT_EQ(server.requests(), asked);
}

TEST_F(GstPlayerTest, ItsBufferFileHasNoNameAndCannotBeLeftBehind)
{
    watch.open(served());
    ASSERT_TRUE(watch.until("state 1"));

    int kept = 0;
    for (const auto& open_file : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code closed;
        const std::string name = std::filesystem::read_symlink(open_file, closed).string();
        if (name.find("/qoro-video-") == std::string::npos)
            continue;
        ++kept;
        EXPECT_TRUE(name.ends_with(" (deleted)")) << name;
    }
    EXPECT_EQ(kept, 1);
}

// --------------------------------------------------------------------------------------------------------- seeking

TEST_F(GstPlayerTest, ASeekDuringPlaybackContinuesFromThere)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    const double before = loop.now();
    player.seek(2.5);
    const double time = player.current_time();
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 2.6; }));

    EXPECT_EQ(time, 2.5);
    EXPECT_LE(player.current_time(), 2.5 + loop.now() - before + 0.15);
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1"}));
}

TEST_F(GstPlayerTest, ASeekWhilePausedShowsThePictureThereAndStaysPaused)
{
    GstPlayer& player = watch.open(file(), false);
    player.set_picture_size(32, 18);
    ASSERT_TRUE(watch.until("load 3"));

    player.seek(2.5);
    ASSERT_TRUE(watch.until([&] { return colour_of(player.latest_frame()) == "blue"; }));
    watch.let_pass(0.2);

    EXPECT_EQ(player.current_time(), 2.5);
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3"}));
}

TEST_F(GstPlayerTest, ASeekIsClampedToTheVideo)
{
    GstPlayer& player = watch.open(file(), false);
    ASSERT_TRUE(watch.until("load 3"));

    player.seek(-3);
    const double low = player.current_time();
    player.seek(300);
    const double high = player.current_time();
    player.seek(std::numeric_limits<double>::quiet_NaN());
    const double none = player.current_time();

    EXPECT_EQ(low, 0);
    EXPECT_EQ(high, Duration);
    EXPECT_EQ(none, 0);
}

TEST_F(GstPlayerTest, ASeekBeforeItIsLoadedDoesNothing)
{
    GstPlayer& player = watch.open(file(), false);

    player.seek(2);
    ASSERT_TRUE(watch.until("load 3"));

    EXPECT_EQ(player.current_time(), 0);
}

TEST_F(GstPlayerTest, ASeekRevokesTheEndAndPlayContinuesFromThere)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.6);
    ASSERT_TRUE(watch.until("finished 0"));

    const double before = loop.now();
    player.seek(1.5);
    player.play();
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 1.6; }));

    EXPECT_LE(player.current_time(), 1.5 + loop.now() - before + 0.15);
}

TEST_F(GstPlayerTest, ASeekToTheEndWhileItPlaysEndsIt)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    player.seek(Duration);

    ASSERT_TRUE(watch.until("finished 0"));
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerTest, OfManySeeksTheLastOneCounts)
{
    GstPlayer& player = watch.open(file(), false);
    player.set_picture_size(32, 18);
    ASSERT_TRUE(watch.until("load 3"));

    for (const double time : {0.5, 3.5, 1.5, 3.2, 2.5})
        player.seek(time);
    ASSERT_TRUE(watch.until([&] { return colour_of(player.latest_frame()) == "blue"; }));
    watch.let_pass(0.3);

    EXPECT_EQ(colour_of(player.latest_frame()), "blue");
    EXPECT_EQ(player.current_time(), 2.5);
}

// -------------------------------------------------------------------------------------------------------- destruction

class GstPlayerDropTest : public GstPlayerTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(GstPlayerDropTest, APlayerDestroyedInsideAReportReportsNothingMore)
{
    GstPlayer& player = watch.open(file());
    watch.on_report = [&] {
        if (watch.reports.back() == "state 1")
            player.seek(3.7);
        if (watch.reports.back() == GetParam())
            watch.drop();
    };

    ASSERT_TRUE(watch.until(GetParam()));
    const std::size_t reports = watch.reports.size();
    watch.let_pass(0.3);

    EXPECT_EQ(watch.reports.size(), reports);
}

INSTANTIATE_TEST_SUITE_P(Reports, GstPlayerDropTest,
                         testing::Values("load 1", "load 3", "state 1", "state 2", "finished 0"));

TEST_F(GstPlayerTest, ManyPlayersInQuickSuccessionLeaveTheNextOnePlaying)
{
    for (int count = 0; count < 20; ++count) {
        watch.open(served());
        watch.let_pass(0.002 * count);
        watch.drop();
    }

    watch.open(file());

    EXPECT_TRUE(watch.until("state 1"));
}

} // namespace
} // namespace qoro::test
