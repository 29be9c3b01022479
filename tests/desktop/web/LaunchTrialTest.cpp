#include "desktop/web/LaunchTrial.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace qoro::test
{

/// xdg-dbus-proxy is the first program of a trial in the sandbox.
TEST(LaunchTrial, AProgramThatDoesNotEndCountsAsStarted)
{
    const ScratchFolder folder;
    const std::string proxy = folder.write("xdg-dbus-proxy", "#!/bin/sh\nexec sleep 30\n");
    std::filesystem::permissions(proxy, std::filesystem::perms::owner_all);
    const std::string path = folder.path("") + ":" + getenv("PATH");
    setenv("PATH", path.c_str(), 1);
    unsetenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");

    const LaunchTrial trial = try_launch(WebProcess::Page, 0);
    EXPECT_FALSE(trial.is_over());
    EXPECT_EQ(trial.outcome(), "");
    EXPECT_TRUE(trial.is_over());
}

} // namespace qoro::test
