#include "Places.h"
#include "PlayerWatch.h"
#include "SoundServer.h"

#include "desktop/GlibLoop.h"
#include "desktop/media/PulseVolume.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace qoro::test
{
namespace
{

const std::string Clip = QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4";

class PulseVolumeTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(sound.runs()); }

    void let_pass(double seconds)
    {
        loop.run_until([] { return false; }, seconds);
    }
    bool until(const std::function<bool()>& condition)
    {
        const TimerId turns = loop.start_timer(0.02, true, [] {});
        const bool holds = loop.run_until(condition, 60);
        loop.stop_timer(turns);
        return holds;
    }

    SoundServer sound;
    GlibLoop loop;
};

class SystemVolumeTest : public PulseVolumeTest
{
protected:
    void open()
    {
        volume = std::make_unique<PulseVolume>(loop, PulseVolume::Scope::System);
        volume->on_change = [this] { ++changes; };
        // PulseVolume subscribes to volume changes from within the loop.
        let_pass(0.2);
    }

    std::unique_ptr<PulseVolume> volume;
    int changes = 0;
};

TEST_F(SystemVolumeTest, ReadsTheDevicesVolumeAtOnce)
{
    sound.pactl("set-sink-volume nothing 50%");

    const PulseVolume read(loop, PulseVolume::Scope::System);

    EXPECT_FLOAT_EQ(read.value(), 0.5F);
    EXPECT_TRUE(read.has_slider());
    EXPECT_FALSE(read.player_volume().has_value());
}

TEST_F(SystemVolumeTest, SetsTheDevicesVolumeAndReportsItOnce)
{
    open();

    volume->set_value(0.3F);
    const float read = volume->value();
    const int inside = changes;
    ASSERT_TRUE(until([&] { return sound.device_volume() == "30%"; }));
    let_pass(0.3);

    EXPECT_EQ(read, 0.3F);
    EXPECT_EQ(inside, 0);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(volume->value(), 0.3F);
}

TEST_F(SystemVolumeTest, SettingTheCurrentVolumeIsNoChange)
{
    open();

    volume->set_value(1);
    let_pass(0.2);

    EXPECT_EQ(changes, 0);
}

TEST_F(SystemVolumeTest, OfQuickChangesTheLastOneStays)
{
    open();

    for (const float value : {0.1F, 0.9F, 0.0F, 0.7F, 0.2F})
        volume->set_value(value);
    let_pass(0.5);

    EXPECT_EQ(volume->value(), 0.2F);
    EXPECT_EQ(sound.device_volume(), "20%");
    EXPECT_EQ(changes, 5);
}

TEST_F(SystemVolumeTest, FollowsChangesByTheUser)
{
    open();

    sound.pactl("set-sink-volume nothing 80%");
    ASSERT_TRUE(until([&] { return changes > 0; }));
    let_pass(0.2);

    EXPECT_NEAR(volume->value(), 0.8, 0.00002);
    EXPECT_EQ(changes, 1);
}

TEST_F(SystemVolumeTest, AMutedDeviceReads0)
{
    open();

    sound.pactl("set-sink-mute nothing 1");
    ASSERT_TRUE(until([&] { return changes > 0; }));

    EXPECT_EQ(volume->value(), 0);
}

TEST_F(SystemVolumeTest, AVolumeAbove0UnmutesTheDevice)
{
    sound.pactl("set-sink-mute nothing 1");
    open();

    volume->set_value(0.5F);

    EXPECT_TRUE(until([&] { return sound.device_volume() == "50%"; }));
}

TEST_F(SystemVolumeTest, AVolumeSetBeforeTheConnectionIsNotLost)
{
    PulseVolume early(loop, PulseVolume::Scope::System);

    early.set_value(0.25F);

    EXPECT_TRUE(until([&] { return sound.device_volume() == "25%"; }));
    EXPECT_EQ(early.value(), 0.25F);
}

TEST_F(SystemVolumeTest, RestoresTheOriginalVolume)
{
    sound.pactl("set-sink-volume nothing 64%");
    sound.pactl("set-sink-mute nothing 1");
    open();
    volume->set_value(0.2F);
    ASSERT_TRUE(until([&] { return sound.device_volume() == "20%"; }));

    volume.reset();

    EXPECT_EQ(sound.device_volume(), "64% muted");
}

TEST_F(SystemVolumeTest, DoesNotRestoreAVolumeThatItDidNotSet)
{
    open();
    sound.pactl("set-sink-volume nothing 44%");
    ASSERT_TRUE(until([&] { return changes > 0; }));

    volume.reset();

    EXPECT_EQ(sound.device_volume(), "44%");
}

// Disabled, because it kills its process. The next test runs it in a separate process and checks the volume after the
// crash.
TEST(CrashingProgram, DISABLED_ChangesTheVolumeAndCrashes)
{
    GlibLoop loop;
    PulseVolume volume(loop, PulseVolume::Scope::System);
    volume.set_value(0.1F);
    loop.run_until([] { return false; }, 0.5);

    raise(SIGKILL);
}

TEST_F(SystemVolumeTest, ACrashRestoresTheOriginalVolume)
{
    sound.pactl("set-sink-volume nothing 64%");
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    // Without any program to help it.
    const std::string crashing =
        "PATH=/nonexistent '" + self +
        "' --gtest_also_run_disabled_tests --gtest_filter='CrashingProgram.*' >/dev/null 2>&1 &";

    ASSERT_EQ(std::system(crashing.c_str()), 0);
    const bool changed = until([&] { return sound.device_volume() == "10%"; });
    const bool put_back = until([&] { return sound.device_volume() == "64%"; });

    EXPECT_TRUE(changed);
    EXPECT_TRUE(put_back);
}

class ProgramVolumeTest : public PulseVolumeTest
{
protected:
    void open()
    {
        volume = std::make_unique<PulseVolume>(loop, PulseVolume::Scope::Program);
        volume->on_change = [this] { ++changes; };
        watch = std::make_unique<PlayerWatch>(loop);
        watch->factory().options.volume = [this] { return volume->player_volume(); };
        let_pass(0.2);
    }
    /// Plays the clip.
    /// @return whether the server has a stream
    bool plays()
    {
        watch->open(NSURL::fileURLWithPath(Clip));
        const bool heard = until([&] {
            first_heard = sound.stream_volume();
            return !first_heard.empty();
        });
        let_pass(0.1);
        return heard;
    }

    std::unique_ptr<PulseVolume> volume;
    std::unique_ptr<PlayerWatch> watch;
    /// The stream's volume when it was first seen.
    std::string first_heard;
    int changes = 0;
};

TEST_F(ProgramVolumeTest, BeginsAtFullWhateverTheDevicesVolume)
{
    sound.pactl("set-sink-volume nothing 50%");
    open();

    ASSERT_TRUE(plays());

    EXPECT_EQ(first_heard, "100%");
    EXPECT_EQ(volume->value(), 1);
    EXPECT_EQ(changes, 0);
}

TEST_F(ProgramVolumeTest, SetsItsOwnStreamAndLeavesTheDevice)
{
    open();
    ASSERT_TRUE(plays());

    volume->set_value(0.3F);
    ASSERT_TRUE(until([&] { return sound.stream_volume() == "30%"; }));
    let_pass(0.2);

    EXPECT_EQ(sound.device_volume(), "100%");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(volume->value(), 0.3F);
}

TEST_F(ProgramVolumeTest, AVolumeSetBeforeTheStreamAppliesToIt)
{
    open();
    volume->set_value(0);

    ASSERT_TRUE(plays());

    EXPECT_EQ(first_heard, "0%");
    EXPECT_EQ(volume->value(), 0);
    EXPECT_EQ(changes, 1);
}

TEST_F(ProgramVolumeTest, FollowsChangesByTheUser)
{
    open();
    ASSERT_TRUE(plays());
    const std::string listed = sound.pactl("list short sink-inputs");
    const std::string index = listed.substr(0, listed.find('\t'));

    sound.pactl("set-sink-input-volume " + index + " 60%");
    ASSERT_TRUE(until([&] { return changes > 0; }));
    let_pass(0.2);

    EXPECT_NEAR(volume->value(), 0.6, 0.00002);
    EXPECT_EQ(changes, 1);
}

TEST_F(ProgramVolumeTest, TheStreamsOfOtherProgramsAreNotFollowed)
{
    open();
    ASSERT_TRUE(plays());
    const std::string own = sound.pactl("list short sink-inputs");
    const std::thread other([] {
        static_cast<void>(std::system("head -c 400000 /dev/zero | timeout 3 pacat --volume=20000 >/dev/null 2>&1"));
    });
    ASSERT_TRUE(until([&] { return sound.pactl("list short sink-inputs") != own; }));

    volume->set_value(0.5F);
    let_pass(0.3);
    const std::string all = sound.pactl("list sink-inputs");

    EXPECT_EQ(volume->value(), 0.5F);
    EXPECT_NE(all.find("20000 /"), std::string::npos);
    EXPECT_NE(all.find("32768 /"), std::string::npos);
    const_cast<std::thread&>(other).join();
}

TEST_F(ProgramVolumeTest, RestoresItsStreamsOriginalVolume)
{
    open();
    ASSERT_TRUE(plays());
    volume->set_value(0.1F);
    ASSERT_TRUE(until([&] { return sound.stream_volume() == "10%"; }));

    volume.reset();

    EXPECT_EQ(sound.stream_volume(), "100%");
}

TEST(PulseVolumeWithoutServer, StoresAndReportsTheValue)
{
    without_sound_server();
    GlibLoop loop;
    PulseVolume volume(loop, PulseVolume::Scope::Program);
    int changes = 0;
    volume.on_change = [&] { ++changes; };

    volume.set_value(0.4F);
    const int inside = changes;
    loop.run_until([&] { return changes > 0; }, 1);

    EXPECT_EQ(inside, 0);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(volume.value(), 0.4F);
    EXPECT_EQ(volume.player_volume(), 0.4F);
}

TEST(PulseVolumeWithoutServer, AValueOutsideTheRangeIsClamped)
{
    without_sound_server();
    GlibLoop loop;
    PulseVolume volume(loop, PulseVolume::Scope::System);

    volume.set_value(7);
    const float high = volume.value();
    volume.set_value(-1);

    EXPECT_EQ(high, 1);
    EXPECT_EQ(volume.value(), 0);
}

} // namespace
} // namespace qoro::test
