#include "desktop/net/AddedHeaders.h"

#include "desktop/net/HttpReader.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/SoupFetcherTest.h"

#include <gmock/gmock.h>

#include <array>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

using namespace qoro;
using namespace qoro::test;

// The host's headers and cookies: sent to their origin, and to no other.

namespace
{
using testing::HasSubstr;
using testing::Not;

/// A server that records what it is sent, and redirects "/to?ADDRESS" to the address.
class Recorder
{
public:
    std::string base() const { return server_.base(); }
    std::string named(const std::string& host) const { return "http://" + host + ":" + std::to_string(server_.port()); }
    std::vector<std::string> heads()
    {
        const std::scoped_lock lock(mutex_);
        return heads_;
    }

private:
    std::mutex mutex_;
    std::vector<std::string> heads_;
    RawServer server_{[this](const std::string& head, const auto& connection) {
        {
            const std::scoped_lock lock(mutex_);
            heads_.push_back(head);
        }
        const std::string target = head.substr(4, head.find(' ', 4) - 4);
        if (target.starts_with("/to?"))
            connection.send("HTTP/1.1 302 Found\r\nLocation: " + target.substr(4) +
                            "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        else if (target == "/sets")
            connection.send("HTTP/1.1 200 OK\r\nSet-Cookie: sid=of-server\r\nContent-Length: 2\r\n"
                            "Connection: close\r\n\r\nok");
        else
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok");
    }};
};

class AddedHeadersTest : public testing::Test
{
protected:
    void fetch(const std::string& address)
    {
        std::optional<FetchAnswer> got;
        fetcher.fetch(address, FetchKind::Tracker, [&got](FetchAnswer answer) { got = std::move(answer); });
        ASSERT_TRUE(loop.run_until([&got] { return got.has_value(); }, Deadline));
        EXPECT_TRUE(got->ok) << got->error;
    }

    GlibLoop loop;
    SoupFetcher fetcher{loop};
    Recorder server;
    Recorder other;
};
} // namespace

TEST_F(AddedHeadersTest, AreSentToTheirOriginOnly)
{
    const AddedHeaders added({{server.base(), {{"X-Partner", "7"}, {"Authorization", "Bearer t"}}, {{"sid", "abc"}}}});
    fetch(server.base() + "/a");
    fetch(other.base() + "/b");
    EXPECT_THAT(server.heads().at(0), HasSubstr("X-Partner: 7\r\n"));
    EXPECT_THAT(server.heads().at(0), HasSubstr("Authorization: Bearer t\r\n"));
    EXPECT_THAT(server.heads().at(0), HasSubstr("Cookie: sid=abc\r\n"));
    for (const char* none : {"X-Partner", "Authorization", "Cookie"})
        EXPECT_THAT(other.heads().at(0), Not(HasSubstr(none)));
}

TEST_F(AddedHeadersTest, ARedirectToAnotherOriginLosesThem)
{
    const AddedHeaders added({{server.base(), {{"X-Partner", "7"}}, {{"sid", "abc"}}},
                              {other.base(), {{"X-Other", "8"}}, {{"oid", "def"}}}});
    // Another name of the same server is another origin.
    const NamesHere names;
    fetch(server.base() + "/to?" + other.base() + "/to?" + server.base() + "/end");

    ASSERT_EQ(server.heads().size(), 2U);
    ASSERT_EQ(other.heads().size(), 1U);
    EXPECT_THAT(other.heads()[0], HasSubstr("X-Other: 8\r\n"));
    EXPECT_THAT(other.heads()[0], HasSubstr("Cookie: oid=def\r\n"));
    EXPECT_THAT(other.heads()[0], Not(HasSubstr("X-Partner")));
    EXPECT_THAT(other.heads()[0], Not(HasSubstr("sid")));
    EXPECT_THAT(server.heads()[1], HasSubstr("X-Partner: 7\r\n")) << "back at its origin";
    EXPECT_THAT(server.heads()[1], Not(HasSubstr("X-Other")));
    EXPECT_THAT(server.heads()[1], Not(HasSubstr("oid")));

    fetch(server.named("ads.example") + "/c");
    EXPECT_THAT(server.heads()[2], Not(HasSubstr("X-Partner")));
}

TEST_F(AddedHeadersTest, AVideoIsRequestedWithThemAndRedirectedWithout)
{
    const AddedHeaders added({{server.base(), {{"X-Partner", "7"}}, {{"sid", "abc"}}}});
    HttpReader reader(server.base() + "/to?" + other.base() + "/v.mp4");
    std::array<char, 16> room{};
    std::size_t got = 0;
    EXPECT_EQ(reader.read(0, room.data(), room.size(), got), HttpReader::Outcome::Bytes);
    EXPECT_THAT(server.heads().at(0), HasSubstr("X-Partner: 7\r\n"));
    EXPECT_THAT(server.heads().at(0), HasSubstr("Cookie: sid=abc\r\n"));
    EXPECT_THAT(other.heads().at(0), Not(HasSubstr("X-Partner")));
    EXPECT_THAT(other.heads().at(0), Not(HasSubstr("Cookie")));
}

TEST_F(AddedHeadersTest, TheServersOwnCookieTakesPrecedence)
{
    const AddedHeaders added({{server.base(), {}, {{"sid", "of-host"}, {"more", "1"}}}});
    fetch(server.base() + "/sets");
    fetch(server.base() + "/next");
    EXPECT_THAT(server.heads().at(0), HasSubstr("Cookie: sid=of-host; more=1\r\n"));
    EXPECT_THAT(server.heads().at(1), HasSubstr("Cookie: sid=of-server; more=1\r\n"));
}

TEST_F(AddedHeadersTest, LaterOnesReplaceThemAndNoneStay)
{
    auto first = std::make_unique<AddedHeaders>(std::vector<OriginHeaders>{{server.base(), {{"X-First", "1"}}}});
    auto second = std::make_unique<AddedHeaders>(std::vector<OriginHeaders>{{server.base(), {{"X-Second", "2"}}}});
    first.reset();
    fetch(server.base() + "/a");
    second.reset();
    fetch(server.base() + "/b");
    EXPECT_THAT(server.heads().at(0), HasSubstr("X-Second: 2\r\n"));
    EXPECT_THAT(server.heads().at(0), Not(HasSubstr("X-First")));
    EXPECT_THAT(server.heads().at(1), Not(HasSubstr("X-Second")));
}

TEST_F(AddedHeadersTest, UnusableOnesAreRefused)
{
    EXPECT_THROW(AddedHeaders({{server.base(), {{"X", "1\r\nHost: evil"}}}}), std::invalid_argument);
    EXPECT_THROW(AddedHeaders({{server.base(), {{"Host", "evil"}}}}), std::invalid_argument);
    EXPECT_THROW(AddedHeaders({{server.base() + "/path"}}), std::invalid_argument);
}
