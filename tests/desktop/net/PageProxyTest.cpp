#include "desktop/net/PageProxy.h"
#include "tests/desktop/net/NamesHere.h"
#include "tests/desktop/net/RawHttp.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

// PageProxy, the SOCKS proxy of the pages, used as WebKit uses it: through GLib's SOCKS client.

using namespace qoro;
using namespace qoro::test;

namespace
{

/// An echo server.
class Echo
{
public:
    Echo() : listener_(g_socket_listener_new()), stop_(g_cancellable_new())
    {
        port = g_socket_listener_add_any_inet_port(listener_, nullptr, nullptr);
        accepting_ = std::thread([this] {
            while (GSocketConnection* one = g_socket_listener_accept(listener_, nullptr, stop_, nullptr)) {
                ++connections;
                answering_.emplace_back([this, one] {
                    GIOStream* stream = G_IO_STREAM(one);
                    g_output_stream_splice(g_io_stream_get_output_stream(stream), g_io_stream_get_input_stream(stream),
                                           G_OUTPUT_STREAM_SPLICE_NONE, stop_, nullptr);
                    g_io_stream_close(stream, nullptr, nullptr);
                    g_object_unref(one);
                });
            }
        });
    }
    ~Echo()
    {
        g_cancellable_cancel(stop_);
        accepting_.join();
        for (std::thread& each : answering_)
            each.join();
        g_object_unref(listener_);
        g_object_unref(stop_);
    }
    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;

    guint16 port;
    std::atomic<int> connections = 0;

private:
    GSocketListener* const listener_;
    GCancellable* const stop_;
    std::vector<std::thread> answering_;
    std::thread accepting_;
};

struct Connection {
    explicit Connection(GSocketConnection* connected) : stream(connected) {}
    ~Connection() { g_clear_object(&stream); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool send(const std::string& bytes) const
    {
        return g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(stream)), bytes.data(), bytes.size(),
                                         nullptr, nullptr, nullptr);
    }
    /// Reads until the peer closes.
    std::string rest() const
    {
        std::string all;
        std::string piece(100'000, '\0');
        gssize got = 0;
        while ((got = g_input_stream_read(g_io_stream_get_input_stream(G_IO_STREAM(stream)), piece.data(), piece.size(),
                                          nullptr, nullptr)) > 0)
            all.append(piece, 0, static_cast<std::size_t>(got));
        return all;
    }
    void say_no_more() const { g_socket_shutdown(g_socket_connection_get_socket(stream), FALSE, TRUE, nullptr); }

    GSocketConnection* stream;
};

class PageProxyTest : public testing::Test
{
protected:
    std::unique_ptr<Connection> connect(const std::string& host, const std::string& through, guint16 port = 0)
    {
        GSocketClient* client = g_socket_client_new();
        GProxyResolver* resolver = g_simple_proxy_resolver_new(through.c_str(), nullptr);
        g_socket_client_set_proxy_resolver(client, resolver);
        GError* failed = nullptr;
        GSocketConnection* connected =
            g_socket_client_connect_to_host(client, host.c_str(), port ? port : echo.port, nullptr, &failed);
        error = failed ? failed->code : -1;
        g_clear_error(&failed);
        g_object_unref(resolver);
        g_object_unref(client);
        return connected ? std::make_unique<Connection>(connected) : nullptr;
    }
    std::vector<std::string> reported()
    {
        const std::scoped_lock lock(mutex);
        return refusals;
    }
    std::string echo_at(const std::string& host) const { return host + ":" + std::to_string(echo.port); }

    Echo echo;
    NamesHere names;
    std::mutex mutex;
    std::vector<std::string> refusals;
    int error = -1;
    PageProxy proxy{[this](const std::string& where) {
        const std::scoped_lock lock(mutex);
        refusals.push_back(where);
    }};
};

TEST_F(PageProxyTest, NothingPrivateIsReachableAtFirst)
{
    for (const char* host : {"127.0.0.1", "127.0.0.2", "nas.example", "::1"})
        EXPECT_FALSE(connect(host, proxy.address())) << host;

    EXPECT_EQ(error, G_IO_ERROR_PROXY_NOT_ALLOWED);
    EXPECT_EQ(echo.connections, 0);
    EXPECT_EQ(reported(), (std::vector<std::string>{echo_at("127.0.0.1"), echo_at("127.0.0.2"),
                                                    echo_at("nas.example") + ", which is " + echo_at("127.0.0.1"),
                                                    "[::1]:" + std::to_string(echo.port)}));
}

TEST_F(PageProxyTest, BytesAndTheEndOfStreamPassBothWays)
{
    proxy.set_reach(NetworkZone::Machine);
    const auto connection = connect("nas.example", proxy.address());
    ASSERT_TRUE(connection);
    std::string much(20'000'000, '\0');
    for (std::size_t n = 0; n < much.size(); ++n)
        much[n] = static_cast<char>(n * n >> 7U);

    // Sends and reads concurrently: sending everything first would deadlock once all buffers are full.
    auto back = std::async(std::launch::async, [&] { return connection->rest(); });
    EXPECT_TRUE(connection->send(much));
    connection->say_no_more();

    EXPECT_TRUE(back.get() == much);
    EXPECT_TRUE(reported().empty());
}

TEST_F(PageProxyTest, AConnectionThatReadsNothingDelaysNoOther)
{
    proxy.set_reach(NetworkZone::Machine);
    const auto idle = connect("nas.example", proxy.address());
    ASSERT_TRUE(idle);
    // Never reads the echo, so that eventually no more can be sent.
    const std::string much(1'000'000, 'x');
    GSocket* socket = g_socket_connection_get_socket(idle->stream);
    while (g_socket_send_with_blocking(socket, much.data(), much.size(), FALSE, nullptr, nullptr) > 0 ||
           g_socket_condition_timed_wait(socket, G_IO_OUT, 500'000, nullptr, nullptr))
        continue;

    const auto other = connect("nas.example", proxy.address());
    ASSERT_TRUE(other);
    EXPECT_TRUE(other->send("hello"));
    other->say_no_more();
    EXPECT_EQ(other->rest(), "hello");
}

TEST_F(PageProxyTest, ANarrowerReachEndsConnectionsBeyondIt)
{
    proxy.set_reach(NetworkZone::Machine);
    const auto connection = connect("nas.example", proxy.address());
    ASSERT_TRUE(connection);

    proxy.set_reach(NetworkZone::Public);

    EXPECT_EQ(connection->rest(), "");
    EXPECT_FALSE(connect("nas.example", proxy.address()));
}

TEST_F(PageProxyTest, ClientsWithoutThePasswordAreRefused)
{
    proxy.set_reach(NetworkZone::Machine);
    const std::string address = proxy.address();
    const std::string at = address.substr(address.find('@'));

    for (const std::string& stranger : {"socks5://127.0.0.1" + at.substr(at.find(':')), "socks5://page:wrong" + at,
                                        "socks5://page:" + at, "socks5://" + at})
        EXPECT_FALSE(connect("nas.example", stranger)) << stranger;
    EXPECT_EQ(echo.connections, 0);
    EXPECT_NE(address, PageProxy([](const std::string&) {}).address());
}

TEST_F(PageProxyTest, AnUnknownNameAndAnUnreachableServerFail)
{
    proxy.set_reach(NetworkZone::Machine);

    EXPECT_FALSE(connect("nothing.invalid", proxy.address()));
    EXPECT_FALSE(connect("nas.example", proxy.address(), 1));
    EXPECT_TRUE(reported().empty());
}

TEST_F(PageProxyTest, AConnectionThatIsNotSocksIsClosed)
{
    const std::string port = proxy.address().substr(proxy.address().rfind(':') + 1);

    EXPECT_EQ(converse(std::stoi(port), "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"), "");
    EXPECT_EQ(converse(std::stoi(port), std::string("\x05\x01\x00", 3)), "\x05\xFF");
    EXPECT_EQ(converse(std::stoi(port), std::string("\x05\x00", 2)), "\x05\xFF");
}

TEST_F(PageProxyTest, RefusesConnectionsBeyondItsLimit)
{
    proxy.set_reach(NetworkZone::Machine);
    std::vector<std::unique_ptr<Connection>> open;
    for (auto one = connect("nas.example", proxy.address()); one; one = connect("nas.example", proxy.address()))
        open.push_back(std::move(one));
    EXPECT_EQ(open.size(), 64);

    open.front()->say_no_more();
    EXPECT_EQ(open.front()->rest(), "");
    while (!connect("nas.example", proxy.address()))
        std::this_thread::yield(); // the proxy soon notices the closed connection
}

TEST_F(PageProxyTest, EndsWhileConnectionsAreOpen)
{
    auto ending = std::make_unique<PageProxy>([](const std::string&) {});
    ending->set_reach(NetworkZone::Machine);
    const auto open = connect("nas.example", ending->address());
    const auto silent =
        connect("127.0.0.1", "direct://",
                static_cast<guint16>(std::stoi(ending->address().substr(ending->address().rfind(':') + 1))));
    ASSERT_TRUE(open);
    ASSERT_TRUE(silent);

    ending.reset();

    EXPECT_EQ(open->rest(), "");
    EXPECT_EQ(silent->rest(), "");
}

} // namespace
