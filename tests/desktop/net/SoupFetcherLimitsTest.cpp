#include "tests/desktop/net/SoupFetcherTest.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <string>

namespace qoro::test
{
namespace
{

// ------------------------------------------------------------------------------------------------- at the same time

TEST(SoupFetcherBoundTest, UnresponsiveHostsDelayNoOther)
{
    GlibLoop loop;
    std::array<std::unique_ptr<RawServer>, 5> silent;
    for (auto& server : silent)
        server = std::make_unique<RawServer>([](const auto&, const auto& connection) { connection.wait_for_close(); });
    RawServer other([](const auto&, const auto& connection) { answer_ok(connection, "there"); });
    SoupFetcher fetcher(loop);
    std::string body;
    int given_up = 0;

    for (int i = 0; i < 100; ++i)
        for (const auto& server : silent)
            fetcher.fetch(server->base() + "/", FetchKind::Tracker, [&given_up](const FetchAnswer&) { ++given_up; });
    fetcher.fetch(other.base() + "/", FetchKind::Tracker, [&body](const FetchAnswer& answer) { body = answer.body; });

    EXPECT_TRUE(loop.run_until([&body] { return !body.empty(); }, Deadline));
    EXPECT_EQ(given_up, 0);
}

TEST(SoupFetcherBoundTest, RequestsBeyondAHostsLimitWaitAndNoneIsLost)
{
    GlibLoop loop;
    std::atomic<int> at_once = 0;
    std::atomic<int> most = 0;
    std::atomic<int> requests = 0;
    RawServer server([&](const auto&, const auto& connection) {
        most = std::max<int>(most, ++at_once);
        ++requests;
        --at_once;
        connection.send("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
    });
    SoupFetcher fetcher(loop, {.per_host = 2});
    int succeeded = 0;

    for (int i = 0; i < 100; ++i)
        fetcher.fetch(server.base() + "/", FetchKind::Tracker,
                      [&succeeded](const FetchAnswer& answer) { succeeded += answer.ok; });

    EXPECT_TRUE(loop.run_until([&fetcher] { return fetcher.pending() == 0; }, Deadline));
    EXPECT_EQ(succeeded, 100);
    EXPECT_EQ(requests, 100);
    EXPECT_LE(most, 2);
}

TEST(SoupFetcherBoundTest, BeyondTheTotalLimitNoRequestIsLost)
{
    GlibLoop loop;
    const auto answer = [](const auto&, const auto& connection) {
        connection.send("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
    };
    RawServer one(answer);
    RawServer two(answer);
    SoupFetcher fetcher(loop, {.per_host = 2, .in_all = 3});
    int succeeded = 0;

    for (int i = 0; i < 50; ++i) {
        fetcher.fetch(one.base() + "/", FetchKind::Tracker,
                      [&succeeded](const FetchAnswer& got) { succeeded += got.ok; });
        fetcher.fetch(two.base() + "/", FetchKind::Tracker,
                      [&succeeded](const FetchAnswer& got) { succeeded += got.ok; });
    }

    EXPECT_TRUE(loop.run_until([&fetcher] { return fetcher.pending() == 0; }, Deadline));
    EXPECT_EQ(succeeded, 100);
}

TEST(SoupFetcherBoundTest, ABlockingFetchOvertakesWaitingOnes)
{
    GlibLoop loop;
    RawServer server([](const auto& head, const auto& connection) {
        if (head.starts_with("GET /icon "))
            answer_ok(connection, "icon");
        else
            connection.wait_for_close();
    });
    SoupFetcher fetcher(loop, {.per_host = 2, .in_all = 2});

    for (int i = 0; i < 10; ++i)
        fetcher.fetch(server.base() + "/silent", FetchKind::Tracker, [](const FetchAnswer&) {});

    EXPECT_EQ(fetcher.fetch_now(server.base() + "/icon").body, "icon");
}

// -------------------------------------------------------------------------------------------------------------- end

TEST(SoupFetcherEndTest, FinishingSendsAllPendingRequestsAlthoughTheirTargetsAreGone)
{
    GlibLoop loop;
    std::atomic<int> requests = 0;
    RawServer server([&requests](const auto&, const auto& connection) {
        ++requests;
        connection.send("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
    });
    SoupFetcher fetcher(loop, {.per_host = 2});
    for (int i = 0; i < 50; ++i)
        fetcher.fetch(server.base() + "/", FetchKind::Tracker, [](const FetchAnswer&) { ADD_FAILURE(); });
    fetcher.abandon();

    fetcher.finish(Deadline);

    EXPECT_EQ(requests, 50);
}

TEST(SoupFetcherEndTest, FinishingWaitsForASilentServerNoLongerThanItsLimit)
{
    GlibLoop loop;
    RawServer server([](const auto&, const auto& connection) { connection.wait_for_close(); });
    SoupFetcher fetcher(loop);
    fetcher.fetch(server.base() + "/", FetchKind::Tracker, [](const FetchAnswer&) {});
    const double begun = loop.now();

    fetcher.finish(0.2);

    EXPECT_GE(loop.now() - begun, 0.15);
    EXPECT_LT(loop.now() - begun, 5) << "a fetch is given up after ten";
}

TEST(SoupFetcherEndTest, DestructionCancelsPendingRequestsAndReleasesTheirTargets)
{
    GlibLoop loop;
    RawServer server([](const auto&, const auto& connection) { connection.wait_for_close(); });
    const auto target = std::make_shared<int>(0);
    bool answered = false;
    {
        SoupFetcher fetcher(loop);
        fetcher.fetch(server.base() + "/", FetchKind::Tracker,
                      [target, &answered](const FetchAnswer&) { answered = true; });
        EXPECT_EQ(target.use_count(), 2);
    }
    EXPECT_EQ(target.use_count(), 1);
    bool passed = false;
    loop.post([&passed] { passed = true; });
    EXPECT_TRUE(loop.run_until([&passed] { return passed; }, Deadline));
    EXPECT_FALSE(answered);
}

TEST(SoupFetcherEndTest, AbandonedAnswersReleaseTheirTargetsAndNeverArrive)
{
    GlibLoop loop;
    RawServer server([](const auto&, const auto& connection) { answer_ok(connection, "late"); });
    SoupFetcher fetcher(loop);
    const auto target = std::make_shared<int>(0);
    fetcher.fetch(server.base() + "/", FetchKind::Tracker, [target](const FetchAnswer&) { ADD_FAILURE(); });
    fetcher.abandon();
    EXPECT_EQ(target.use_count(), 1);
    EXPECT_EQ(fetcher.fetch_now(server.base() + "/").body, "late");
    bool passed = false;
    loop.post([&passed] { passed = true; });
    EXPECT_TRUE(loop.run_until([&passed] { return passed; }, Deadline));
}

} // namespace
} // namespace qoro::test
