#include "PlayerTest.h"

#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace qoro::test
{
namespace
{

TEST_F(GstPlayerTest, PlaysOnTimeWithSound)
{
    const SoundServer sound;
    ASSERT_TRUE(sound.runs());
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until("state 1"));
    const double at = player.current_time();
    const double started = loop.now();

    ASSERT_TRUE(watch.until([&] { return !sound.stream_volume().empty(); }));
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_GE(loop.now() - started, Duration - at - 0.3) << "a clock of the sound's own may be a little ahead";
    EXPECT_EQ(player.current_time(), Duration);
}

TEST_F(GstPlayerTest, ItsSoundBeginsWithTheGivenVolume)
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

TEST_F(GstPlayerTest, ASilentPlayerOpensNoSound)
{
    const SoundServer sound;
    ASSERT_TRUE(sound.runs());
    watch.factory().options.silent = true;
    GstPlayer& player = watch.open(file());

    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.3; }));

    EXPECT_EQ(sound.pactl("list short sink-inputs"), "");
}

TEST_F(GstPlayerTest, ReportsThatTheSoundServerRequestsAPauseForACall)
{
    SoundServer sound;
    ASSERT_TRUE(sound.runs());
    std::vector<SoundRequest> requests;
    watch.factory().options.on_sound_request = [&](const GstPlayer&, SoundRequest request) {
        requests.push_back(request);
    };
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.2; }));

    sound.begin_call();
    ASSERT_TRUE(watch.until([&] { return !requests.empty(); }));
    player.pause();
    sound.end_call();
    ASSERT_TRUE(watch.until([&] { return requests.size() > 1; }));

    EXPECT_EQ(requests, (std::vector{SoundRequest::Pause, SoundRequest::Resume}));
    EXPECT_EQ(watch.reports.back(), "state 2") << "it obeys the controller alone";
}

TEST_F(GstPlayerTest, ASoundServerThatEndsDuringACallEndsTheRequestedPause)
{
    SoundServer sound;
    ASSERT_TRUE(sound.runs());
    std::vector<SoundRequest> requests;
    watch.factory().options.on_sound_request = [&](const GstPlayer&, SoundRequest request) {
        requests.push_back(request);
    };
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.2; }));
    sound.begin_call();
    ASSERT_TRUE(watch.until([&] { return !requests.empty(); }));

    sound.end();
    ASSERT_TRUE(watch.until([&] { return requests.size() > 1; }));
    ASSERT_TRUE(watch.until("finished 0")) << "without a sound";

    EXPECT_EQ(requests, (std::vector{SoundRequest::Pause, SoundRequest::Resume}));
}

TEST_F(GstPlayerTest, ASoundServerThatEndsLeavesASilentVideo)
{
    SoundServer sound;
    ASSERT_TRUE(sound.runs());
    GstPlayer& player = watch.open(file());
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.5; }));

    sound.end();
    const double at = player.current_time();
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_LT(at, Duration) << "there is sound to lose";
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerTest, AnUnresponsiveSoundServerLeavesASilentVideo)
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
    EXPECT_LT(took, 20) << "it does not wait for an answer";
    watch.drop();
    close(listener);
    std::filesystem::remove(path);
}

} // namespace
} // namespace qoro::test
