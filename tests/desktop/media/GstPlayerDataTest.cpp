#include "PlayerTest.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/RawHttp.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qoro::test
{
namespace
{

/// An answer that stalls after so many tenths of the video, until release().
VideoServer::Answer stalling_at(std::size_t tenths)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.holds_at = answer.body.size() * tenths / 10;
    return answer;
}

/// Seconds. Far more than a slow machine needs, and less than waiting for a server would take.
constexpr double NoWait = 5;

// ------------------------------------------------------------------------------------------------------- buffering

TEST_F(GstPlayerTest, AStallingServerStallsThePlayerUntilDataArrives)
{
    GstPlayer& player = watch.open(served(stalling_at(7)));
    ASSERT_TRUE(watch.until("state 3"));
    const double stood = player.current_time();
    EXPECT_EQ(player.load_state(), MPMovieLoadStateStalled);
    watch.let_pass(0.3);
    EXPECT_EQ(player.current_time(), stood);

    server.release();
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "load 4", "state 3", "load 3", "state 1",
                                      "state 2", "finished 0"}));
    EXPECT_GT(stood, 1);
    EXPECT_LT(stood, 3.5);
}

TEST_F(GstPlayerTest, APauseDuringAStallLastsWhenDataArrives)
{
    GstPlayer& player = watch.open(served(stalling_at(7)));
    ASSERT_TRUE(watch.until("state 3"));
    watch.reports.clear();

    player.pause();
    ASSERT_TRUE(watch.until("state 2"));
    server.release();
    ASSERT_TRUE(watch.until("load 3"));
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"state 2", "load 3"}));
}

TEST_F(GstPlayerTest, AStalledPlayerCanBeDestroyedAtOnce)
{
    watch.open(served(stalling_at(7)));
    ASSERT_TRUE(watch.until("state 3"));

    const double before = loop.now();
    watch.drop();
    const double took = loop.now() - before;
    const std::size_t reports = watch.reports.size();
    server.release();
    watch.let_pass(0.3);

    EXPECT_LT(took, NoWait);
    EXPECT_EQ(watch.reports.size(), reports);
}

TEST_F(GstPlayerTest, ACompleteVideoNeverStalls)
{
    GstPlayer& player = watch.open(served());
    ASSERT_TRUE(watch.until("state 1"));

    for (const double time : {3.0, 0.5, 2.0, 3.5}) {
        player.seek(time);
        watch.let_pass(0.15);
    }
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerTest, StartsOnlyWithEnoughData)
{
    watch.open(served(stalling_at(3)));
    ASSERT_TRUE(watch.until("load 1"));
    watch.let_pass(0.5);
    EXPECT_EQ(watch.reports, (Reports{"load 1"}));

    server.release();

    ASSERT_TRUE(watch.until("state 1"));
    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1"}));
}

// -------------------------------------------------------------------------------------------------------- failures

class GstPlayerFailureTest : public GstPlayerTest
{
protected:
    void expect_failure(const NSURL& source)
    {
        GstPlayer& player = watch.open(source);
        EXPECT_TRUE(watch.reports.empty());
        ASSERT_TRUE(watch.until("finished 1"));
        player.seek(1);
        player.pause();
        watch.let_pass(0.2);
        EXPECT_EQ(watch.reports, (Reports{"state 0", "finished 1"}));
        EXPECT_EQ(player.duration(), 0);
        EXPECT_NE(watch.failure, "");
    }
};

TEST_F(GstPlayerFailureTest, AMissingFileFails)
{
    expect_failure(NSURL::fileURLWithPath("/nonexistent/v.mp4"));
}

TEST_F(GstPlayerFailureTest, ANullAddressFails)
{
    expect_failure(nullptr);
}

TEST_F(GstPlayerFailureTest, AnAddressThatIsNeitherHttpNorAFileFails)
{
    expect_failure(NSURL::URLWithString("rtsp://127.0.0.1/v.mp4"));
}

TEST_F(GstPlayerFailureTest, AVideoThatTheServerDoesNotHaveFails)
{
    expect_failure(NSURL::URLWithString(server.address("/missing.mp4")));
    EXPECT_EQ(watch.failure, "HTTP status 404");
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(GstPlayerFailureTest, AnUnreachableServerFails)
{
    expect_failure(NSURL::URLWithString("http://127.0.0.1:9/v.mp4"));
    EXPECT_EQ(watch.failure, "its server can't be reached");
}

TEST_F(GstPlayerFailureTest, APageInsteadOfAVideoFails)
{
    VideoServer::Answer answer;
    answer.body = "<!DOCTYPE html><html><body>Sorry</body></html>";
    answer.type = "text/html";
    expect_failure(served(answer));
}

TEST_F(GstPlayerFailureTest, APictureInsteadOfAVideoFails)
{
    VideoServer::Answer answer;
    answer.body = std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\10\2\0\0\0\x90wS\xde\0\0\0\14IDAT\10\xd7"
                              "c\xf8\xcf\xc0\0\0\3\1\1\0\x18\xdd\x8d\xb0\0\0\0\0IEND\xae"
                              "B`\x82",
                              69);
    answer.type = "image/png";
    expect_failure(served(answer));
}

TEST_F(GstPlayerFailureTest, APlaylistFails)
{
    VideoServer::Answer answer;
    answer.body = "#EXTM3U\n#EXT-X-TARGETDURATION:4\n#EXTINF:4,\n" + server.address("/other.ts") + "\n#EXT-X-ENDLIST\n";
    answer.type = "application/vnd.apple.mpegurl";
    expect_failure(served(answer));
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(GstPlayerFailureTest, AnEmptyAnswerFails)
{
    server.serve("/v.mp4", {});
    expect_failure(NSURL::URLWithString(server.address("/v.mp4")));
    EXPECT_EQ(watch.failure, "it is empty");
}

TEST_F(GstPlayerTest, AnOverstatedContentLengthDoesNotPreventTheEnd)
{
    VideoServer::Answer answer;
    answer.cuts_at = bytes_of(Clip).size();
    answer.body = bytes_of(Clip) + std::string(5000, '\0');
    watch.open(served(answer));

    ASSERT_TRUE(watch.until("finished 0"));
    EXPECT_EQ(watch.failure, "");
}

TEST_F(GstPlayerFailureTest, ASingleZeroByteFails)
{
    VideoServer::Answer answer;
    answer.body = std::string(1, '\0');
    expect_failure(served(answer));
}

TEST_F(GstPlayerTest, HalfAFilePlaysAndThenFailsOnce)
{
    const std::string whole = bytes_of(Clip);
    const std::string path = testing::TempDir() + "/half-" + std::to_string(getpid()) + ".mp4";
    std::ofstream(path, std::ios::binary) << whole.substr(0, whole.size() * 6 / 10);
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));

    ASSERT_TRUE(watch.until("finished 1"));
    watch.let_pass(0.2);

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
    EXPECT_GT(player.current_time(), 1);
    EXPECT_LT(player.current_time(), 3.5);
    std::filesystem::remove(path);
}

TEST_F(GstPlayerTest, ASeekBehindTheEndOfATruncatedFileFails)
{
    const std::string whole = bytes_of(Clip);
    const std::string path = testing::TempDir() + "/half-" + std::to_string(getpid()) + ".mp4";
    std::ofstream(path, std::ios::binary) << whole.substr(0, whole.size() * 6 / 10);
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));
    ASSERT_TRUE(watch.until("state 1"));

    player.seek(3);
    ASSERT_TRUE(watch.until([&] { return watch.has("finished 1") || watch.has("finished 0"); }));

    EXPECT_EQ(watch.reports.back(), "finished 1");
    EXPECT_GE(player.current_time(), 3);
    EXPECT_LT(player.current_time(), Duration);
    std::filesystem::remove(path);
}

TEST_F(GstPlayerTest, AServerThatBreaksOffFailsAfterTheDataItSent)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.cuts_at = answer.body.size() * 6 / 10;
    GstPlayer& player = watch.open(served(answer));

    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
    EXPECT_GT(player.current_time(), 1);
}

TEST_F(GstPlayerTest, AServerThatBreaksOffBeforeThePlayFailsAfterTheDataItSent)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.cuts_at = answer.body.size() * 3 / 10;
    watch.open(served(answer));

    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_EQ(watch.reports, (Reports{"load 1", "load 3", "state 1", "state 0", "finished 1"}));
}

TEST_F(GstPlayerTest, AServerThatBreaksOffDuringAStallFailsAfterTheDataItSent)
{
    VideoServer::Answer answer = stalling_at(7);
    answer.cuts_at = answer.body.size() * 3 / 4;
    GstPlayer& player = watch.open(served(answer));
    ASSERT_TRUE(watch.until("state 3"));
    const double stood = player.current_time();

    server.release();
    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_GE(player.current_time(), stood);
    EXPECT_EQ(watch.reports.back(), "finished 1");
}

TEST_F(GstPlayerTest, ABrokenConnectionIsResumed)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.breaks_after = answer.body.size() / 4;
    watch.open(served(answer));

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.failure, "");
    EXPECT_GE(server.requests(), 4);
}

TEST_F(GstPlayerTest, AServerWithoutRangesIsEnough)
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    answer.knows_ranges = false;
    GstPlayer& player = watch.open(served(answer));
    ASSERT_TRUE(watch.until("state 1"));
    player.seek(3.5);
    ASSERT_TRUE(watch.until("finished 0"));
    player.play();
    ASSERT_TRUE(watch.until([&] { return player.current_time() > 0.2; }));

    EXPECT_EQ(watch.failure, "");
}

TEST_F(GstPlayerTest, ARemoteServerCannotRedirectItToThisMachine)
{
    const NamesHere names;
    served();
    const std::string here = server.address("/v.mp4");
    RawServer elsewhere([&](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 302 Found\r\nLocation: " + here + "\r\nContent-Length: 0\r\n\r\n");
    });
    watch.open(NSURL::URLWithString("http://ads.example:" + std::to_string(port_of(elsewhere.base())) + "/v.mp4"));

    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_EQ(watch.failure, "its server redirects to a private network or to this machine");
    EXPECT_EQ(server.requests(), 0);
}

TEST_F(GstPlayerTest, ASilentServerBlocksNothing)
{
    VideoServer::Answer answer;
    answer.silent = true;
    answer.body = "x";
    watch.open(served(answer));
    ASSERT_TRUE(watch.until([&] { return server.requests() == 1; }));

    const double before = loop.now();
    watch.drop();

    EXPECT_LT(loop.now() - before, NoWait);
    EXPECT_TRUE(watch.reports.empty());
}

} // namespace
} // namespace qoro::test
