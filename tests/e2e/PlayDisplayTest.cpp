#include "Places.h"
#include "tests/desktop/media/SoundServer.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

// A display that disappears under a playing ad: the ad closes normally, and the program reports the cause.

namespace qoro::test
{

namespace
{

const std::string DemoAd = QORO_SOURCE_DIR "/examples/demo/ad.json";

/// A separate display for the played ad.
class OwnDisplay
{
public:
    /// @param start a shell command that becomes the display's server; it may use a folder, $place
    /// @param use shell commands to run once the server is ready
    OwnDisplay(std::string start, std::string use) : start_(std::move(start)), use_(std::move(use))
    {
        place_ = (std::filesystem::path(testing::TempDir()) / ("display-" + std::to_string(getpid()))).string();
        std::filesystem::remove_all(place_);
        std::filesystem::create_directories(place_);
        std::filesystem::permissions(place_, std::filesystem::perms::owner_all);
    }
    ~OwnDisplay()
    {
        end();
        std::filesystem::remove_all(place_);
    }
    OwnDisplay(const OwnDisplay&) = delete;
    OwnDisplay& operator=(const OwnDisplay&) = delete;

    /// A launcher that starts the server, then the command after it.
    std::vector<std::string> launcher() const
    {
        return {"sh", "-c",
                "place=" + place_ + "; { exec " + start_ + "; } >/dev/null 2>&1 & echo $! >$place/server; " + use_ +
                    "; exec \"$@\"",
                "sh"};
    }
    void end()
    {
        int server = 0;
        if (std::ifstream(place_ + "/server") >> server && server > 0)
            kill(server, SIGKILL);
        std::filesystem::remove(place_ + "/server");
    }

private:
    const std::string start_;
    const std::string use_;
    std::string place_;
};

/// The program's own error output, without its libraries' messages.
std::string own_words(const std::string& complaints)
{
    std::istringstream lines(complaints);
    std::string own;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("qoro-ad: ") && line.find("without a sandbox") == std::string::npos)
            own += line + "\n";
    return own;
}

void close_when_it_goes_away(OwnDisplay& display)
{
    const SoundServer sound;
    ASSERT_TRUE(sound.runs());
    const std::string volume = sound.device_volume();
    PlayedAd ad({DemoAd, "--system-volume"}, display.launcher(), false);
    ASSERT_TRUE(ad.reaches_second(1)) << ad.complaints();
    ad.wait_for([](const nlohmann::json& line) { return line["what"] == "hit"; }); // its page and server have started

    display.end();

    EXPECT_EQ(ad.exit_status(), 1) << ad.complaints();
    EXPECT_EQ(own_words(ad.complaints()), "qoro-ad: the display is gone, and the ad was closed\n");
    EXPECT_TRUE(ad.hears("onhide")) << "the trace goes on to the end";
    EXPECT_TRUE(ad.reports({{"what", "super"}, {"do", "updateStatusbar"}}));
    EXPECT_TRUE(ad.reports({{"what", "player"}, {"do", "drop"}}));
    EXPECT_EQ(ad.hits_of("/t/close"), 1) << "its close tracker has gone out, and come in";
    EXPECT_EQ(sound.device_volume(), volume);
}

} // namespace

TEST(PlayOnADisplay, WhoseXServerEndsClosesTheAdOrderly)
{
    OwnDisplay display("Xvfb -displayfd 3 -screen 0 1280x1024x24 -noreset -nolisten tcp 3>$place/name",
                       "until [ -s $place/name ]; do sleep 0.1; done; "
                       "export GDK_BACKEND=x11 DISPLAY=:$(cat $place/name)");
    close_when_it_goes_away(display);
}

TEST(PlayOnADisplay, WhoseCompositorEndsClosesTheAdOrderly)
{
    if (std::system("command -v weston >/dev/null") != 0)
        GTEST_SKIP() << "this machine has no Wayland compositor for tests (weston)";
    OwnDisplay display(
        "env XDG_RUNTIME_DIR=$place weston --backend=headless-backend.so --socket=display --no-config --log=$place/log",
        "until grep -qs weston-desktop-shell $place/log; do sleep 0.1; done; "
        "export GDK_BACKEND=wayland XDG_RUNTIME_DIR=$place WAYLAND_DISPLAY=display; unset DISPLAY");
    close_when_it_goes_away(display);
}

} // namespace qoro::test
