#include "Places.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/media/VideoServer.h"
#include "tests/desktop/net/RawHttp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <thread>

using namespace qoro::test;

// `qoro-ad cache`, run as a user runs it.

namespace
{
constexpr double Deadline = 120;

class CacheTest : public testing::Test
{
protected:
    CommandResult cache(std::vector<std::string> arguments, const std::function<bool()>& enough = nullptr) const
    {
        arguments.insert(arguments.begin(), "cache");
        arguments.insert(arguments.end(), {"--dir", folder.path("videos")});
        return run_command(arguments, Deadline, enough);
    }
    /// Runs a command that must fail with this status, print one line to stderr and nothing to stdout.
    /// @return the error line
    std::string complaint(const std::vector<std::string>& arguments, int status) const
    {
        const CommandResult result = cache(arguments);
        EXPECT_EQ(result.status, status) << result.errors;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
        return result.errors;
    }
    std::string video(const std::string& path, const std::string& content)
    {
        server.serve(path, {.body = content});
        return server.address(path);
    }
    /// The number of partial downloads in the folder.
    std::ptrdiff_t parts() const
    {
        std::error_code not_yet;
        return std::ranges::count_if(std::filesystem::directory_iterator(folder.path("videos"), not_yet),
                                     [](const auto& entry) { return entry.path().extension() == ".part"; });
    }

    ScratchFolder folder;
    VideoServer server;
};
} // namespace

TEST_F(CacheTest, APrefetchedVideoIsListedAndRemoved)
{
    const std::string one = video("/1.mp4", "one video");
    const std::string two = video("/2.mp4", "another video");

    const CommandResult prefetched = cache({"prefetch", one, two});
    EXPECT_EQ(prefetched.status, 0) << prefetched.errors;
    EXPECT_EQ(prefetched.output, "fetched  9 bytes  " + one + "\nfetched  13 bytes  " + two + "\n");
    EXPECT_EQ(prefetched.errors, "");
    EXPECT_EQ(cache({"prefetch", one}).output, "there already  9 bytes  " + one + "\n");

    const CommandResult listed = cache({"list"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(std::ranges::count(listed.output, '\n'), 2);
    EXPECT_LT(listed.output.find("Z  9 bytes  " + one), listed.output.find("Z  13 bytes  " + two)) << listed.output;

    EXPECT_EQ(cache({"empty"}).output, "removed 2 videos, 22 bytes\n");
    EXPECT_EQ(cache({"list"}).output, "");
    EXPECT_EQ(cache({"empty"}).output, "removed 0 videos, 0 bytes\n");
}

TEST_F(CacheTest, AListAsJsonIsAnObjectALine)
{
    const std::string address = video("/1.mp4", "one video");
    cache({"prefetch", address});
    const CommandResult listed = cache({"list", "--format", "json"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_TRUE(listed.output.starts_with(R"({"address":")" + address + R"(","bytes":9,"lastUse":"2)"))
        << listed.output;
    EXPECT_NE(listed.output.find(R"(,"path":")" + folder.path("videos/")), std::string::npos) << listed.output;
    EXPECT_TRUE(listed.output.ends_with(".video\"}\n")) << listed.output;
}

TEST_F(CacheTest, AVideoThatCannotBeFetchedIsOneLineAndTheOthersAreFetched)
{
    const std::string good = video("/1.mp4", "one video");
    const std::string missing = server.address("/missing.mp4");
    const CommandResult result = cache({"prefetch", missing, good});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "qoro-ad: " + missing + ": HTTP status 404\n");
    EXPECT_EQ(result.output, "fetched  9 bytes  " + good + "\n");
}

TEST_F(CacheTest, AnInvalidContentLengthIsOneLine)
{
    for (const char* length : {"-1", "18446744073709551615"}) {
        RawServer liar([length](const auto&, const auto& connection) {
            connection.send(std::string("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: ") + length +
                            "\r\nConnection: close\r\n\r\nbody");
        });
        const CommandResult result = cache({"prefetch", liar.base() + "/v.mp4"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors,
                  "qoro-ad: " + liar.base() + "/v.mp4: its server tells a length that is no number of bytes\n");
        EXPECT_EQ(result.output, "");
    }
}

TEST_F(CacheTest, AnInvalidAddressIsRefusedBeforeAnythingIsFetched)
{
    const std::string good = video("/1.mp4", "one video");
    EXPECT_EQ(complaint({"prefetch", good, "clip.mp4"}, 2),
              "qoro-ad: cache prefetch: expected an address of http or https, got \"clip.mp4\"\n");
    EXPECT_EQ(complaint({"prefetch", "file:///etc/hostname"}, 2),
              "qoro-ad: cache prefetch: expected an address of http or https, got \"file:///etc/hostname\"\n");
    EXPECT_EQ(server.requests(), 0);
}

TEST_F(CacheTest, OptionsThatMakeNoSenseAreRefused)
{
    complaint({}, 2);
    complaint({"prefetch"}, 2);
    complaint({"list", "http://ad.example/v.mp4"}, 2);
    EXPECT_EQ(complaint({"list", "--format", "xml"}, 2), "qoro-ad: --format: expected json or text, got \"xml\"\n");
    EXPECT_EQ(complaint({"prefetch", "http://ad.example/v.mp4", "--limit", "much"}, 2),
              "qoro-ad: --limit: expected a whole number of megabytes from 1 to 1000000, got \"much\"\n");
}

TEST_F(CacheTest, APathThatIsNotAFolderIsOneLine)
{
    folder.write("videos", "a file");
    const std::string said = "qoro-ad: " + folder.path("videos") + ": Not a directory\n";
    EXPECT_EQ(complaint({"list"}, 1), said);
    EXPECT_EQ(complaint({"empty"}, 1), said);
    const std::string address = video("/1.mp4", "one video");
    EXPECT_EQ(complaint({"prefetch", address}, 1),
              "qoro-ad: " + address + ": " + folder.path("videos") + ": Not a directory\n");
}

TEST_F(CacheTest, TheLimitHoldsAndTheMostRecentlyUsedStay)
{
    const std::string content(400'000, 'x');
    std::vector<std::string> arguments{"prefetch", "--limit", "1"};
    for (const char* path : {"/1.mp4", "/2.mp4", "/3.mp4", "/4.mp4"})
        arguments.push_back(video(path, content));
    cache(arguments);
    const std::string listed = cache({"list"}).output;
    EXPECT_EQ(std::ranges::count(listed, '\n'), 2) << listed;
    EXPECT_LT(listed.find("/4.mp4"), listed.find("/3.mp4")) << listed;
}

TEST_F(CacheTest, ManyProcessesAtOnceLeaveWholeCopiesWithinTheBound)
{
    // Each process fetches all of them in its own order, with room for less than half.
    const std::vector<std::string> names{"/0", "/1", "/2", "/3", "/4", "/5"};
    std::vector<std::string> addresses;
    for (std::size_t i = 0; i < names.size(); ++i)
        addresses.push_back(video(names[i], std::string(400'000, static_cast<char>('a' + i))));
    std::vector<std::future<CommandResult>> processes;
    for (int p = 0; p < 6; ++p) {
        std::ranges::rotate(addresses, addresses.begin() + 1);
        std::vector<std::string> arguments{"prefetch", "--limit", "1"};
        arguments.insert(arguments.end(), addresses.begin(), addresses.end());
        processes.push_back(std::async(std::launch::async, [this, arguments] { return cache(arguments); }));
    }
    for (auto& process : processes) {
        const CommandResult result = process.get();
        EXPECT_EQ(result.status, 0) << result.errors;
    }

    const std::string listed = cache({"list"}).output;
    EXPECT_EQ(std::ranges::count(listed, '\n'), 2) << listed;
    EXPECT_EQ(parts(), 0);
    std::ptrdiff_t videos = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path("videos"))) {
        if (entry.path().extension() != ".video")
            continue;
        ++videos;
        const std::string content = folder.read("videos/" + entry.path().filename().string());
        EXPECT_EQ(content, std::string(400'000, content.at(0)));
    }
    EXPECT_EQ(videos, 2);
}

TEST_F(CacheTest, AnInterruptedDownloadLeavesNothingBehind)
{
    server.serve("/stalls.mp4", {.body = std::string(100'000, 'x'), .holds_at = 50'000});
    const std::string stalls = server.address("/stalls.mp4");

    const CommandResult result = cache({"prefetch", stalls}, [this] { return parts() == 1; });

    EXPECT_EQ(result.status, -1) << "ended by the signal";
    EXPECT_EQ(parts(), 0);
    EXPECT_EQ(cache({"list"}).output, "");
    EXPECT_EQ(result.output + result.errors, "") << "no progress where the output is a pipe";
}

TEST_F(CacheTest, ATerminalShowsHowFarTheDownloadIsAndNothingRemains)
{
    server.serve("/slow.mp4", {.body = std::string(100'000, 'x'), .holds_at = 50'000});
    folder.write("screen", "");
    // script(1) runs the command on a pseudo-terminal and records what it writes.
    const std::string line = "TERM=xterm script -qefc \"'" QORO_AD "' cache prefetch " + server.address("/slow.mp4") +
                             " --dir '" + folder.path("videos") + "'\" '" + folder.path("screen") +
                             "' >/dev/null </dev/null";
    auto status = std::async(std::launch::async, [&line] { return std::system(line.c_str()); });

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(Deadline);
    const auto shown = [this] { return folder.read("screen").find(" of 100.0") != std::string::npos; };
    while (!shown() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::string during = folder.read("screen");
    server.release();

    EXPECT_EQ(status.get(), 0);
    EXPECT_NE(during.find("of 100.0\u00A0kB  " + server.address("/slow.mp4")), std::string::npos) << during;
    EXPECT_EQ(during.find("fetched"), std::string::npos);
    const std::string after = folder.read("screen").substr(during.size());
    const std::size_t erased = after.find("\x1b[K");
    const std::size_t result = after.find("fetched  100000 bytes  " + server.address("/slow.mp4"));
    ASSERT_NE(result, std::string::npos) << after;
    EXPECT_LT(erased, result) << "the line is erased before the result";
    EXPECT_EQ(after.find(" of 100.0", result), std::string::npos);
}

TEST_F(CacheTest, ALongDownloadSaysNothingMoreInAPipe)
{
    server.serve("/slow.mp4", {.body = std::string(100'000, 'x'), .holds_at = 50'000});
    auto result = std::async(std::launch::async, [this] { return cache({"prefetch", server.address("/slow.mp4")}); });
    while (parts() == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    // Longer than the second after which a terminal shows the progress.
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    server.release();
    const CommandResult ended = result.get();
    EXPECT_EQ(ended.output, "fetched  100000 bytes  " + server.address("/slow.mp4") + "\n");
    EXPECT_EQ(ended.errors, "");
}

TEST_F(CacheTest, RemainsOfAKilledProcessAreNeverACopyAndRemovedWithTheNextVideo)
{
    std::filesystem::create_directory(folder.path("videos"));
    folder.write("videos/8d8ac610-566d-4ef0-9c22-186b2a5ed793.part", "half a video");

    EXPECT_EQ(cache({"list"}).output, "");
    EXPECT_EQ(parts(), 1);
    cache({"prefetch", video("/1.mp4", "one video")});
    EXPECT_EQ(parts(), 0);
}

TEST_F(CacheTest, HelpNamesEveryCommand)
{
    const CommandResult result = run_command({"cache", "--help"}, Deadline);
    EXPECT_EQ(result.status, 0);
    for (const char* word : {"list", "prefetch", "empty", "--dir", "docs/cache.md"})
        EXPECT_NE(result.output.find(word), std::string::npos) << word;
}
