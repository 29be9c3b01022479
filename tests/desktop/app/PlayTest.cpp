#include "tests/desktop/app/Command.h"
#include "tests/desktop/net/RawHttp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>

using namespace qoro::test;

// Whole runs of `qoro-ad play`, each with one fault.

namespace
{
/// Seconds. A whole run is far shorter; only a hang reaches this.
constexpr double Deadline = 180;

const std::string Ended = R"("message":"playbackFinished. Reason: Playback Ended)";
const std::string Failed = R"("what":"player","do":"failed")";

/// A clip of two seconds, encoded once per process.
const std::string& clip()
{
    static const std::string bytes = [] {
        const ScratchFolder folder;
        const std::string command = "ffmpeg -v error -f lavfi -i testsrc=size=320x180:rate=30:duration=2 "
                                    "-c:v libx264 -pix_fmt yuv420p -g 15 -movflags +faststart " +
                                    folder.path("clip.mp4");
        EXPECT_EQ(std::system(command.c_str()), 0);
        return folder.read("clip.mp4");
    }();
    return bytes;
}

class PlayTest : public testing::Test
{
protected:
    using Lines = std::vector<std::string>;

    /// Plays an ad and ends the program when its trace contains everything in `until`. Fills `trace` and `errors`.
    /// @param until substrings of the trace's lines
    void play(const std::string& of_video, const std::string& of_page, const Lines& until, const std::string& more = "")
    {
        trace.clear();
        folder.write("ad.json", R"({"strVideoUrl": ")" + of_video + R"(", "strWebViewUrl": ")" + of_page + R"(",
            "fVideoWidth": 320, "fVideoHeight": 180, "portraitModeType": 2, "landscapeModeType": 2,
            "portraitVideoPos": "TOP", "bIsAutoStart": true, "iCloseBtnCountdown": 1, "strBackgroundColor": "4294967295",
            "arrayCloseTrackingUrls": ["/t/close", ")" +
                                    last_tracker + "\"]" + more + "}");
        std::vector<std::string> arguments{"play", folder.path("ad.json"), "--mute-output", "--trace",
                                           trace_file.empty() ? folder.path("trace") : trace_file};
        arguments.insert(arguments.end(), further_arguments.begin(), further_arguments.end());
        if (!host_file.empty())
            arguments.insert(arguments.end(), {"--host", host_file});
        if (const char* option = std::getenv("QORO_WEB_SANDBOX_OPTION"); option && *option)
            arguments.emplace_back(option);
        std::filesystem::remove(folder.path("trace"));
        const CommandResult result = run_command(arguments, Deadline, [&] {
            trace = folder.read("trace");
            return std::ranges::all_of(until, [this](const std::string& part) { return says(part); });
        });
        EXPECT_EQ(result.status, status) << result.errors << trace;
        trace = folder.read("trace");
        errors = result.errors;
    }

    /// The program's own lines of stderr, without those of libraries and the warning about the sandbox.
    std::string errors_of_ours() const
    {
        std::istringstream lines(errors);
        std::string ours;
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("qoro-ad: ") && line.find("without a sandbox") == std::string::npos)
                ours += line + "\n";
        return ours;
    }

    bool says(const std::string& part) const { return trace.find(part) != std::string::npos; }
    bool was_closed() const
    {
        return says(R"("what":"parent","do":"closeVideoAdUnit")") &&
               says(R"("what":"hit","method":"GET","url":"/t/close")");
    }

    ScratchFolder folder;
    /// The close tracker that follows /t/close.
    std::string last_tracker = "/t/close/2";
    std::string host_file;
    /// Empty for a file in the folder.
    std::string trace_file;
    std::vector<std::string> further_arguments;
    /// The expected exit status.
    int status = 0;
    std::string trace;
    std::string errors;
    const std::string video = (folder.write("clip.mp4", clip()), "clip.mp4");
    const std::string page =
        (folder.write("page.html", "<html><head></head><body>mraid.js</body></html>"), "page.html");
};
} // namespace

TEST_F(PlayTest, AFaultlessAdPlaysToItsEndAndCloses)
{
    play(video, page, {Ended, R"("url":"/t/start)"},
         R"(, "dicTrackingUrls": {"start": ["/t/start?at={CurrentTime}"], "complete": ["t/complete"]})");
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(says(R"("url":"/t/complete")")) << trace;
    EXPECT_TRUE(says(R"("what":"hit","method":"GET","url":"/t/start?at=)")) << trace;
    EXPECT_FALSE(says(Failed));
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, AMissingVideoFailsAndTheAdCanBeClosed)
{
    status = 1;
    play("missing.mp4", page, {Failed});
    EXPECT_TRUE(says(Failed)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
    EXPECT_NE(errors.find("qoro-ad: " + folder.path("ad.json") +
                          ": /strVideoUrl: no such file: missing.mp4; did you mean \"clip.mp4\"?\n"),
              std::string::npos)
        << errors;
}

TEST_F(PlayTest, AnInvalidVideoFailsAndTheAdCanBeClosed)
{
    folder.write("false.mp4", "<html>not a video at all</html>");
    play("false.mp4", page, {Failed});
    EXPECT_TRUE(says(Failed)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, AnUnreachableServerFailsAndTheAdCanBeClosed)
{
    std::string base;
    {
        RawServer gone([](const auto&, const auto&) {});
        base = gone.base();
    }
    play(base + "/clip.mp4", base + "/page.html", {Failed, "InApp failAdRequest"},
         R"(, "strBrandIconUrl": ")" + base + R"(/icon.png")");
    EXPECT_TRUE(says(Failed)) << trace;
    EXPECT_TRUE(says("InApp failAdRequest")) << trace;
    for (const std::string& line :
         {std::string("qoro-ad: error: InApp failAdRequest\n"),
          "qoro-ad: " + folder.path("ad.json") + ": /strBrandIconUrl: " + base + "/icon.png did not load: ",
          "qoro-ad: " + folder.path("ad.json") + ": /strWebViewUrl: " + base + "/page.html did not load: ",
          std::string("qoro-ad: the video has failed: its server can't be reached\n")})
        EXPECT_NE(errors_of_ours().find(line), std::string::npos) << line << errors_of_ours();
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, AnAdOfASilentServerCanBeClosed)
{
    RawServer silent([](const auto&, const auto& connection) { connection.wait_for_close(); });
    play(silent.base() + "/clip.mp4", silent.base() + "/page.html", {R"("for":"page")"});
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, TheLastTrackersRedirectIsFollowedBeforeTheProgramEnds)
{
    std::atomic<int> counted = 0;
    RawServer server([&counted](const auto& head, const auto& connection) {
        if (head.starts_with("GET /count ")) {
            ++counted;
            connection.send("HTTP/1.1 204 No Content\r\n\r\n");
        } else {
            connection.send("HTTP/1.1 302 Found\r\nLocation: /count\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        }
    });
    last_tracker = server.base() + "/close";
    play(video, page, {Ended});
    EXPECT_TRUE(was_closed()) << trace;
    EXPECT_EQ(counted, 1);
}

TEST_F(PlayTest, ATraceThatCannotBeWrittenIsOneLineAndTheAdContinues)
{
    RawServer server([](const auto&, const auto& connection) { connection.send("HTTP/1.1 204 No Content\r\n\r\n"); });
    last_tracker = server.base() + "/close";
    trace_file = "/dev/full";
    further_arguments = {"--for", "3"};
    status = 1;
    play(video, page, {"nothing can be read of it"});

    EXPECT_EQ(errors_of_ours(), "qoro-ad: /dev/full: the trace ends here: No space left on device\n");
    EXPECT_EQ(server.connections(), 1) << "the ad was closed";
}

TEST_F(PlayTest, APictureThatCannotBeWrittenIsOneLineAndTheAdContinues)
{
    std::filesystem::create_directories(folder.path("pictures/snapshot-1.png"));
    further_arguments = {"--snapshot", "1", "--out", folder.path("pictures"), "--for", "3"};
    status = 1;
    play(video, page, {"said by no ad"});

    EXPECT_TRUE(errors_of_ours().starts_with("qoro-ad: " + folder.path("pictures/snapshot-1.png") +
                                             ": the picture could not be written: "))
        << errors;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, APageThatFailsIsALineWithItsAddressAndTheReason)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    const std::string failing = server.base() + "/page.html";
    play(video, failing, {R"("what":"web","do":"failed","url":")" + failing + R"(","reason":"HTTP status 503")"});

    EXPECT_EQ(server.connections(), 2) << "once more after a moment";
}

TEST_F(PlayTest, AnUnansweredLastTrackerDelaysTheProgramOnlyBriefly)
{
    RawServer silent([](const auto&, const auto& connection) { connection.wait_for_close(); });
    last_tracker = silent.base() + "/close";
    play(video, page, {Ended});
    EXPECT_TRUE(was_closed()) << trace;
    EXPECT_EQ(silent.connections(), 1);
    EXPECT_FALSE(says("no complete answer")) << "it does not wait for the request to be given up";
}

TEST_F(PlayTest, AnAdWhoseServerStallsInMidFileCanBeClosed)
{
    const std::string half = clip().substr(0, clip().size() / 2);
    RawServer stalling([&half](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: " +
                        std::to_string(clip().size()) + "\r\n\r\n" + half);
        connection.wait_for_close();
    });
    play(stalling.base() + "/clip.mp4", page, {R"("event":"video_loaded")"});
    EXPECT_FALSE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, ATruncatedFileFailsOrEndsAndTheAdCanBeClosed)
{
    folder.write("half.mp4", clip().substr(0, clip().size() / 2));
    play("half.mp4", page, {"playbackFinished. Reason: "});
    EXPECT_TRUE(says(Failed) || says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, AMissingPageIsReportedAndTheVideoPlays)
{
    further_arguments = {"--lenient"};
    play(video, "missing.html", {"InApp failAdRequest", Ended});
    EXPECT_TRUE(says("InApp failAdRequest")) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, APageThatIsNotUtf8StaysEmpty)
{
    folder.write("latin.html", "<html><head></head>\xe4\xf6\xfc</html>");
    play(video, "latin.html", {Ended, R"("what":"page","html":null)"});
    EXPECT_TRUE(says(R"("what":"page","html":null)")) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, APageThatNamesTheLibraryWithoutAHeadIsAFaultAndTheAdContinues)
{
    folder.write("headless.html", "<script src='mraid.js'></script>");
    play(video, "headless.html", {Ended, R"("what":"fault")"});
    EXPECT_TRUE(says(R"("what":"fault")")) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, AHugePageIsRefusedAndALargeOneIsShown)
{
    folder.write("huge.html", "<html><head></head>" + std::string(17u << 20, 'x'));
    play(video, "huge.html", {"InApp failAdRequest"});
    EXPECT_TRUE(says("InApp failAdRequest")) << trace;
    EXPECT_TRUE(was_closed());
    folder.write("large.html", "<html><head></head><!--" + std::string(2u << 20, 'x') + "-->");
    play(video, "large.html", {R"("what":"page","html":"<html>)"});
    EXPECT_TRUE(says(R"("what":"page","html":"<html>)"));
    EXPECT_TRUE(was_closed());
}

TEST_F(PlayTest, AnIconThatIsNoPictureDoesNotStopTheAd)
{
    folder.write("icon.png", "not a picture");
    play(video, page, {Ended}, R"(, "strBrandIconUrl": "icon.png")");
    EXPECT_TRUE(says(R"("for":"brandIcon")")) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayTest, AHostFileAddsHeadersAndCookiesToRequests)
{
    std::atomic<bool> came = false;
    std::string received;
    RawServer server([&](const std::string& head, const auto& connection) {
        if (!came) {
            received = head;
            came = true;
        }
        connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    folder.write("host.json", R"({"host": {"origins": {")" + server.base() +
                                  R"(": {"headers": {"X-Partner": "7"}, "cookies": {"sid": "abc"}}}}})");
    folder.write("ad.json", R"({"strVideoUrl": ")" + server.base() + R"(/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
        "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true})");
    run_command({"play", "--mute-output", "--host", folder.path("host.json"), folder.path("ad.json")}, Deadline,
                [&came] { return came.load(); });
    ASSERT_TRUE(came);
    EXPECT_NE(received.find("X-Partner: 7\r\n"), std::string::npos) << received;
    EXPECT_NE(received.find("Cookie: sid=abc\r\n"), std::string::npos) << received;
}

// ------------------------------------------------------------------------------------------------------ video cache

namespace
{
constexpr const char* MayBeCopied = R"(, "bIsUseVideoCache": true)";
const std::string PlaysAFile = R"("file":true)";

/// Points the program's cache to the test's folder (XDG_CACHE_HOME).
class PlayFromCacheTest : public PlayTest
{
protected:
    PlayFromCacheTest() { setenv("XDG_CACHE_HOME", folder.path("cache").c_str(), 1); }
    ~PlayFromCacheTest() override { unsetenv("XDG_CACHE_HOME"); }

    /// Prefetches the clip from a server that then ends, so that only the copy is left.
    /// @return its address
    static std::string prefetched()
    {
        RawServer server([](const auto&, const auto& connection) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nConnection: close\r\nContent-Length: " +
                            std::to_string(clip().size()) + "\r\n\r\n" + clip());
        });
        const std::string address = server.base() + "/clip.mp4";
        EXPECT_EQ(run_command({"cache", "prefetch", address}, Deadline).status, 0);
        return address;
    }
};
} // namespace

TEST_F(PlayFromCacheTest, APrefetchedVideoPlaysWithoutItsServer)
{
    play(prefetched(), page, {Ended}, MayBeCopied);
    EXPECT_TRUE(says(PlaysAFile)) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayFromCacheTest, AnAdThatMayNotUseTheCacheStreams)
{
    play(prefetched(), page, {Failed});
    EXPECT_FALSE(says(PlaysAFile)) << trace;
    EXPECT_TRUE(says(Failed)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayFromCacheTest, AVideoWithoutACopyStreamsAndPlayingItMakesNone)
{
    play(video, page, {Ended}, MayBeCopied);
    EXPECT_FALSE(says(PlaysAFile)) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
    EXPECT_FALSE(std::filesystem::exists(folder.path("cache/qoro-ad")));
}

TEST_F(PlayFromCacheTest, ADamagedCopyIsNotPlayed)
{
    const std::string address = prefetched();
    for (const auto& file : std::filesystem::directory_iterator(folder.path("cache/qoro-ad/videos")))
        if (file.path().extension() == ".video")
            std::filesystem::resize_file(file.path(), 1000);
    play(address, page, {Failed}, MayBeCopied);
    EXPECT_FALSE(says(PlaysAFile)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayFromCacheTest, ACacheThatCannotBeUsedIsOneLineAndTheVideoStreams)
{
    std::filesystem::create_directory(folder.path("cache"));
    folder.write("cache/qoro-ad", "a file");
    play(video, page, {Ended}, MayBeCopied);
    EXPECT_NE(errors.find("qoro-ad: the video cache can't be used: " + folder.path("cache/qoro-ad/videos") +
                          ": Not a directory\n"),
              std::string::npos)
        << errors;
    EXPECT_EQ(errors.find("video cache"), errors.rfind("video cache")) << errors;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}

TEST_F(PlayFromCacheTest, ACopyFromTheHostFileIsPlayed)
{
    host_file = folder.write("host.json", R"({"host": {"parent": true, "cached": {"remote.mp4": "clip.mp4"}}})");
    play("remote.mp4", page, {Ended}, MayBeCopied);
    EXPECT_TRUE(says(PlaysAFile)) << trace;
    EXPECT_TRUE(says(Ended)) << trace;
    EXPECT_TRUE(was_closed()) << trace;
}
