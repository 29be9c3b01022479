#include "desktop/web/LaunchTrial.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace qoro::test
{

/// xdg-dbus-proxy is the first program of a trial in the sandbox.
TEST(LaunchTrial, AProgramThatDoesNotEndCountsAsStarted)
{
    const ScratchFolder folder;
    const std::string proxy =
        folder.write("xdg-dbus-proxy", "#!/bin/sh\necho $$ >" + folder.path("process") + "\nexec sleep 600\n");
    std::filesystem::permissions(proxy, std::filesystem::perms::owner_all);
    const std::string path = folder.path("") + ":" + getenv("PATH");
    setenv("PATH", path.c_str(), 1);
    unsetenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");

    const LaunchTrial trial = try_launch(WebProcess::Page, 0);
    EXPECT_FALSE(trial.is_over());
    EXPECT_EQ(trial.outcome(), "");
    EXPECT_TRUE(trial.is_over());
    pid_t process = 0;
    std::ifstream(folder.path("process")) >> process;
    ASSERT_GT(process, 0);
    EXPECT_EQ(kill(process, 0), -1) << "it still runs";
}

TEST(LaunchTrial, AProgramOfWebKitsHasItsLibraries)
{
    EXPECT_EQ(webkit_lacks("\tlinux-vdso.so.1 (0x00007ffe)\n"
                           "\tlibwebkitgtk-6.0.so.4 => /lib/libwebkitgtk-6.0.so.4 (0x00007f00)\n"
                           "\tlibc.so.6 => /lib/libc.so.6 (0x00007f10)\n"),
              "");
    EXPECT_EQ(webkit_lacks("\tlibwebkitgtk-6.0.so.4 => /lib/libwebkitgtk-6.0.so.4 (0x00007f00)\n"
                           "\tlibgone.so.1 => not found\n"
                           "\tlibc.so.6 => /lib/libc.so.6 (0x00007f10)\n"),
              "it lacks the library libgone.so.1");
    EXPECT_EQ(webkit_lacks("\tlibc.so.6 => /lib/libc.so.6 (0x00007f10)\n"), "it is not a program of WebKit's");
}

/// Another dynamic linker may know no such list.
TEST(LaunchTrial, WhatIsNoListSaysNothing)
{
    EXPECT_EQ(webkit_lacks(""), "");
    EXPECT_EQ(webkit_lacks("usage: program\n"), "");
}

} // namespace qoro::test
