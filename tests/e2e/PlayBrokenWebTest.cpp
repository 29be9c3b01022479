#include "Places.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

// The web engine's processes do not start: the ad is shown without its page, and the viewer can leave.

namespace qoro::test
{

namespace
{

const std::string DemoAd = QORO_SOURCE_DIR "/examples/demo/ad.json";

/// Runs the following command with one of the web engine's programs replaced.
std::vector<std::string> with_program_replaced(const std::string& program, const std::string& by)
{
    const std::string script = "for folder in /usr/lib/*/webkitgtk-6.0 /usr/libexec/webkitgtk-6.0; do"
                               " [ ! -e $folder/" +
                               program + " ] || mount --bind " + by + " $folder/" + program +
                               " || exit 3; done; exec \"$@\"";
    return {"unshare", "--map-root-user", "--mount", "sh", "-c", script, "sh"};
}

bool programs_can_be_replaced()
{
    return std::system("unshare --map-root-user --mount mount --bind /bin/false /bin/true 2>/dev/null") == 0;
}

struct Broken {
    const char* name;
    const char* program;
    const char* by;
};

class PlayWithABrokenWebEngine : public testing::TestWithParam<Broken>
{
};

TEST_P(PlayWithABrokenWebEngine, ShowsTheVideoReportsTheMissingPageAndCanBeLeft)
{
    if (!programs_can_be_replaced())
        GTEST_SKIP() << "this machine lets no test mount anything";
    const Broken broken = GetParam();
    PlayedAd ad({DemoAd}, with_program_replaced(broken.program, broken.by));

    const nlohmann::json died =
        ad.wait_for([](const nlohmann::json& line) { return line["what"] == "web" && line.value("do", "") == "died"; });
    EXPECT_NE(died.value("reason", "").find(std::string(broken.program) + " does not start"), std::string::npos)
        << died << ad.complaints();
    EXPECT_TRUE(ad.reaches_second(1)) << ad.complaints();
    ad.press("Escape");

    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
    EXPECT_EQ(ad.hits_of("/t/close"), 1);
}

INSTANTIATE_TEST_SUITE_P(Each, PlayWithABrokenWebEngine,
                         testing::Values(Broken{"PageThatIsAnotherProgram", "WebKitWebProcess", "/bin/true"},
                                         Broken{"PageThatIsNoProgram", "WebKitWebProcess", "/etc/hostname"},
                                         Broken{"RequestsThatAreAnotherProgram", "WebKitNetworkProcess", "/bin/true"},
                                         Broken{"RequestsThatAreNoProgram", "WebKitNetworkProcess", "/etc/hostname"}),
                         [](const auto& broken) { return std::string(broken.param.name); });

} // namespace
} // namespace qoro::test
