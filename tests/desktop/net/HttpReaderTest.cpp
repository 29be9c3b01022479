#include "desktop/net/HttpReader.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/RawHttp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qoro::test
{
namespace
{

using Outcome = HttpReader::Outcome;

/// 100,000 bytes with a period of 251, so that misplaced data does not compare equal.
std::string whole_file()
{
    std::string bytes(100'000, '\0');
    for (std::size_t n = 0; n < bytes.size(); ++n)
        bytes[n] = static_cast<char>(n * 31 % 251);
    return bytes;
}

/// The N of "Range: bytes=N-"; absent without such a header.
std::optional<std::size_t> range_of(const std::string& head)
{
    const std::size_t at = head.find("Range: bytes=");
    return at == std::string::npos ? std::nullopt : std::optional(std::stoul(head.substr(at + 13)));
}

/// How a server answers. The defaults are those of a well-behaved server.
struct Manner {
    /// Number of body bytes after which the server closes the connection.
    std::size_t hangs_up_after = std::string::npos;
    bool knows_ranges = true;
    bool states_length = true;
    std::string more_headers = {};
};

std::string answer_of(const std::string& file, const std::string& head, const Manner& manner)
{
    const auto asked = manner.knows_ranges ? range_of(head) : std::nullopt;
    const std::size_t from = std::min(asked.value_or(0), file.size());
    std::string answer = asked ? "HTTP/1.1 206 Part\r\n" : "HTTP/1.1 200 OK\r\n";
    if (asked)
        answer += "Content-Range: bytes " + std::to_string(from) + "-" + std::to_string(file.size() - 1) + "/" +
                  std::to_string(file.size()) + "\r\n";
    if (manner.states_length)
        answer += "Content-Length: " + std::to_string(file.size() - from) + "\r\n";
    return answer + manner.more_headers + "Connection: close\r\n\r\n" + file.substr(from, manner.hangs_up_after);
}

class HttpReaderTest : public testing::Test
{
protected:
    std::string serve(const Manner& manner)
    {
        return serve([this, manner](const std::string& head, const RawServer::Connection& connection) {
            connection.send(answer_of(file, head, manner));
        });
    }
    std::string serve(RawServer::Answer answer)
    {
        server = std::make_unique<RawServer>([this, answer](const std::string& head, const auto& connection) {
            {
                const std::scoped_lock lock(mutex);
                heads.push_back(head);
            }
            answer(head, connection);
        });
        return server->base() + "/v.mp4";
    }

    /// Reads from an offset to the end or an error; the final outcome is in `last`.
    std::string read_all(HttpReader& reader, std::size_t from = 0)
    {
        std::string bytes;
        char piece[4096];
        for (;;) {
            std::size_t got = 0;
            last = reader.read(from + bytes.size(), piece, sizeof piece, got);
            if (last != Outcome::Bytes)
                return bytes;
            bytes.append(piece, got);
        }
    }

    const std::string file = whole_file();
    std::mutex mutex;
    std::vector<std::string> heads;
    std::unique_ptr<RawServer> server;
    Outcome last = Outcome::Stopped;
};

TEST_F(HttpReaderTest, ReadsTheFileByteForByteWithOneRequest)
{
    HttpReader reader(serve(Manner{}));

    EXPECT_TRUE(read_all(reader) == file);
    EXPECT_EQ(last, Outcome::End);
    EXPECT_EQ(heads.size(), 1U);
    EXPECT_EQ(range_of(heads[0]), std::nullopt);
}

TEST_F(HttpReaderTest, NamesItselfAndWantsTheBytesAsTheyAre)
{
    HttpReader reader(serve(Manner{}));
    read_all(reader);

    EXPECT_NE(heads.at(0).find("User-Agent: QoroVideoAd/0.1 (Linux)\r\n"), std::string::npos) << heads[0];
    EXPECT_NE(heads[0].find("Accept-Encoding: identity\r\n"), std::string::npos) << heads[0];
}

TEST_F(HttpReaderTest, KnowsSizeAndSeekabilityOnceTheServerHasAnswered)
{
    HttpReader reader(serve(Manner{}));
    EXPECT_FALSE(reader.size());
    EXPECT_FALSE(reader.can_jump());

    read_all(reader);

    EXPECT_EQ(reader.size(), file.size());
    EXPECT_TRUE(reader.can_jump());
}

TEST_F(HttpReaderTest, AServerThatAcceptsNoRangesIsNotSeekable)
{
    HttpReader reader(serve(Manner{.knows_ranges = false, .more_headers = "Accept-Ranges: none\r\n"}));
    read_all(reader);
    EXPECT_FALSE(reader.can_jump());
    EXPECT_EQ(reader.size(), file.size());
}

TEST_F(HttpReaderTest, AFileOfUnknownSizeEndsWithItsConnection)
{
    HttpReader reader(serve(Manner{.knows_ranges = false, .states_length = false}));

    EXPECT_TRUE(read_all(reader) == file);
    EXPECT_EQ(last, Outcome::End);
    EXPECT_EQ(reader.size(), file.size()) << "known by then";
    EXPECT_FALSE(reader.can_jump());
}

TEST_F(HttpReaderTest, AnotherPositionIsRequestedAsARange)
{
    HttpReader reader(serve(Manner{}));
    EXPECT_TRUE(read_all(reader, 70'000) == file.substr(70'000));
    EXPECT_TRUE(read_all(reader, 10) == file.substr(10)) << "and back";
    EXPECT_EQ(heads.size(), 2U);
}

TEST_F(HttpReaderTest, NothingIsRequestedBehindTheEnd)
{
    HttpReader reader(serve(Manner{}));
    read_all(reader);

    EXPECT_EQ(read_all(reader, file.size()), "");
    EXPECT_EQ(last, Outcome::End);
    EXPECT_EQ(heads.size(), 1U);
}

TEST_F(HttpReaderTest, ABrokenConnectionIsResumedWhereItBroke)
{
    HttpReader reader(serve(Manner{.hangs_up_after = 30'000}));

    EXPECT_TRUE(read_all(reader) == file);
    EXPECT_EQ(last, Outcome::End);
    ASSERT_EQ(heads.size(), 4U);
    EXPECT_EQ(range_of(heads[3]), 90'000U);
}

TEST_F(HttpReaderTest, AServerWithoutRangesIsReadUpToThereAgain)
{
    int answers = 0;
    HttpReader reader(serve([&](const std::string& head, const auto& connection) {
        const std::size_t part = ++answers == 1 ? 30'000 : std::string::npos;
        connection.send(answer_of(file, head, {.hangs_up_after = part, .knows_ranges = false}));
    }));

    EXPECT_TRUE(read_all(reader) == file);
    EXPECT_EQ(last, Outcome::End);
    EXPECT_EQ(heads.size(), 2U);
}

TEST_F(HttpReaderTest, AServerThatClosesWithoutAByteIsTriedTwice)
{
    HttpReader reader(serve(Manner{.hangs_up_after = 0}));

    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server hung up");
    EXPECT_EQ(heads.size(), 2U);
}

TEST_F(HttpReaderTest, OnlyTheSameVersionIsResumed)
{
    HttpReader reader(serve(Manner{.hangs_up_after = 60'000, .more_headers = "ETag: \"one\"\r\n"}));
    read_all(reader);
    ASSERT_EQ(heads.size(), 2U);
    EXPECT_EQ(heads[0].find("If-Range"), std::string::npos);
    EXPECT_NE(heads[1].find("If-Range: \"one\"\r\n"), std::string::npos) << heads[1];
}

TEST_F(HttpReaderTest, AWeakETagIsNotSentAsIfRange)
{
    HttpReader reader(serve(Manner{.hangs_up_after = 60'000, .more_headers = "ETag: W/\"one\"\r\n"}));
    read_all(reader);
    ASSERT_EQ(heads.size(), 2U);
    EXPECT_EQ(heads[1].find("If-Range"), std::string::npos) << heads[1];
}

TEST_F(HttpReaderTest, AReplacedFileFails)
{
    int answers = 0;
    HttpReader reader(serve([&](const std::string& head, const auto& connection) {
        connection.send(++answers == 1 ? answer_of(file, head, {.hangs_up_after = 30'000})
                                       : answer_of(file + "more", head, {}));
    }));

    EXPECT_TRUE(read_all(reader) == file.substr(0, 30'000));
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "it has changed at its server");
}

TEST_F(HttpReaderTest, ARangeOfAnotherVersionFails)
{
    int answers = 0;
    HttpReader reader(serve([&](const std::string& head, const auto& connection) {
        const std::string tag = "ETag: \"" + std::to_string(++answers) + "\"\r\n";
        connection.send(answer_of(file, head, {.hangs_up_after = 30'000, .more_headers = tag}));
    }));

    EXPECT_TRUE(read_all(reader) == file.substr(0, 30'000));
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "it has changed at its server");
}

TEST_F(HttpReaderTest, AServerThatKeepsClosingIsGivenUp)
{
    HttpReader reader(serve(Manner{.hangs_up_after = 1}));

    EXPECT_TRUE(read_all(reader) == file.substr(0, 21));
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server hung up");
}

TEST_F(HttpReaderTest, ATooLargeFileIsRefusedBeforeItsBody)
{
    HttpReader reader(serve(Manner{}), {.size = 99'999});
    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "it is larger than 99999 bytes");
}

TEST_F(HttpReaderTest, ACompressedFileIsRefused)
{
    HttpReader reader(serve(Manner{.more_headers = "Content-Encoding: gzip\r\n"}));
    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server sent it packed, expected it as it is");
}

TEST_F(HttpReaderTest, AServerThatAnswersARangeWithTheWholeFileIsNotSeekable)
{
    HttpReader reader(serve(Manner{.knows_ranges = false}));
    std::string bytes(1000, '\0');
    std::size_t got = 0;
    ASSERT_EQ(reader.read(0, bytes.data(), bytes.size(), got), Outcome::Bytes);
    EXPECT_TRUE(reader.can_jump()) << "it has not said otherwise";

    EXPECT_TRUE(read_all(reader, 99'000) == file.substr(99'000));

    EXPECT_FALSE(reader.can_jump());
    EXPECT_TRUE(read_all(reader) == file);
    EXPECT_FALSE(reader.can_jump()) << "for good";
}

TEST_F(HttpReaderTest, AnotherRangeThanRequestedFails)
{
    HttpReader reader(serve([](const std::string&, const auto& connection) {
        connection.send("HTTP/1.1 206 Part\r\nContent-Range: bytes 0-99/100000\r\nContent-Length: 100\r\n\r\n" +
                        std::string(100, 'x'));
    }));
    EXPECT_EQ(read_all(reader, 50'000), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server sent another part than was asked for");
}

TEST_F(HttpReaderTest, AnImpossibleRangeFails)
{
    for (const char* range : {"-1-5/100", "50-40/100", "50-99/60", "50-99/50", "99999999999999999999-9/100", "x"}) {
        HttpReader reader(serve([range](const std::string&, const auto& connection) {
            connection.send(std::string("HTTP/1.1 206 Part\r\nContent-Range: bytes ") + range +
                            "\r\nContent-Length: 4\r\nConnection: close\r\n\r\npart");
        }));
        EXPECT_EQ(read_all(reader, 50), "") << range;
        EXPECT_EQ(last, Outcome::Failed) << range;
        EXPECT_EQ(reader.error(), "its server sent another part than was asked for") << range;
    }
}

TEST_F(HttpReaderTest, AnInvalidContentLengthFails)
{
    for (const char* length : {"-1", "9223372036854775808", "18446744073709551615"}) {
        HttpReader reader(serve([length](const std::string&, const auto& connection) {
            connection.send(std::string("HTTP/1.1 200 OK\r\nContent-Length: ") + length +
                            "\r\nConnection: close\r\n\r\nbody");
        }));
        EXPECT_EQ(read_all(reader), "") << length;
        EXPECT_EQ(reader.error(), "its server tells a length that is no number of bytes") << length;
    }
}

TEST_F(HttpReaderTest, ARefusedRequestIsNotRepeated)
{
    HttpReader reader(serve([](const std::string&, const auto& connection) {
        connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\nConnection: close\r\n\r\ngone");
    }));
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(read_all(reader), "");
        EXPECT_EQ(last, Outcome::Failed);
        EXPECT_EQ(reader.error(), "HTTP status 404");
    }
    EXPECT_EQ(heads.size(), 1U);
}

TEST_F(HttpReaderTest, AnUnreachableServerFails)
{
    const std::string address = serve(Manner{});
    server.reset();
    HttpReader reader(address);
    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server can't be reached");
}

TEST_F(HttpReaderTest, AnAddressThatIsNotHttpFails)
{
    HttpReader reader("gopher://ads.example/v.mp4");
    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its address is none of http or https");
}

TEST_F(HttpReaderTest, ASilentServerFailsAfterTheTimeOutAndASecondTry)
{
    HttpReader reader(serve([](const auto&, const auto& connection) { connection.wait_for_close(); }),
                      {.silent_seconds = 1, .attempts = 2});
    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server does not answer");
    EXPECT_EQ(heads.size(), 2U);
}

TEST_F(HttpReaderTest, AServerThatStallsInMidFileFailsAfterTheTimeOutAndASecondTry)
{
    HttpReader reader(serve([this](const std::string& head, const auto& connection) {
                          connection.send(answer_of(file, head, {.hangs_up_after = range_of(head) ? 0U : 30'000U}));
                          connection.wait_for_close();
                      }),
                      {.silent_seconds = 1, .attempts = 2});
    EXPECT_TRUE(read_all(reader) == file.substr(0, 30'000));
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server does not answer");
    EXPECT_EQ(heads.size(), 2U);
}

TEST_F(HttpReaderTest, StoppedWhileAServerIsSilentItReturnsAtOnce)
{
    std::mutex waiting;
    std::condition_variable asked;
    bool has_asked = false;
    HttpReader reader(serve([&](const auto&, const auto& connection) {
        {
            const std::scoped_lock lock(waiting);
            has_asked = true;
            asked.notify_one();
        }
        connection.wait_for_close();
    }));
    std::thread stopper([&] {
        std::unique_lock lock(waiting);
        asked.wait(lock, [&] { return has_asked; });
        reader.stop();
    });

    EXPECT_EQ(read_all(reader), "");
    stopper.join();
    EXPECT_EQ(last, Outcome::Stopped);
    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Stopped) << "before it is resumed";
}

TEST_F(HttpReaderTest, StoppedInMidFileItContinuesThereLater)
{
    HttpReader reader(serve(Manner{}));
    std::string bytes(1000, '\0');
    std::size_t got = 0;
    ASSERT_EQ(reader.read(0, bytes.data(), bytes.size(), got), Outcome::Bytes);
    bytes.resize(got);

    reader.stop();
    EXPECT_EQ(read_all(reader, got), "");
    EXPECT_EQ(last, Outcome::Stopped);
    reader.resume();

    EXPECT_TRUE(bytes + read_all(reader, got) == file);
}

TEST_F(HttpReaderTest, ARemoteServerCannotRedirectItToThisMachine)
{
    const NamesHere names;
    serve([](const std::string& head, const auto& connection) {
        connection.send("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:" +
                        head.substr(head.find("example:") + 8, 5) + "/secret\r\nContent-Length: 0\r\n\r\n");
    });
    HttpReader reader("http://ads.example:" + std::to_string(port_of(server->base())) + "/v.mp4");

    EXPECT_EQ(read_all(reader), "");
    EXPECT_EQ(last, Outcome::Failed);
    EXPECT_EQ(reader.error(), "its server redirects to a private network or to this machine");
    EXPECT_EQ(heads.size(), 1U);
}

TEST_F(HttpReaderTest, OtherRedirectsAreFollowed)
{
    HttpReader reader(serve([this](const std::string& head, const auto& connection) {
        connection.send(head.starts_with("GET /to ")
                            ? answer_of(file, head, {})
                            : "HTTP/1.1 302 Found\r\nLocation: /to\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    }));
    EXPECT_TRUE(read_all(reader, 99'000) == file.substr(99'000));
    EXPECT_EQ(heads.size(), 2U);
}

TEST_F(HttpReaderTest, AvailableDataIsReturnedBeforeMoreArrives)
{
    HttpReader reader(serve([this](const std::string& head, const auto& connection) {
        connection.send(answer_of(file, head, {.hangs_up_after = 30'000}));
        connection.wait_for_close();
    }));
    std::string bytes(file.size(), '\0');
    std::size_t all = 0;
    while (all < 30'000) {
        std::size_t got = 0;
        ASSERT_EQ(reader.read(all, bytes.data() + all, bytes.size() - all, got), Outcome::Bytes);
        all += got;
    }
    EXPECT_TRUE(bytes.substr(0, all) == file.substr(0, 30'000));
    EXPECT_EQ(heads.size(), 1U) << "without a second request";
}

TEST_F(HttpReaderTest, DestroyedInMidFileItDoesNotWaitForTheRest)
{
    std::size_t got = 0;
    char byte = 0;
    {
        constexpr unsigned Forever = 3600;
        HttpReader reader(serve([this](const std::string& head, const auto& connection) {
                              connection.send(answer_of(file, head, {.hangs_up_after = 50'000}));
                              connection.wait_for_close();
                          }),
                          {.silent_seconds = Forever, .attempts = 1});
        ASSERT_EQ(reader.read(0, &byte, 1, got), Outcome::Bytes);
    }
    EXPECT_EQ(byte, file[0]);
}

} // namespace
} // namespace qoro::test
