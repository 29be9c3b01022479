#include "FrameColour.h"
#include "PlayerTest.h"

#include <sys/resource.h>

namespace qoro::test
{
namespace
{

double processor_time()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) * 1e-6;
}

TEST_F(GstPlayerTest, TheFirstPictureIsAvailableBeforeItPlays)
{
    GstPlayer& player = watch.open(file(), false);
    player.set_picture_size(64, 36);

    ASSERT_TRUE(watch.until("load 1"));

    EXPECT_EQ(colour_of(player.latest_frame()), "red");
    EXPECT_EQ(player.latest_frame().width, 64);
    EXPECT_EQ(player.latest_frame().height, 36);
}

TEST_F(GstPlayerTest, APictureOfAnotherSizeIsAvailableAtOnceWhilePaused)
{
    GstPlayer& player = watch.open(file(), false);
    player.set_picture_size(64, 36);
    ASSERT_TRUE(watch.until("load 3"));

    player.set_picture_size(375, 375);

    EXPECT_EQ(player.latest_frame().width, 375);
    EXPECT_EQ(player.latest_frame().height, 211);
    EXPECT_EQ(colour_of(player.latest_frame()), "red");
}

TEST_F(GstPlayerTest, AspectFillCoversTheBox)
{
    GstPlayer& player = watch.open(file(), false);
    PlayerSettings settings;
    settings.should_autoplay = false;
    settings.scaling_mode = MPMovieScalingModeAspectFill;
    player.apply(settings);
    player.set_picture_size(101, 203);

    ASSERT_TRUE(watch.until("load 3"));

    EXPECT_EQ(player.latest_frame().width, 101);
    EXPECT_EQ(player.latest_frame().height, 203);
    EXPECT_EQ(colour_of(player.latest_frame()), "red");
}

TEST_F(GstPlayerTest, APlayerThatIsNotShownMakesNoPictures)
{
    GstPlayer& player = watch.open(file());
    int announced = 0;
    player.on_frame = [&] { ++announced; };
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    const int before = announced;
    const bool empty = !player.latest_frame();

    player.set_picture_size(32, 18);
    ASSERT_TRUE(watch.until([&] { return announced > 0; }));

    EXPECT_EQ(before, 0);
    EXPECT_TRUE(empty);
    EXPECT_EQ(colour_of(player.latest_frame()), "red");
}

TEST_F(GstPlayerTest, EveryPictureOfTheVideoIsAnnounced)
{
    GstPlayer& player = watch.open(file());
    player.set_picture_size(32, 18);
    int announced = 0;
    player.on_frame = [&] {
        ++announced;
        player.latest_frame();
    };

    ASSERT_TRUE(watch.until("finished 0"));

    // 30 a second for four seconds; a loaded machine may drop a few.
    EXPECT_GE(announced, 100);
    EXPECT_LE(announced, 120);
    EXPECT_EQ(colour_of(player.latest_frame()), "white");
}

TEST_F(GstPlayerTest, PicturesThatAreNotFetchedAreAnnouncedOnce)
{
    GstPlayer& player = watch.open(file());
    player.set_picture_size(32, 18);
    int announced = 0;
    player.on_frame = [&] { ++announced; };
    ASSERT_TRUE(watch.until("state 1"));
    announced = 0;

    g_usleep(500000);
    g_main_context_iteration(nullptr, FALSE);

    EXPECT_EQ(announced, 1);
}

TEST_F(GstPlayerTest, APausedPlayerUsesNoProcessorTime)
{
    GstPlayer& player = watch.open(file());
    player.set_picture_size(375, 211);
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    player.pause();
    watch.let_pass(0.2);

    const double before = processor_time();
    watch.let_pass(1);

    EXPECT_LT(processor_time() - before, 0.01);
}

TEST_F(GstPlayerTest, AnEndedPlayerUsesNoProcessorTime)
{
    GstPlayer& player = watch.open(file());
    player.set_picture_size(375, 211);
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.8);
    ASSERT_TRUE(watch.until("finished 0"));
    watch.let_pass(0.2);

    const double before = processor_time();
    watch.let_pass(1);

    EXPECT_LT(processor_time() - before, 0.01);
}

} // namespace
} // namespace qoro::test
