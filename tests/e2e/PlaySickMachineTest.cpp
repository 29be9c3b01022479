#include "Places.h"
#include "tests/desktop/media/SoundServer.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

// A machine without resources that programs rely on: the ad is shown as far as possible, and the viewer can leave.

namespace qoro::test
{

namespace
{

const std::string DemoAd = QORO_SOURCE_DIR "/examples/demo/ad.json";

/// Runs the following command with the temporary folder and the user's cache on a disk of one megabyte, private to the
/// command and removed with it.
/// @param prepared shell commands to run on the disk first
/// @param mounted final mount option: rw or ro
std::vector<std::string> on_a_disk(const std::string& prepared, const std::string& mounted)
{
    const std::string place = std::filesystem::path(testing::TempDir()) / ("sick-disk-" + std::to_string(getpid()));
    std::filesystem::create_directories(place);
    const std::string script = "mount -t tmpfs -o size=1m disk " + place + " && cd " + place +
                               " && mkdir tmp cache && export TMPDIR=$PWD/tmp XDG_CACHE_HOME=$PWD/cache && " +
                               prepared + " && mount -o remount," + mounted + " $PWD && exec \"$@\"";
    return {"unshare", "--map-root-user", "--mount", "sh", "-c", script, "sh"};
}

bool disks_can_be_made()
{
    return std::system("unshare --map-root-user --mount mount -t tmpfs disk /mnt 2>/dev/null") == 0;
}

#define NEEDS_A_DISK                                                                                                   \
    if (!disks_can_be_made())                                                                                          \
    GTEST_SKIP() << "this machine lets no test mount a disk of its own"

} // namespace

TEST(PlayOnASickMachine, WhoseDiskIsFullPlaysAndCanBeLeft)
{
    NEEDS_A_DISK;
    PlayedAd ad({DemoAd}, on_a_disk("! head -c 2m /dev/zero >filling 2>/dev/null", "rw"));

    EXPECT_TRUE(ad.reaches_second(1)) << "there is memory to keep the video in\n" << ad.complaints();
    EXPECT_TRUE(ad.wait_for([](const nlohmann::json& line) {
                      return line["what"] == "web" && line.value("do", "") == "died" &&
                             line.value("reason", "").ends_with(" is full");
                  }).is_object())
        << "a page that can't be shown is reported";
    ad.press("Escape");

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
}

TEST(PlayOnASickMachine, WhoseFoldersAreReadOnlyPlaysAndCanBeLeft)
{
    NEEDS_A_DISK;
    PlayedAd ad({DemoAd}, on_a_disk("true", "ro"));

    EXPECT_TRUE(ad.reaches_second(1)) << "there is memory to keep the video in\n" << ad.complaints();
    ad.press("Escape");

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
}

TEST(PlayOnASickMachine, WhoseSoundServerIsKilledPlaysOnSilently)
{
    SoundServer sound;
    ASSERT_TRUE(sound.runs());
    PlayedAd ad({DemoAd}, {}, false);
    ASSERT_TRUE(ad.reaches_second(1)) << ad.complaints();
    ASSERT_NE(sound.stream_volume(), "") << "there is sound to lose";

    sound.end();

    EXPECT_TRUE(ad.reaches_second(4)) << ad.complaints();
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
}

} // namespace qoro::test
