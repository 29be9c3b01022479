#include "desktop/net/Reach.h"
#include "desktop/GlibLoop.h"
#include "desktop/cache/VideoCache.h"
#include "desktop/cache/VideoDownload.h"
#include "desktop/net/HttpReader.h"
#include "desktop/net/SoupFetcher.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/OwnNetwork.h"
#include "tests/desktop/net/RawHttp.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <array>
#include <mutex>
#include <optional>

// An ad from a public server must not reach private networks or this machine, whatever a name resolved to before and
// wherever a server redirects to.

using namespace qoro;
using namespace qoro::test;

namespace
{

constexpr const char* Inside = "its address is one of a private network or of this machine";
constexpr const char* RedirectedInside = "its server redirects to a private network or to this machine";
// A documentation address (RFC 5737) and a private one (RFC 1918).
constexpr const char* PublicIp = "203.0.113.5";
constexpr const char* PrivateIp = "192.168.77.5";

FetchAnswer fetch(SoupFetcher& fetcher, GlibLoop& loop, const std::string& address, FetchKind kind = FetchKind::Tracker)
{
    std::optional<FetchAnswer> got;
    fetcher.fetch(address, kind, [&got](FetchAnswer answer) { got = std::move(answer); });
    EXPECT_TRUE(loop.run_until([&got] { return got.has_value(); }, 20));
    return got.value_or(FetchAnswer{});
}

/// A server that answers every request with 200, except "/to?ADDRESS", which it redirects to that address.
struct Server {
    explicit Server(bool everywhere = false)
        : raw(
              [this](const std::string& head, const RawServer::Connection& connection) {
                  const std::string target = head.substr(4, head.find(" HTTP") - 4);
                  {
                      const std::scoped_lock lock(mutex);
                      asked.push_back(target);
                  }
                  if (target.starts_with("/to?"))
                      connection.send("HTTP/1.1 302 Found\r\nLocation: " + target.substr(4) +
                                      "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
                  else
                      connection.send("HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: 4\r\n"
                                      "Connection: close\r\n\r\nbody");
              },
              everywhere)
    {
    }
    std::string at(const std::string& host, const std::string& path = "/x") const
    {
        return "http://" + host + ":" + std::to_string(raw.port()) + path;
    }
    std::vector<std::string> heard()
    {
        const std::scoped_lock lock(mutex);
        return asked;
    }

    std::mutex mutex;
    std::vector<std::string> asked;
    RawServer raw;
};

class ReachTest : public testing::Test
{
protected:
    Server server;
    NamesHere names;
    GlibLoop loop;
    SoupFetcher fetcher{loop};
};

TEST_F(ReachTest, WithoutARuleEverythingIsFetched)
{
    EXPECT_TRUE(fetch(fetcher, loop, server.at("127.0.0.1")).ok);
    EXPECT_TRUE(fetch(fetcher, loop, server.at("nas.example")).ok);
}

TEST_F(ReachTest, AnAddressOfThisMachineIsNotFetched)
{
    const ReachRule rule(NetworkZone::Public);

    for (const char* host : {"127.0.0.1", "127.0.0.2", "localhost", "0.0.0.0", "[::1]", "[::ffff:127.0.0.1]"}) {
        const FetchAnswer answer = fetch(fetcher, loop, server.at(host));
        EXPECT_FALSE(answer.ok) << host;
        EXPECT_EQ(answer.error, Inside) << host;
    }
    EXPECT_EQ(server.raw.connections(), 0);
}

TEST_F(ReachTest, ANameThatResolvesToThisMachineIsNotFetched)
{
    const ReachRule rule(NetworkZone::Public);

    EXPECT_EQ(fetch(fetcher, loop, server.at("nas.example")).error, Inside);
    EXPECT_EQ(fetcher.fetch_now(server.at("nas.example")).error, Inside);
    EXPECT_EQ(server.raw.connections(), 0);
}

TEST_F(ReachTest, NeitherAVideoNorACopyIsFetchedFromThisMachine)
{
    const ReachRule rule(NetworkZone::Public);
    HttpReader reader(server.at("nas.example"));
    std::array<char, 10> room{};
    std::size_t got = 0;
    const ScratchFolder scratch;
    VideoCache cache({.folder = scratch.path("videos")});

    EXPECT_EQ(reader.read(0, room.data(), room.size(), got), HttpReader::Outcome::Failed);
    EXPECT_EQ(reader.error(), Inside);
    EXPECT_EQ(VideoDownload().fetch(cache, server.at("nas.example")).error, Inside);
    EXPECT_EQ(server.raw.connections(), 0);
}

TEST_F(ReachTest, AddressesNamedByAnAdOfThisMachineAreFetched)
{
    const ReachRule rule(NetworkZone::Public);
    {
        const NamedHosts named({server.at("NAS.example", "/other"), server.at("127.0.0.1"), "tel:1", ""});
        EXPECT_TRUE(fetch(fetcher, loop, server.at("nas.example")).ok);
        EXPECT_TRUE(fetch(fetcher, loop, server.at("127.0.0.1")).ok);
        EXPECT_EQ(fetch(fetcher, loop, server.at("other.example")).error, Inside);
        EXPECT_EQ(fetch(fetcher, loop, "http://127.0.0.1:1/").error, Inside) << "another port is another server";
    }
    EXPECT_EQ(fetch(fetcher, loop, server.at("nas.example")).error, Inside) << "the ad is gone";
}

TEST_F(ReachTest, AnAddressThatTheHostOpensIsFetched)
{
    const ReachRule rule(NetworkZone::Private);

    EXPECT_TRUE(fetch(fetcher, loop, server.at("nas.example")).ok);
}

TEST_F(ReachTest, APageReachesTheZoneOfItsServer)
{
    const ReachRule rule(NetworkZone::Public);
    const NamedHosts named({server.at("studio.example")});
    EXPECT_TRUE(fetch(fetcher, loop, server.at("studio.example"), FetchKind::Page).ok);

    EXPECT_EQ(reach_of_page(server.at("studio.example", "/page.html")), NetworkZone::Machine);
    EXPECT_EQ(reach_of_page(server.at("ads.example")), NetworkZone::Public);
    EXPECT_EQ(reach_of_page("http://10.1.2.3/page.html"), NetworkZone::Private);
    EXPECT_EQ(reach_of_page("about:blank"), NetworkZone::Public);
}

/// Runs in its own network namespace, with public and private server addresses.
class ReachNetworkTest : public testing::Test
{
protected:
    void run(const std::function<void(Server&, NamesHere&, GlibLoop&)>& test)
    {
        const bool ran = in_own_network({PublicIp, PrivateIp}, [&] {
            GMainContext* context = g_main_context_new();
            g_main_context_push_thread_default(context);
            {
                Server server(true);
                NamesHere names;
                names.lead("ads.example", {PublicIp});
                names.lead("nas.example", {PrivateIp});
                GlibLoop loop;
                const ReachRule rule(NetworkZone::Public);
                test(server, names, loop);
            }
            g_main_context_pop_thread_default(context);
            g_main_context_unref(context);
        });
        if (!ran)
            GTEST_SKIP() << "this machine lets no test have a network of its own";
    }
};

TEST_F(ReachNetworkTest, APublicServerIsReachedAndAPrivateOneIsNot)
{
    run([](Server& server, NamesHere&, GlibLoop& loop) {
        SoupFetcher fetcher(loop);
        EXPECT_TRUE(fetch(fetcher, loop, server.at("ads.example", "/1")).ok);
        EXPECT_TRUE(fetch(fetcher, loop, server.at(PublicIp, "/2")).ok);
        EXPECT_EQ(fetch(fetcher, loop, server.at("nas.example", "/3")).error, Inside);
        EXPECT_EQ(fetch(fetcher, loop, server.at(PrivateIp, "/4")).error, Inside);
        EXPECT_EQ(server.heard(), (std::vector<std::string>{"/1", "/2"}));
        EXPECT_EQ(server.raw.connections(), 2);
    });
}

TEST_F(ReachNetworkTest, APublicServerCannotRedirectInside)
{
    run([](Server& server, NamesHere&, GlibLoop& loop) {
        // Not even to addresses that the ad itself names: the redirecting server is not trusted.
        const NamedHosts named({server.at("ads.example"), server.at("nas.example"), server.at(PrivateIp)});
        SoupFetcher fetcher(loop);
        const std::string from = server.at("ads.example", "/to?");
        for (const std::string& to : {server.at("nas.example"), server.at(PrivateIp), server.at("127.0.0.1"),
                                      server.at("here.example"), from + server.at("nas.example")}) {
            EXPECT_EQ(fetch(fetcher, loop, from + to).error, RedirectedInside) << to;
            HttpReader reader(from + to);
            std::array<char, 10> room{};
            std::size_t got = 0;
            EXPECT_EQ(reader.read(0, room.data(), room.size(), got), HttpReader::Outcome::Failed);
            EXPECT_EQ(reader.error(), RedirectedInside) << to;
        }
        EXPECT_TRUE(fetch(fetcher, loop, from + server.at("ads.example", "/out")).ok);
        for (const std::string& target : server.heard())
            EXPECT_NE(target, "/x");
    });
}

TEST_F(ReachNetworkTest, AKeptConnectionDoesNotBypassTheCheck)
{
    run([](Server& server, NamesHere&, GlibLoop& loop) {
        // A server that keeps the connection open for further requests.
        RawServer patient(
            [](const std::string& first, const RawServer::Connection& connection) {
                for (std::string head = first; !head.empty(); head = connection.next_head())
                    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx");
            },
            true);
        const std::string inside = "http://nas.example:" + std::to_string(patient.port()) + "/";
        const NamedHosts named({inside});
        SoupFetcher fetcher(loop);
        ASSERT_TRUE(fetch(fetcher, loop, inside).ok);

        EXPECT_EQ(fetch(fetcher, loop, server.at("ads.example", "/to?" + inside)).error, RedirectedInside);
        EXPECT_EQ(patient.connections(), 1);
    });
}

TEST_F(ReachNetworkTest, ANameWithPublicAndPrivateAddressesIsReachedAtThePublicOne)
{
    run([](Server& server, NamesHere& names, GlibLoop& loop) {
        names.lead("both.example", {PrivateIp, PublicIp});
        SoupFetcher fetcher(loop);
        EXPECT_TRUE(fetch(fetcher, loop, server.at("both.example")).ok);
        EXPECT_EQ(server.raw.connections(), 1);
    });
}

TEST_F(ReachNetworkTest, ANameThatWasPublicBeforeIsCheckedAgain)
{
    run([](Server& server, NamesHere& names, GlibLoop& loop) {
        // A new fetcher each time: a fetcher caches resolved names.
        const auto asked_anew = [&](const std::string& path) {
            SoupFetcher fetcher(loop);
            return fetch(fetcher, loop, server.at("turning.example", path));
        };
        names.lead("turning.example", {PublicIp});
        EXPECT_TRUE(asked_anew("/out").ok);
        names.lead("turning.example", {PrivateIp});
        EXPECT_EQ(asked_anew("/in").error, Inside);
        EXPECT_EQ(server.heard(), std::vector<std::string>{"/out"});
    });
}

} // namespace
