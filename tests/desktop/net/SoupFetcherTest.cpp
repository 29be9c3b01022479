#include "tests/desktop/net/SoupFetcherTest.h"
#include "tests/desktop/net/NamesHere.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace qoro;
using qoro::test::answer_ok;
using qoro::test::Deadline;
using qoro::test::NamesHere;
using qoro::test::RawServer;

namespace
{
class SoupFetcherTest : public testing::Test
{
protected:
    FetchAnswer fetch(const std::string& address, FetchKind kind = FetchKind::Tracker)
    {
        std::optional<FetchAnswer> got;
        fetcher.fetch(address, kind, [&got](FetchAnswer answer) { got = std::move(answer); });
        EXPECT_FALSE(got) << "answered inside the call that asked";
        EXPECT_TRUE(loop.run_until([&got] { return got.has_value(); }, Deadline));
        return got.value_or(FetchAnswer{});
    }

    GlibLoop loop;
    SoupFetcher fetcher{loop, {.background_seconds = 1, .waiting_seconds = 0.5, .body = 1000, .idle_seconds = 1}};
};
} // namespace

TEST_F(SoupFetcherTest, ReturnsTheBodyByteForByte)
{
    RawServer server([](const auto&, const auto& connection) { answer_ok(connection, std::string("a\0\xff z", 5)); });
    const FetchAnswer answer = fetch(server.base() + "/x?q=%7Ba%7D");
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.body, std::string("a\0\xff z", 5));
    EXPECT_EQ(answer.final_address, server.base() + "/x?q=%7Ba%7D");
}

TEST_F(SoupFetcherTest, AnEmptyBodyIsASuccess)
{
    RawServer server([](const auto&, const auto& connection) { connection.send("HTTP/1.1 204 No Content\r\n\r\n"); });
    const FetchAnswer answer = fetch(server.base() + "/tracker");
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.body, "");
}

TEST_F(SoupFetcherTest, NamesItselfToServers)
{
    std::string head;
    RawServer server([&head](const auto& request, const auto& connection) {
        head = request;
        answer_ok(connection, "");
    });
    fetch(server.base() + "/");
    EXPECT_NE(head.find("User-Agent: QoroVideoAd/0.1 (Linux)\r\n"), std::string::npos) << head;
}

TEST_F(SoupFetcherTest, FollowsARedirectAndReportsItsFinalAddress)
{
    RawServer server([](const auto& head, const auto& connection) {
        if (head.starts_with("GET /from "))
            connection.send(
                "HTTP/1.1 302 Found\r\nLocation: /to?x=1\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        else
            answer_ok(connection, "there");
    });
    const FetchAnswer answer = fetch(server.base() + "/from");
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.body, "there");
    EXPECT_EQ(answer.final_address, server.base() + "/to?x=1");
}

TEST_F(SoupFetcherTest, EndlessRedirectsFailAfterTwenty)
{
    std::atomic<int> requests = 0;
    RawServer server([&requests](const auto&, const auto& connection) {
        ++requests;
        connection.send("HTTP/1.1 302 Found\r\nLocation: /again\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    const FetchAnswer answer = fetch(server.base() + "/");
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "Too many redirects");
    EXPECT_EQ(requests, 21);
}

/// A server that fails its first requests in a given way and then succeeds.
class FailingServer
{
public:
    FailingServer(int failures, std::function<void(const RawServer::Connection&)> fail)
        : server_([this, failures, fail = std::move(fail)](const auto&, const auto& connection) {
              if (++requests_ > failures)
                  answer_ok(connection, "here");
              else
                  fail(connection);
          })
    {
    }
    std::string base() const { return server_.base(); }
    int requests() const { return requests_; }

private:
    std::atomic<int> requests_ = 0;
    RawServer server_;
};

void say_503(const RawServer::Connection& connection)
{
    connection.send("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
}

TEST_F(SoupFetcherTest, APageWhoseServerFailsOnceIsRequestedOnceMore)
{
    const std::vector<std::function<void(const RawServer::Connection&)>> failures{
        say_503, [](const RawServer::Connection&) {}, // closes at once
        [](const RawServer::Connection& connection) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        },
        [](const RawServer::Connection& connection) { connection.wait_for_close(); }, // until the fetcher times out
    };
    for (std::size_t n = 0; n < failures.size(); ++n) {
        const FailingServer server(1, failures[n]);
        const FetchAnswer answer = fetch(server.base() + "/page.html", FetchKind::Page);
        EXPECT_TRUE(answer.ok) << n << ": " << answer.error;
        EXPECT_EQ(answer.body, "here") << n;
        EXPECT_EQ(server.requests(), 2) << n;
    }
}

TEST_F(SoupFetcherTest, APageWhoseServerFailsTwiceReportsOneFailure)
{
    const FailingServer server(100, say_503);
    int answers = 0;
    fetcher.fetch(server.base() + "/page.html", FetchKind::Page, [&answers](const FetchAnswer& answer) {
        ++answers;
        EXPECT_EQ(answer.error, "HTTP status 503");
    });
    EXPECT_TRUE(loop.run_until([&] { return answers > 0; }, Deadline));
    loop.run_until([] { return false; }, 1.5); // longer than the pause and a second answer

    EXPECT_EQ(answers, 1);
    EXPECT_EQ(server.requests(), 2);
}

TEST_F(SoupFetcherTest, AMissingPageIsRequestedOnce)
{
    const FailingServer server(1, [](const RawServer::Connection& connection) {
        connection.send("HTTP/1.1 404 None\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    EXPECT_EQ(fetch(server.base() + "/page.html", FetchKind::Page).error, "HTTP status 404");
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(SoupFetcherTest, OnlyPagesAreRetried)
{
    for (const FetchKind kind : {FetchKind::Tracker, FetchKind::Image}) {
        const FailingServer server(1, say_503);
        EXPECT_EQ(fetch(server.base() + "/x", kind).error, "HTTP status 503");
        EXPECT_EQ(server.requests(), 1);
    }
    const FailingServer server(1, say_503);
    EXPECT_EQ(fetcher.fetch_now(server.base() + "/icon.png").error, "HTTP status 503");
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(SoupFetcherTest, AFailedPictureIsReportedWithItsReason)
{
    const FailingServer server(1, say_503);
    std::vector<std::string> failures;
    fetcher.on_image_failure = [&failures](const std::string& address, const std::string& reason) {
        failures.push_back(address + ": " + reason);
    };
    fetcher.fetch_now(server.base() + "/icon.png");
    fetcher.on_image_failure = nullptr;
    EXPECT_EQ(failures, std::vector<std::string>{server.base() + "/icon.png: HTTP status 503"});
}

TEST_F(SoupFetcherTest, CanBeDestroyedWhileAPageWaitsForItsRetry)
{
    const FailingServer server(1, say_503);
    {
        SoupFetcher ending(loop, {.page_pause = 60});
        ending.fetch(server.base() + "/page.html", FetchKind::Page, [](const FetchAnswer&) { ADD_FAILURE(); });
        // The server counts on its own thread, which does not wake the loop.
        for (int looks = 0; looks < 600 && server.requests() == 0; ++looks)
            loop.run_until([] { return false; }, 0.1);
        loop.run_until([] { return false; }, 0.2);
    }
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(SoupFetcherTest, AnInvalidContentLengthIsAFailureWithAReason)
{
    for (const char* length : {"-1", "-5", "9223372036854775808", "18446744073709551615"}) {
        RawServer server([length](const auto&, const auto& connection) {
            connection.send(std::string("HTTP/1.1 200 OK\r\nContent-Length: ") + length +
                            "\r\nConnection: close\r\n\r\nbody");
        });
        const FetchAnswer answer = fetch(server.base() + "/");
        EXPECT_FALSE(answer.ok) << length;
        EXPECT_EQ(answer.error, "its server tells a length that is no number of bytes") << length;
    }
}

TEST_F(SoupFetcherTest, ARemoteServerCannotRedirectToThisMachine)
{
    const NamesHere names;
    std::vector<std::string> heads;
    RawServer server([&heads](const auto& head, const auto& connection) {
        heads.push_back(head.substr(0, head.find(" HTTP")));
        const bool here = head.starts_with("GET /to-here ");
        const std::string port = head.substr(head.find("example:") + 8, 5);
        const std::string to = here ? "http://localhost:" + port + "/secret" : "/to-here";
        connection.send("HTTP/1.1 302 Found\r\nLocation: " + to + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    });
    const std::string port = std::to_string(qoro::test::port_of(server.base()));

    const FetchAnswer answer = fetch("http://ads.example:" + port + "/from");

    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "its server redirects to a private network or to this machine");
    EXPECT_EQ(heads, (std::vector<std::string>{"GET /from", "GET /to-here"})) << "at once, or by a detour";
}

TEST_F(SoupFetcherTest, ARemoteServerCanRedirectToAnother)
{
    const NamesHere names;
    RawServer server([](const auto& head, const auto& connection) {
        if (head.starts_with("GET /to "))
            answer_ok(connection, "there");
        else
            connection.send("HTTP/1.1 302 Found\r\nLocation: http://more.example:" +
                            head.substr(head.find("example:") + 8, 5) + "/to\r\nContent-Length: 0\r\n\r\n");
    });
    const std::string port = std::to_string(qoro::test::port_of(server.base()));
    EXPECT_EQ(fetch("http://ads.example:" + port + "/from").body, "there");
}

TEST_F(SoupFetcherTest, ACookieIsSentBackToItsServerForTheFetchersLifetime)
{
    std::vector<std::string> heads;
    RawServer server([&heads](const auto& head, const auto& connection) {
        heads.push_back(head);
        connection.send("HTTP/1.1 204 No Content\r\nSet-Cookie: seen=1; Max-Age=3600\r\nConnection: close\r\n\r\n");
    });
    fetch(server.base() + "/first");
    fetch(server.base() + "/second");
    SoupFetcher(loop).fetch_now(server.base() + "/of another");
    ASSERT_EQ(heads.size(), 3U);
    EXPECT_EQ(heads[0].find("Cookie:"), std::string::npos) << heads[0];
    EXPECT_NE(heads[1].find("Cookie: seen=1\r\n"), std::string::npos) << heads[1];
    EXPECT_EQ(heads[2].find("Cookie:"), std::string::npos) << heads[2];
}

TEST_F(SoupFetcherTest, ACookieOfARedirectIsSentToItsTarget)
{
    std::string head;
    RawServer server([&head](const auto& request, const auto& connection) {
        head = request;
        if (request.starts_with("GET /from "))
            connection.send("HTTP/1.1 302 Found\r\nLocation: /to\r\nSet-Cookie: from=1\r\nContent-Length: 0\r\n"
                            "Connection: close\r\n\r\n");
        else
            answer_ok(connection, "");
    });
    fetch(server.base() + "/from");
    EXPECT_TRUE(head.starts_with("GET /to ")) << head;
    EXPECT_NE(head.find("Cookie: from=1\r\n"), std::string::npos) << head;
}

TEST_F(SoupFetcherTest, ARequestOnAKeptConnectionIsNotRepeatedWhenTheServerCloses)
{
    std::atomic<int> requests = 0;
    RawServer server([&requests](const auto&, const auto& connection) {
        ++requests;
        answer_ok(connection, "one");
        if (!connection.next_head().empty())
            ++requests;
    });
    EXPECT_TRUE(fetch(server.base() + "/1").ok);
    const FetchAnswer second = fetch(server.base() + "/2");
    EXPECT_FALSE(second.ok);
    EXPECT_EQ(second.error, "the server hung up without an answer");
    EXPECT_EQ(requests, 2);
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(SoupFetcherTest, ARequestOnANewConnectionIsNotRepeatedWhenTheServerCloses)
{
    RawServer server([](const auto&, const auto&) {});
    EXPECT_FALSE(fetch(server.base() + "/").ok);
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(SoupFetcherTest, AConnectionThatWasIdleForLongIsNotUsedAgain)
{
    RawServer server([](const auto&, const auto& connection) {
        answer_ok(connection, "one");
        connection.wait_for_close();
    });
    EXPECT_TRUE(fetch(server.base() + "/1").ok);
    loop.run_until([] { return false; }, 2.5); // exceeds the idle timeout of 1 s, which libsoup checks in whole seconds
    EXPECT_TRUE(fetch(server.base() + "/2").ok);
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(SoupFetcherTest, AStatusOf404IsAFailure)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone");
    });
    const FetchAnswer answer = fetch(server.base() + "/");
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "HTTP status 404");
}

TEST_F(SoupFetcherTest, AnUnreachableServerIsAFailure)
{
    std::string base;
    {
        RawServer gone([](const auto&, const auto&) {});
        base = gone.base();
    }
    const FetchAnswer answer = fetch(base + "/");
    EXPECT_FALSE(answer.ok);
    EXPECT_FALSE(answer.error.empty());
}

TEST_F(SoupFetcherTest, AServerThatStallsInMidBodyIsAFailureWithinTheTimeOut)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        connection.wait_for_close();
    });
    const double begun = loop.now();
    const FetchAnswer answer = fetch(server.base() + "/");
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "no complete answer within 1 seconds");
    EXPECT_LT(loop.now() - begun, 5);
}

TEST_F(SoupFetcherTest, ABodyThatEndsEarlyIsAFailure)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
    });
    EXPECT_FALSE(fetch(server.base() + "/").ok);
}

TEST_F(SoupFetcherTest, ABodyAboveTheBoundIsAFailure)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n\r\n");
        while (connection.send(std::string(4096, 'x'))) {
        }
    });
    const FetchAnswer answer = fetch(server.base() + "/endless");
    EXPECT_FALSE(answer.ok);
    EXPECT_EQ(answer.error, "the answer is larger than 1000 bytes");
}

TEST_F(SoupFetcherTest, AnAddressThatIsNotHttpIsAFailure)
{
    EXPECT_FALSE(fetch("not an address").ok);
    EXPECT_FALSE(fetch("ftp://127.0.0.1/x").ok);
    EXPECT_FALSE(fetch("file:///etc/hostname").ok);
    EXPECT_FALSE(fetch("").ok);
}

TEST_F(SoupFetcherTest, ARedirectToAFileIsAFailure)
{
    RawServer server([](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 302 Found\r\nLocation: file:///etc/hostname\r\nContent-Length: 0\r\n\r\n");
    });
    EXPECT_FALSE(fetch(server.base() + "/").ok);
}

TEST_F(SoupFetcherTest, ConsecutiveRequestsShareAConnection)
{
    std::array<FetchAnswer, 2> answers;
    RawServer server([](const auto&, const auto& connection) {
        answer_ok(connection, "one");
        connection.next_head();
        answer_ok(connection, "two");
        connection.wait_for_close();
    });
    answers[0] = fetch(server.base() + "/1");
    answers[1] = fetch(server.base() + "/2");
    EXPECT_EQ(answers[0].body, "one");
    EXPECT_EQ(answers[1].body, "two");
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(SoupFetcherTest, ThirtyConcurrentRequestsDoNotWaitForEachOther)
{
    // Answers only when all thirty requests have arrived.
    RawServer* all = nullptr;
    RawServer server([&all](const auto&, const auto& connection) {
        while (all->connections() < 30)
            std::this_thread::yield();
        answer_ok(connection, "");
    });
    all = &server;
    int succeeded = 0;
    for (int i = 0; i < 30; ++i)
        fetcher.fetch(server.base() + "/" + std::to_string(i), FetchKind::Tracker,
                      [&](const FetchAnswer& answer) { succeeded += answer.ok; });
    EXPECT_TRUE(loop.run_until([this] { return fetcher.pending() == 0; }, Deadline));
    EXPECT_EQ(succeeded, 30);
}

TEST_F(SoupFetcherTest, AThousandConcurrentRequestsArriveOnceEach)
{
    std::mutex mutex;
    std::map<std::string, int> came;
    RawServer server([&](const std::string& head, const auto& connection) {
        {
            const std::scoped_lock lock(mutex);
            ++came[head.substr(0, head.find(" HTTP"))];
        }
        // Without the header, a request on the closing connection could be lost, and it is not sent twice.
        connection.send("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
    });
    SoupFetcher patient(loop, {.background_seconds = Deadline});
    int succeeded = 0;
    for (int i = 0; i < 1000; ++i)
        patient.fetch(server.base() + "/" + std::to_string(i), FetchKind::Tracker,
                      [&](const FetchAnswer& answer) { succeeded += answer.ok; });
    EXPECT_TRUE(loop.run_until([&] { return patient.pending() == 0; }, Deadline));
    EXPECT_EQ(succeeded, 1000);
    EXPECT_EQ(came.size(), 1000U);
    EXPECT_TRUE(std::ranges::all_of(came, [](const auto& each) { return each.second == 1; }));
}

TEST_F(SoupFetcherTest, ABlockingFetchReturnsWithItsAnswer)
{
    RawServer server([](const auto&, const auto& connection) { answer_ok(connection, "icon"); });
    const FetchAnswer answer = fetcher.fetch_now(server.base() + "/icon.png");
    EXPECT_TRUE(answer.ok);
    EXPECT_EQ(answer.body, "icon");
}

TEST_F(SoupFetcherTest, ASilentServerBlocksTheMainThreadNoLongerThanTheTimeOut)
{
    RawServer server([](const auto&, const auto& connection) { connection.wait_for_close(); });
    const double begun = loop.now();
    const FetchAnswer answer = fetcher.fetch_now(server.base() + "/");
    EXPECT_FALSE(answer.ok);
    EXPECT_LT(loop.now() - begun, 5) << "it would be silent for ever";
}

TEST_F(SoupFetcherTest, ABlockingFetchDoesNotQueueBehindASlowOne)
{
    RawServer server([](const auto& head, const auto& connection) {
        if (head.starts_with("GET /slow "))
            connection.wait_for_close();
        else
            answer_ok(connection, "quick");
    });
    fetcher.fetch(server.base() + "/slow", FetchKind::Tracker, [](const FetchAnswer&) {});
    EXPECT_EQ(fetcher.fetch_now(server.base() + "/quick").body, "quick");
}
