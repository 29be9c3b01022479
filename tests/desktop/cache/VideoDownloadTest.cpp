#include "desktop/cache/VideoDownload.h"
#include "desktop/cache/VideoCache.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/RawHttp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace qoro;
using namespace qoro::test;

namespace
{
class VideoDownloadTest : public testing::Test
{
protected:
    /// Downloads a video from a server that sends these bytes.
    VideoDownload::Result fetch(const std::string& answer)
    {
        RawServer server([&answer](const auto&, const auto& connection) { connection.send(answer); });
        address = server.base() + "/v.mp4";
        return VideoDownload({.silent_seconds = 1}).fetch(cache, address);
    }
    std::string kept()
    {
        const NSString path = cache.path_for(address);
        if (!path)
            return "";
        std::ifstream file(path.text(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool left_nothing() const
    {
        const std::string folder = scratch.path("videos");
        if (!std::filesystem::exists(folder))
            return true;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().filename() != "lock")
                return false;
        return true;
    }

    ScratchFolder scratch;
    VideoCache cache{{.folder = scratch.path("videos"), .most_bytes = 1'000'000}};
    std::string address;
};

std::string answer_of(const std::string& body, const std::string& more = "Content-Type: video/mp4\r\n")
{
    return "HTTP/1.1 200 OK\r\n" + more + "Content-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}
} // namespace

TEST_F(VideoDownloadTest, AnInvalidContentLengthIsRefused)
{
    for (const char* length : {"-1", "9223372036854775808", "18446744073709551615"}) {
        EXPECT_EQ(fetch(std::string("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: ") + length +
                        "\r\nConnection: close\r\n\r\nbody")
                      .error,
                  "its server tells a length that is no number of bytes")
            << length;
        EXPECT_TRUE(left_nothing()) << length;
    }
}

TEST_F(VideoDownloadTest, AHugeContentLengthIsTooLarge)
{
    EXPECT_EQ(fetch("HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775807\r\nConnection: close\r\n\r\n").error,
              "the video has 9223372036854775807 bytes, more than the whole cache may have (1000000)");
}

TEST_F(VideoDownloadTest, AWholeAnswerBecomesACopyByteForByte)
{
    std::string body(300'000, '\0');
    for (std::size_t i = 0; i < body.size(); ++i)
        body[i] = static_cast<char>(i * 7);
    const VideoDownload::Result result = fetch(answer_of(body));
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.length, 300'000U);
    EXPECT_FALSE(result.was_there);
    EXPECT_EQ(kept(), body);
}

TEST_F(VideoDownloadTest, AnExistingCopyIsNotFetchedAgain)
{
    RawServer server([](const auto&, const auto& connection) { connection.send(answer_of("the video")); });
    VideoDownload download;
    download.fetch(cache, server.base() + "/v.mp4");
    const VideoDownload::Result again = download.fetch(cache, server.base() + "/v.mp4");
    EXPECT_EQ(again.error, "");
    EXPECT_TRUE(again.was_there);
    EXPECT_EQ(again.length, 9U);
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(VideoDownloadTest, ADamagedCopyIsFetchedAgain)
{
    RawServer server([](const auto&, const auto& connection) { connection.send(answer_of("the video")); });
    VideoDownload download;
    download.fetch(cache, server.base() + "/v.mp4");
    std::filesystem::resize_file(cache.videos().at(0).path, 3);
    EXPECT_FALSE(download.fetch(cache, server.base() + "/v.mp4").was_there);
    address = server.base() + "/v.mp4";
    EXPECT_EQ(kept(), "the video");
}

TEST_F(VideoDownloadTest, ARedirectIsFollowedAndTheCopyIsThatOfTheFirstAddress)
{
    RawServer server([](const auto& head, const auto& connection) {
        if (head.starts_with("GET /v.mp4 "))
            connection.send("HTTP/1.1 302 Found\r\nLocation: /there\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        else
            connection.send(answer_of("the video"));
    });
    address = server.base() + "/v.mp4";
    EXPECT_EQ(VideoDownload().fetch(cache, address).error, "");
    EXPECT_EQ(kept(), "the video");
}

TEST_F(VideoDownloadTest, TheRequestNamesTheProgramAndWantsNoCompression)
{
    std::string head;
    RawServer server([&head](const auto& request, const auto& connection) {
        head = request;
        connection.send(answer_of("the video"));
    });
    VideoDownload().fetch(cache, server.base() + "/v.mp4");
    EXPECT_NE(head.find("User-Agent: QoroVideoAd/"), std::string::npos) << head;
    EXPECT_EQ(head.find("Accept-Encoding"), std::string::npos) << head;
}

TEST_F(VideoDownloadTest, ABodyThatEndsEarlyIsDiscarded)
{
    const VideoDownload::Result result =
        fetch("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nConnection: close\r\n\r\n" + std::string(999, 'x'));
    EXPECT_NE(result.error, "");
    EXPECT_EQ(kept(), "");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AStallingServerIsGivenUpAndNothingIsLeft)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nhalf");
        connection.wait_for_close();
    });
    const VideoDownload::Result result = VideoDownload({.silent_seconds = 1}).fetch(cache, server.base() + "/v.mp4");
    EXPECT_NE(result.error.find("timed out"), std::string::npos) << result.error;
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AVideoThatIsNotWholeInTimeIsGivenUp)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nx");
        connection.wait_for_close();
    });
    const VideoDownload::Result result = VideoDownload({.all_seconds = 0}).fetch(cache, server.base() + "/v.mp4");
    EXPECT_EQ(result.error, "not whole within 0 seconds");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AServerThatSendsAByteNowAndThenIsGivenUp)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
        while (connection.send("x"))
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    VideoDownload download({.least_speed = 1000, .speed_seconds = 0.5});
    EXPECT_EQ(download.fetch(cache, server.base() + "/v.mp4").error, "the server sends less than 1000 bytes a second");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AHeaderThatNeverEndsIsGivenUp)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nX: ");
        while (connection.send("x"))
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    VideoDownload download({.least_speed = 1000, .speed_seconds = 0.5});
    EXPECT_EQ(download.fetch(cache, server.base() + "/v.mp4").error, "the server sends less than 1000 bytes a second");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AnAnswerThatIsNoVideoIsRefusedWithAReason)
{
    EXPECT_EQ(fetch("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone").error, "HTTP status 404");
    EXPECT_EQ(
        fetch("HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 0-3/9\r\nContent-Length: 4\r\n\r\nthe ").error,
        "HTTP status 206");
    EXPECT_EQ(fetch("HTTP/1.1 204 No Content\r\n\r\n").error, "HTTP status 204");
    EXPECT_EQ(fetch(answer_of("<html>log in first</html>", "Content-Type: text/html; charset=utf-8\r\n")).error,
              "the server sent a page, expected a video");
    EXPECT_EQ(fetch(answer_of("packed", "Content-Encoding: gzip\r\n")).error,
              "the server sent the video packed, expected it as it is");
    EXPECT_EQ(fetch(answer_of("")).error, "the video is empty");
    EXPECT_EQ(fetch("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nhow long?").error,
              "the server did not say how long the video is");
    EXPECT_EQ(fetch("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nthe \r\n0\r\n\r\n").error,
              "the server did not say how long the video is");
    EXPECT_EQ(fetch("HTTP/1.1 200 OK\r\nContent-Length: 1000001\r\nConnection: close\r\n\r\n").error,
              "the video has 1000001 bytes, more than the whole cache may have (1000000)");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, ARemoteServerCannotRedirectItToThisMachine)
{
    const test::NamesHere names;
    RawServer server([](const auto& head, const auto& connection) {
        connection.send(head.starts_with("GET /secret ")
                            ? answer_of("the video")
                            : "HTTP/1.1 302 Found\r\nLocation: http://localhost:" +
                                  head.substr(head.find("example:") + 8, 5) + "/secret\r\nContent-Length: 0\r\n\r\n");
    });
    const std::string port = std::to_string(test::port_of(server.base()));
    EXPECT_EQ(VideoDownload().fetch(cache, "http://ads.example:" + port + "/v.mp4").error,
              "its server redirects to a private network or to this machine");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AnAddressThatIsNotHttpIsRefused)
{
    VideoDownload download;
    EXPECT_EQ(download.fetch(cache, "file:///etc/hostname").error, "not an address of http or https");
    EXPECT_EQ(download.fetch(cache, "").error, "not an address of http or https");
    EXPECT_TRUE(left_nothing());
}

TEST_F(VideoDownloadTest, AFolderThatCannotBeMadeFailsWithAReason)
{
    scratch.write("videos", "a file");
    EXPECT_EQ(fetch(answer_of("the video")).error, scratch.path("videos") + ": Not a directory");
}
