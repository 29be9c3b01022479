#include "PlayerWatch.h"
#include "SoundServer.h"
#include "VideoServer.h"

#include <gtest/gtest.h>

#include <glib.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace qoro::test
{
namespace
{

using Reports = std::vector<std::string>;

const std::string Clip = QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4";
constexpr double Duration = 4;

std::string bytes_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What colour the middle of a picture has: "red", "green", "blue", "white", or its three numbers.
std::string colour_of(const VideoFrame& frame)
{
    if (!frame)
        return "none";
    std::size_t size = 0;
    const auto* pixels = static_cast<const unsigned char*>(g_bytes_get_data(frame.pixels.get(), &size));
    const auto middle =
        static_cast<std::size_t>(frame.height / 2) * frame.stride + static_cast<std::size_t>(frame.width / 2) * 4;
    const int blue = pixels[middle];
    const int green = pixels[middle + 1];
    const int red = pixels[middle + 2];
    const auto is = [&](int r, int g, int b) {
        return std::abs(red - r) < 40 && std::abs(green - g) < 40 && std::abs(blue - b) < 40;
    };
    if (pixels[middle + 3] != 255)
        return "transparent";
    if (is(255, 0, 0))
        return "red";
    if (is(0, 128, 0))
        return "green";
    if (is(0, 0, 255))
        return "blue";
    if (is(255, 255, 255))
        return "white";
    std::ostringstream text;
    text << red << ' ' << green << ' ' << blue;
    return text.str();
}

double processor_time()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) * 1e-6;
}

class GstPlayerTest : public testing::Test
{
protected:
    GstPlayerTest() { without_sound_server(); }

    static NSURL file() { return NSURL::fileURLWithPath(Clip); }
    NSURL served(VideoServer::Answer answer = {})
    {
        if (answer.body.empty())
            answer.body = bytes_of(Clip);
        server.serve("/v.mp4", std::move(answer));
        return NSURL::URLWithString(server.address("/v.mp4"));
    }

    GlibLoop loop;
    VideoServer server;
    PlayerWatch watch{loop};
};

// ---------------------------------------------------------------------------------------------- start, play, end

TEST_F(GstPlayerTest, loads_plays_and_ends_in_this_order)
{
    GstPlayer& player = watch.open(file());

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
    EXPECT_EQ(watch.durations, (std::vector<double>{Duration, Duration, Duration, Duration, Duration}));
    EXPECT_EQ(player.current_time(), player.duration());
}

TEST_F(GstPlayerTest, the_time_is_exactly_the_duration_when_the_pause_at_the_end_is_reported)
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

TEST_F(GstPlayerTest, reads_nothing_before_it_is_loaded)
{
    GstPlayer& player = watch.open(file());

    EXPECT_EQ(player.duration(), 0);
    EXPECT_EQ(player.current_time(), 0);
    EXPECT_EQ(player.load_state(), 0);
    EXPECT_EQ(player.playback_state(), MPMoviePlaybackStateStopped);
}

TEST_F(GstPlayerTest, without_autoplay_it_loads_and_waits)
{
    GstPlayer& player = watch.open(file(), false);

    ASSERT_TRUE(watch.until("load 3"));
    watch.let_pass(0.3);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3"}));
    EXPECT_EQ(player.current_time(), 0);
}

TEST_F(GstPlayerTest, a_play_before_it_is_loaded_counts)
{
    watch.open(file(), false).play();

    EXPECT_TRUE(watch.until("state 1"));
}

TEST_F(GstPlayerTest, a_pause_before_it_is_loaded_takes_back_a_play)
{
    GstPlayer& player = watch.open(file(), false);
    player.play();
    player.pause();

    ASSERT_TRUE(watch.until("load 3"));
    watch.let_pass(0.2);

    EXPECT_FALSE(watch.has("state 1"));
}

TEST_F(GstPlayerTest, a_pause_before_it_is_loaded_leaves_autoplay)
{
    watch.open(file()).pause();

    EXPECT_TRUE(watch.until("state 1"));
}

TEST_F(GstPlayerTest, a_play_while_it_plays_reports_nothing)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    player.play();
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1"}));
}

TEST_F(GstPlayerTest, the_time_moves_with_the_clock_while_it_plays)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    const double from = player.current_time();
    const double at = loop.now();

    watch.let_pass(1);

    EXPECT_NEAR(player.current_time() - from, loop.now() - at, 0.05);
}

TEST_F(GstPlayerTest, the_time_stands_still_while_it_is_paused)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    player.pause();
    const double from = player.current_time();

    ASSERT_TRUE(watch.until("state 2"));
    watch.let_pass(0.3);

    EXPECT_EQ(player.current_time(), from);
}

TEST_F(GstPlayerTest, goes_on_after_a_pause_where_it_stood)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));
    player.pause();
    const double from = player.current_time();
    watch.let_pass(0.3);

    player.play();
    const double resumed = player.current_time();
    watch.let_pass(0.2);

    EXPECT_NEAR(resumed, from, 0.01);
    EXPECT_GT(player.current_time(), from);
    EXPECT_LT(player.current_time(), from + 0.4);
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "state 1"}));
}

TEST_F(GstPlayerTest, what_plays_pauses_when_the_app_is_left)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    watch.factory().leave_app();
    watch.factory().leave_app();
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2"}));
    EXPECT_EQ(player.playback_state(), MPMoviePlaybackStatePaused);
}

TEST_F(GstPlayerTest, a_play_after_the_end_starts_at_0)
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
    EXPECT_LT(player.current_time(), 1);
}

TEST_F(GstPlayerTest, a_replay_ends_like_the_first_run)
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

TEST_F(GstPlayerTest, a_replay_asks_the_server_for_nothing_again)
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

TEST_F(GstPlayerTest, what_it_keeps_of_a_video_has_no_name_to_be_left_behind)
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

TEST_F(GstPlayerTest, a_seek_while_it_plays_goes_on_playing_from_there)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    player.seek(2.5);
    const double time = player.current_time();
    watch.let_pass(0.5);

    EXPECT_EQ(time, 2.5);
    EXPECT_NEAR(player.current_time(), 3.0, 0.15);
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1"}));
}

TEST_F(GstPlayerTest, a_seek_while_paused_shows_the_picture_there_and_stays_paused)
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

TEST_F(GstPlayerTest, a_seek_is_held_within_the_video)
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

TEST_F(GstPlayerTest, a_seek_before_it_is_loaded_does_nothing)
{
    GstPlayer& player = watch.open(file(), false);

    player.seek(2);
    ASSERT_TRUE(watch.until("load 3"));

    EXPECT_EQ(player.current_time(), 0);
}

TEST_F(GstPlayerTest, a_seek_lifts_the_end_and_play_goes_on_from_there)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.6);
    ASSERT_TRUE(watch.until("finished 0"));

    player.seek(1.5);
    player.play();
    watch.let_pass(0.4);

    EXPECT_NEAR(player.current_time(), 1.9, 0.15);
}

TEST_F(GstPlayerTest, a_seek_to_the_end_while_it_plays_ends_it)
{
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));

    player.seek(Duration);

    ASSERT_TRUE(watch.until("finished 0"));
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerTest, of_many_seeks_the_last_one_counts)
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

// ---------------------------------------------------------------------------------------------------- lack of data

TEST_F(GstPlayerTest, a_server_that_stalls_is_a_lack_of_data_that_ends_with_it)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.holds_at = answer.body.size() * 7 / 10;
    GstPlayer& player = watch.open(served(answer));
    ASSERT_TRUE(watch.until("state 3"));
    const double stood = player.current_time();
    EXPECT_EQ(player.load_state(), MPMovieLoadStateStalled);
    watch.let_pass(0.3);
    EXPECT_EQ(player.current_time(), stood);

    server.release();
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "load 4", "state 3", "load 3", "state 1",
                                      "state 2", "finished 0"}));
    EXPECT_GT(stood, 1);
    EXPECT_LT(stood, 3.5);
}

TEST_F(GstPlayerTest, a_pause_while_data_is_lacking_is_kept_when_it_comes)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.holds_at = answer.body.size() * 7 / 10;
    GstPlayer& player = watch.open(served(answer));
    ASSERT_TRUE(watch.until("state 3"));
    watch.reports.clear();

    player.pause();
    ASSERT_TRUE(watch.until("state 2"));
    server.release();
    ASSERT_TRUE(watch.until("load 3"));
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"state 2", "load 3"}));
}

TEST_F(GstPlayerTest, a_player_without_data_can_be_dropped_at_once)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.holds_at = answer.body.size() * 7 / 10;
    watch.open(served(answer));
    ASSERT_TRUE(watch.until("state 3"));

    const double before = loop.now();
    watch.drop();
    const double took = loop.now() - before;
    const std::size_t reports = watch.reports.size();
    server.release();
    watch.let_pass(0.3);

    EXPECT_LT(took, 0.02);
    EXPECT_EQ(watch.reports.size(), reports);
}

TEST_F(GstPlayerTest, a_video_that_is_there_as_a_whole_never_lacks_data)
{
    GstPlayer& player = watch.open(served());
    ASSERT_TRUE(watch.until("state 1"));

    for (const double time : {3.0, 0.5, 2.0, 3.5}) {
        player.seek(time);
        watch.let_pass(0.15);
    }
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerTest, starts_only_when_enough_has_come)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.holds_at = answer.body.size() * 3 / 10;
    watch.open(served(answer));
    ASSERT_TRUE(watch.until("load 1"));
    watch.let_pass(0.5);
    EXPECT_EQ(watch.reports, (Reports{"load 1"}));

    server.release();

    ASSERT_TRUE(watch.until("state 1"));
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1"}));
}

// -------------------------------------------------------------------------------------------------------- failures

class GstPlayerFailureTest : public GstPlayerTest
{
protected:
    void expect_failure(const NSURL& source)
    {
        GstPlayer& player = watch.open(source);
        EXPECT_TRUE(watch.reports.empty());
        ASSERT_TRUE(watch.until("finished 1"));
        // The controller asks once more; that is no second failure.
        player.play();
        player.seek(1);
        player.pause();
        watch.let_pass(0.2);
        EXPECT_EQ(watch.reports, (Reports{"state 0", "finished 1"}));
        EXPECT_EQ(player.duration(), 0);
        EXPECT_NE(watch.failure, "");
    }
};

TEST_F(GstPlayerFailureTest, a_missing_file)
{
    expect_failure(NSURL::fileURLWithPath("/nonexistent/v.mp4"));
}

TEST_F(GstPlayerFailureTest, no_address)
{
    expect_failure(nullptr);
}

TEST_F(GstPlayerFailureTest, an_address_that_is_neither_http_nor_a_file)
{
    expect_failure(NSURL::URLWithString("rtsp://127.0.0.1/v.mp4"));
}

TEST_F(GstPlayerFailureTest, a_video_that_the_server_does_not_have)
{
    expect_failure(NSURL::URLWithString(server.address("/missing.mp4")));
}

TEST_F(GstPlayerFailureTest, a_server_that_does_not_answer_its_door)
{
    expect_failure(NSURL::URLWithString("http://127.0.0.1:9/v.mp4"));
}

TEST_F(GstPlayerFailureTest, a_page_instead_of_a_video)
{
    VideoServer::Answer answer;
    answer.body = "<!DOCTYPE html><html><body>Sorry</body></html>";
    answer.type = "text/html";
    expect_failure(served(answer));
}

TEST_F(GstPlayerFailureTest, a_picture_instead_of_a_video)
{
    VideoServer::Answer answer;
    answer.body = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\10\2\0\0\0\x90wS\xde\0\0\0\14IDAT\10\xd7"
                              "c\xf8\xcf\xc0\0\0\3\1\1\0\x18\xdd\x8d\xb0\0\0\0\0IEND\xae"
                              "B`\x82",
                              69);
    answer.type = "image/png";
    expect_failure(served(answer));
}

TEST_F(GstPlayerFailureTest, a_list_of_other_addresses)
{
    VideoServer::Answer answer;
    answer.body = "#EXTM3U\n#EXT-X-TARGETDURATION:4\n#EXTINF:4,\n" + server.address("/other.ts") + "\n#EXT-X-ENDLIST\n";
    answer.type = "application/vnd.apple.mpegurl";
    expect_failure(served(answer));
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(GstPlayerFailureTest, nothing_at_all)
{
    VideoServer::Answer answer;
    answer.body = std::string(1, '\0');
    expect_failure(served(answer));
}

TEST_F(GstPlayerTest, half_a_file_plays_and_then_fails_once)
{
    const std::string whole = bytes_of(Clip);
    const std::string path = testing::TempDir() + "/half.mp4";
    std::ofstream(path, std::ios::binary) << whole.substr(0, whole.size() * 6 / 10);
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));

    ASSERT_TRUE(watch.until("finished 1"));
    player.play();
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
    EXPECT_GT(player.current_time(), 1);
    EXPECT_LT(player.current_time(), 3.5);
    std::filesystem::remove(path);
}

TEST_F(GstPlayerTest, a_server_that_hangs_up_in_the_middle_fails_after_what_it_sent)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.cuts_at = answer.body.size() * 6 / 10;
    GstPlayer& player = watch.open(served(answer));

    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
    EXPECT_GT(player.current_time(), 1);
}

TEST_F(GstPlayerTest, a_server_that_never_speaks_holds_up_nothing)
{
    VideoServer::Answer answer;
    answer.silent = true;
    answer.body = "x";
    watch.open(served(answer));
    ASSERT_TRUE(watch.until([&] { return server.requests() == 1; }));

    const double before = loop.now();
    watch.drop();

    EXPECT_LT(loop.now() - before, 0.02);
    EXPECT_TRUE(watch.reports.empty());
}

// ------------------------------------------------------------------------------------------------------ being dropped

class GstPlayerDropTest : public GstPlayerTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(GstPlayerDropTest, a_player_dropped_inside_a_report_says_no_more)
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

TEST_F(GstPlayerTest, players_come_and_go_quickly)
{
    const double before = loop.now();
    for (int count = 0; count < 20; ++count) {
        watch.open(served());
        watch.let_pass(0.002 * count);
        watch.drop();
    }

    watch.open(file());

    EXPECT_TRUE(watch.until("state 1"));
    EXPECT_LT(loop.now() - before, 5);
}

// ---------------------------------------------------------------------------------------------------------- pictures

TEST_F(GstPlayerTest, the_first_picture_is_there_before_it_plays)
{
    GstPlayer& player = watch.open(file(), false);
    player.set_picture_size(64, 36);

    ASSERT_TRUE(watch.until("load 1"));

    EXPECT_EQ(colour_of(player.latest_frame()), "red");
    EXPECT_EQ(player.latest_frame().width, 64);
    EXPECT_EQ(player.latest_frame().height, 36);
}

TEST_F(GstPlayerTest, a_picture_of_another_size_is_there_at_once_while_paused)
{
    GstPlayer& player = watch.open(file(), false);
    player.set_picture_size(64, 36);
    ASSERT_TRUE(watch.until("load 3"));

    player.set_picture_size(375, 375);

    EXPECT_EQ(player.latest_frame().width, 375);
    EXPECT_EQ(player.latest_frame().height, 211);
    EXPECT_EQ(colour_of(player.latest_frame()), "red");
}

TEST_F(GstPlayerTest, aspect_fill_covers_the_box)
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

TEST_F(GstPlayerTest, a_player_that_is_not_shown_makes_no_pictures)
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

TEST_F(GstPlayerTest, every_picture_of_the_video_is_announced)
{
    GstPlayer& player = watch.open(file());
    player.set_picture_size(32, 18);
    int announced = 0;
    player.on_frame = [&] {
        ++announced;
        player.latest_frame();
    };

    ASSERT_TRUE(watch.until("finished 0"));

    // 30 a second for four seconds; a loaded machine may leave a few out.
    EXPECT_GE(announced, 100);
    EXPECT_LE(announced, 120);
    EXPECT_EQ(colour_of(player.latest_frame()), "white");
}

TEST_F(GstPlayerTest, pictures_that_nobody_fetched_are_announced_once)
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

TEST_F(GstPlayerTest, a_paused_player_costs_nothing)
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

TEST_F(GstPlayerTest, an_ended_player_costs_nothing)
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

// ------------------------------------------------------------------------------------------------------------- sound

TEST_F(GstPlayerTest, plays_on_time_with_sound)
{
    const SoundServer sound;
    ASSERT_TRUE(sound.runs());
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));
    const double started = loop.now();

    ASSERT_TRUE(watch.until([&] { return !sound.stream_volume().empty(); }));
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_NEAR(loop.now() - started, Duration, 0.3);
    EXPECT_EQ(player.current_time(), Duration);
}

TEST_F(GstPlayerTest, its_sound_begins_with_the_volume_that_it_is_given)
{
    const SoundServer sound;
    ASSERT_TRUE(sound.runs());
    watch.factory().options.volume = [] { return std::optional<float>(0.4F); };
    watch.open(file());

    std::string first;
    ASSERT_TRUE(watch.until([&] {
        first = sound.stream_volume();
        return !first.empty();
    }));

    EXPECT_EQ(first, "40%");
}

TEST_F(GstPlayerTest, a_silent_player_opens_no_sound)
{
    const SoundServer sound;
    ASSERT_TRUE(sound.runs());
    watch.factory().options.silent = true;
    GstPlayer& player = watch.open(file());

    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));

    EXPECT_EQ(sound.pactl("list short sink-inputs"), "");
}

TEST_F(GstPlayerTest, a_sound_server_that_ends_leaves_a_silent_video)
{
    SoundServer sound;
    ASSERT_TRUE(sound.runs());
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.5; }));

    sound.end();
    const double at = player.current_time();
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_LT(at, 2);
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerTest, a_sound_server_that_says_nothing_leaves_a_silent_video)
{
    const std::string path = testing::TempDir() + "/mute-server";
    std::filesystem::remove(path);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un here{};
    here.sun_family = AF_UNIX;
    path.copy(here.sun_path, sizeof here.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&here), sizeof here), 0);
    ASSERT_EQ(listen(listener, 4), 0);
    setenv("PULSE_SERVER", ("unix:" + path).c_str(), 1);
    const double before = loop.now();

    watch.open(file());
    const bool plays = watch.until("state 1");
    const double took = loop.now() - before;

    EXPECT_TRUE(plays);
    EXPECT_LT(took, 3);
    watch.drop();
    close(listener);
    std::filesystem::remove(path);
}

} // namespace
} // namespace qoro::test
