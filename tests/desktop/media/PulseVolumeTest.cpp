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

TEST_F(SystemVolumeTest, reads_the_devices_volume_at_once)
{
    sound.pactl("set-sink-volume nothing 50%");

    const PulseVolume read(loop, PulseVolume::Scope::System);

    EXPECT_FLOAT_EQ(read.value(), 0.5F);
    EXPECT_TRUE(read.has_slider());
    EXPECT_FALSE(read.player_volume().has_value());
}

TEST_F(SystemVolumeTest, sets_the_devices_volume_and_reports_it_once)
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

TEST_F(SystemVolumeTest, setting_the_volume_that_it_has_is_no_change)
{
    open();

    volume->set_value(1);
    let_pass(0.2);

    EXPECT_EQ(changes, 0);
}

TEST_F(SystemVolumeTest, of_quick_settings_the_last_one_stays)
{
    open();

    for (const float value : {0.1F, 0.9F, 0.0F, 0.7F, 0.2F})
        volume->set_value(value);
    let_pass(0.5);

    EXPECT_EQ(volume->value(), 0.2F);
    EXPECT_EQ(sound.device_volume(), "20%");
    EXPECT_EQ(changes, 5);
}

TEST_F(SystemVolumeTest, follows_what_the_person_at_the_machine_sets)
{
    open();

    sound.pactl("set-sink-volume nothing 80%");
    ASSERT_TRUE(until([&] { return changes > 0; }));
    let_pass(0.2);

    EXPECT_NEAR(volume->value(), 0.8, 0.00002);
    EXPECT_EQ(changes, 1);
}

TEST_F(SystemVolumeTest, a_muted_device_reads_0)
{
    open();

    sound.pactl("set-sink-mute nothing 1");
    ASSERT_TRUE(until([&] { return changes > 0; }));

    EXPECT_EQ(volume->value(), 0);
}

TEST_F(SystemVolumeTest, a_volume_above_0_unmutes_the_device)
{
    sound.pactl("set-sink-mute nothing 1");
    open();

    volume->set_value(0.5F);

    EXPECT_TRUE(until([&] { return sound.device_volume() == "50%"; }));
}

TEST_F(SystemVolumeTest, a_volume_set_before_the_connection_stands_is_not_lost)
{
    PulseVolume early(loop, PulseVolume::Scope::System);

    early.set_value(0.25F);

    EXPECT_TRUE(until([&] { return sound.device_volume() == "25%"; }));
    EXPECT_EQ(early.value(), 0.25F);
}

TEST_F(SystemVolumeTest, puts_back_what_it_found)
{
    sound.pactl("set-sink-volume nothing 64%");
    sound.pactl("set-sink-mute nothing 1");
    open();
    volume->set_value(0.2F);
    ASSERT_TRUE(until([&] { return sound.device_volume() == "20%"; }));

    volume.reset();

    EXPECT_EQ(sound.device_volume(), "64% muted");
}

TEST_F(SystemVolumeTest, leaves_alone_what_it_did_not_change)
{
    open();
    sound.pactl("set-sink-volume nothing 44%");
    ASSERT_TRUE(until([&] { return changes > 0; }));

    volume.reset();

    EXPECT_EQ(sound.device_volume(), "44%");
}

// Disabled, because it kills its process. The next test runs it in a separate process and checks the volume after the
// crash.
TEST(CrashingProgram, DISABLED_changes_the_volume_and_crashes)
{
    GlibLoop loop;
    PulseVolume volume(loop, PulseVolume::Scope::System);
    volume.set_value(0.1F);
    loop.run_until([] { return false; }, 0.5);

    raise(SIGKILL);
}

TEST_F(SystemVolumeTest, a_crash_puts_back_what_was_found)
{
    sound.pactl("set-sink-volume nothing 64%");
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    const std::string crashing =
        "'" + self + "' --gtest_also_run_disabled_tests --gtest_filter='CrashingProgram.*' >/dev/null 2>&1 &";

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

TEST_F(ProgramVolumeTest, begins_at_full_whatever_the_devices_volume)
{
    sound.pactl("set-sink-volume nothing 50%");
    open();

    ASSERT_TRUE(plays());

    EXPECT_EQ(first_heard, "100%");
    EXPECT_EQ(volume->value(), 1);
    EXPECT_EQ(changes, 0);
}

TEST_F(ProgramVolumeTest, sets_its_own_stream_and_leaves_the_device)
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

TEST_F(ProgramVolumeTest, a_volume_set_before_there_is_a_stream_holds_for_it)
{
    open();
    volume->set_value(0);

    ASSERT_TRUE(plays());

    EXPECT_EQ(first_heard, "0%");
    EXPECT_EQ(volume->value(), 0);
    EXPECT_EQ(changes, 1);
}

TEST_F(ProgramVolumeTest, follows_what_the_person_at_the_machine_sets)
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

TEST_F(ProgramVolumeTest, the_streams_of_other_programs_are_not_followed)
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

TEST_F(ProgramVolumeTest, puts_back_what_its_stream_began_with)
{
    open();
    ASSERT_TRUE(plays());
    volume->set_value(0.1F);
    ASSERT_TRUE(until([&] { return sound.stream_volume() == "10%"; }));

    volume.reset();

    EXPECT_EQ(sound.stream_volume(), "100%");
}

TEST(PulseVolumeWithoutServer, is_a_number_that_is_kept_and_reported)
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

TEST(PulseVolumeWithoutServer, a_value_outside_the_range_is_held_within)
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
