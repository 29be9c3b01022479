#include "desktop/net/PageTunnel.h"

#include "desktop/net/Reach.h"

#include <gio/gio.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace qoro
{

namespace
{

// SOCKS 5 (RFC 1928) with user name and password (RFC 1929).
constexpr unsigned char Version = 5;
constexpr unsigned char LoginVersion = 1;
constexpr unsigned char WithPassword = 2;
constexpr unsigned char NoMethod = 0xFF;
constexpr unsigned char Connect = 1;
enum AddressType : unsigned char { Ip4 = 1, Name = 3, Ip6 = 4 };
enum Status : unsigned char { Succeeded = 0, NotAllowed = 2, Unreachable = 4, UnknownCommand = 7, UnknownAddress = 8 };

/// Seconds that a page's process may take for its request, and a server for accepting a connection.
constexpr unsigned AskingPatience = 10;
constexpr unsigned ConnectingPatience = 20;

/// Compares without early exit, so that the duration reveals nothing about the password.
bool is_same(const std::string& one, const std::string& other)
{
    unsigned char differs = one.size() != other.size();
    for (std::size_t n = 0; n < one.size() && n < other.size(); ++n)
        differs |= static_cast<unsigned char>(one[n] ^ other[n]);
    return !differs;
}

/// One direction of a relay, with the bytes that were received but not yet sent.
class Way
{
public:
    Way(int from, int to) : from_(from), to_(to) {}

    bool is_over() const { return over_; }
    short wants_from() const { return !ended_ && begin_ == end_ ? POLLIN : 0; }
    short wants_to() const { return begin_ < end_ ? POLLOUT : 0; }

    /// Transfers what is possible without blocking.
    /// @return false if the connection is broken
    bool move()
    {
        if (!ended_ && begin_ == end_) {
            const ssize_t got = recv(from_, piece_.data(), piece_.size(), 0);
            if (got < 0)
                return is_patient();
            begin_ = 0;
            end_ = static_cast<std::size_t>(got);
            ended_ = got == 0;
        }
        if (begin_ < end_) {
            const ssize_t sent = send(to_, piece_.data() + begin_, end_ - begin_, MSG_NOSIGNAL);
            if (sent < 0)
                return is_patient();
            begin_ += static_cast<std::size_t>(sent);
        }
        if (ended_ && begin_ == end_ && !over_) {
            over_ = true;
            shutdown(to_, SHUT_WR);
        }
        return true;
    }

private:
    static bool is_patient() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

    const int from_;
    const int to_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool ended_ = false;
    bool over_ = false;
    std::array<char, 32u << 10> piece_;
};

} // namespace

PageTunnel::PageTunnel(Rules& rules, ObjectRef<GSocketConnection> page)
    : rules_(rules), page_(std::move(page)), stop_(adopt(g_cancellable_new()))
{
}

void PageTunnel::stop()
{
    g_cancellable_cancel(stop_.get());
}

void PageTunnel::keep_within(NetworkZone reach)
{
    if (zone_ > reach)
        stop();
}

void PageTunnel::run()
{
    g_socket_set_timeout(g_socket_connection_get_socket(page_.get()), AskingPatience);
    if (log_in()) {
        const Asked asked = read_request();
        if (asked.target && connect(asked))
            relay();
    }
    // Closed here, because the proxy may destroy the tunnel much later.
    if (server_)
        g_io_stream_close(G_IO_STREAM(server_.get()), nullptr, nullptr);
    g_io_stream_close(G_IO_STREAM(page_.get()), nullptr, nullptr);
}

// -------------------------------------------------------------------------------------------------------------- SOCKS

bool PageTunnel::read(unsigned char* to, std::size_t count)
{
    gsize got = 0;
    GInputStream* stream = g_io_stream_get_input_stream(G_IO_STREAM(page_.get()));
    return g_input_stream_read_all(stream, to, count, &got, stop_.get(), nullptr) && got == count;
}

bool PageTunnel::write(const unsigned char* bytes, std::size_t count)
{
    GOutputStream* stream = g_io_stream_get_output_stream(G_IO_STREAM(page_.get()));
    return g_output_stream_write_all(stream, bytes, count, nullptr, stop_.get(), nullptr);
}

bool PageTunnel::log_in()
{
    std::array<unsigned char, 255> bytes{};
    const auto read_text = [&](std::string& text) {
        unsigned char length = 0;
        if (!read(&length, 1) || !read(bytes.data(), length))
            return false;
        text.assign(reinterpret_cast<const char*>(bytes.data()), length);
        return true;
    };
    std::array<unsigned char, 1> version{};
    std::string methods;
    if (!read(version.data(), 1) || version[0] != Version || !read_text(methods))
        return false;
    const bool takes_password = methods.find(static_cast<char>(WithPassword)) != std::string::npos;
    const std::array<unsigned char, 2> method{Version, takes_password ? WithPassword : NoMethod};
    if (!write(method.data(), method.size()) || !takes_password)
        return false;
    std::string user;
    std::string password;
    if (!read(version.data(), 1) || version[0] != LoginVersion || !read_text(user) || !read_text(password))
        return false;
    const bool known = is_same(user, rules_.user) && is_same(password, rules_.password);
    const std::array<unsigned char, 2> verdict{LoginVersion, static_cast<unsigned char>(known ? 0 : 1)};
    return write(verdict.data(), verdict.size()) && known;
}

PageTunnel::Asked PageTunnel::read_request()
{
    std::array<unsigned char, 4> head{};
    if (!read(head.data(), head.size()) || head[0] != Version)
        return {};
    std::array<unsigned char, 256> host{};
    std::size_t length = head[3] == Ip4 ? 4 : head[3] == Ip6 ? 16 : 0;
    if (head[3] == Name) {
        unsigned char of_name = 0;
        if (!read(&of_name, 1))
            return {};
        length = of_name;
    }
    std::array<unsigned char, 2> port_bytes{};
    if (length == 0 || head[1] != Connect) {
        answer_request(head[1] != Connect ? UnknownCommand : UnknownAddress);
        return {};
    }
    if (!read(host.data(), length) || !read(port_bytes.data(), port_bytes.size()))
        return {};
    const auto port = static_cast<guint16>((port_bytes[0] << 8) | port_bytes[1]);
    if (head[3] == Name) {
        const std::string name(reinterpret_cast<const char*>(host.data()), length);
        if (name.find('\0') == std::string::npos)
            return {adopt(g_network_address_new(name.c_str(), port)), name + ":" + std::to_string(port)};
        answer_request(UnknownAddress);
        return {};
    }
    const auto ip =
        adopt(g_inet_address_new_from_bytes(host.data(), head[3] == Ip4 ? G_SOCKET_FAMILY_IPV4 : G_SOCKET_FAMILY_IPV6));
    GSocketAddress* address = g_inet_socket_address_new(ip.get(), port);
    return {adopt(G_SOCKET_CONNECTABLE(address)), text_of(address)};
}

void PageTunnel::answer_request(unsigned char status)
{
    // The bound address (BND.ADDR) is left zero: pages do not use it.
    const std::array<unsigned char, 10> answer{Version, status, 0, Ip4};
    write(answer.data(), answer.size());
}

// ------------------------------------------------------------------------------------------------------------- Server

/// Called just before a connection is made. Closing the socket refuses an address that lies too far inside; the next
/// address of the name is tried.
void PageTunnel::connecting(GSocketConnection* server, PageTunnel* tunnel)
{
    const auto address = adopt(g_socket_connection_get_remote_address(server, nullptr));
    tunnel->zone_ = zone_of(address.get());
    if (tunnel->zone_ > tunnel->rules_.reach) {
        tunnel->refused_ = text_of(address.get());
        g_socket_close(g_socket_connection_get_socket(server), nullptr);
    }
}

bool PageTunnel::connect(const Asked& asked)
{
    const auto client = adopt(g_socket_client_new());
    g_socket_client_set_enable_proxy(client.get(), FALSE);
    g_socket_client_set_timeout(client.get(), ConnectingPatience);
    g_signal_connect(client.get(), "event",
                     G_CALLBACK(+[](GSocketClient*, GSocketClientEvent event, GSocketConnectable*, GIOStream* stream,
                                    PageTunnel* tunnel) {
                         if (event == G_SOCKET_CLIENT_CONNECTING)
                             connecting(G_SOCKET_CONNECTION(stream), tunnel);
                     }),
                     this);
    server_ = adopt(g_socket_client_connect(client.get(), asked.target.get(), stop_.get(), nullptr));
    // The reach may have been reduced meanwhile.
    const bool connected = server_ && zone_ <= rules_.reach;
    if (!connected && !refused_.empty())
        rules_.on_refusal(asked.where == refused_ ? asked.where : asked.where + ", which is " + refused_);
    answer_request(connected ? Succeeded : refused_.empty() ? Unreachable : NotAllowed);
    return connected;
}

void PageTunnel::relay()
{
    GSocket* const page = g_socket_connection_get_socket(page_.get());
    GSocket* const server = g_socket_connection_get_socket(server_.get());
    const int page_fd = g_socket_get_fd(page);
    const int server_fd = g_socket_get_fd(server); // GSocket's descriptors are always non-blocking
    GPollFD stop{};
    if (!g_cancellable_make_pollfd(stop_.get(), &stop))
        return;
    Way up(page_fd, server_fd);
    Way down(server_fd, page_fd);
    while (!(up.is_over() && down.is_over())) {
        std::array<pollfd, 3> ends{{{page_fd, static_cast<short>(up.wants_from() | down.wants_to()), 0},
                                    {server_fd, static_cast<short>(down.wants_from() | up.wants_to()), 0},
                                    {stop.fd, POLLIN, 0}}};
        // Otherwise poll() would report the hang-up of a side that no transfer waits for again and again.
        for (pollfd& end : ends)
            if (end.events == 0)
                end.fd = -1;
        if (poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR)
            break;
        if (ends[2].revents != 0 || !up.move() || !down.move())
            break;
    }
    g_cancellable_release_fd(stop_.get());
}

} // namespace qoro
