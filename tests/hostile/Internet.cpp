#include "tests/hostile/Internet.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <net/ethernet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace qoro::test
{

namespace
{

constexpr int Port = 80;
/// Milliseconds between two checks whether this object is being destroyed.
constexpr int Glance = 100;
constexpr std::size_t Ipv4Head = 20;
constexpr std::size_t Ipv6Head = 40;
/// Flag bits of a TCP segment (RFC 9293, section 3.1): the first segment of a connection has SYN without ACK.
constexpr int Syn = 0x02;
constexpr int Ack = 0x10;

/// The address in text form; an IPv4-mapped one as plain IPv4 (RFC 4291, section 2.5.5.2).
std::string text_of(const in6_addr& address)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(AF_INET6, &address, text.data(), text.size());
    const std::string name = text.data();
    return name.starts_with("::ffff:") ? name.substr(7) : name;
}

void send_all(int connection, const std::string& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

bool comes_soon(int from)
{
    pollfd waits{from, POLLIN, 0};
    return poll(&waits, 1, Glance) > 0;
}

} // namespace

Internet::Internet()
{
    listener_ = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in6 any{};
    any.sin6_family = AF_INET6;
    any.sin6_port = htons(Port);
    if (bind(listener_, reinterpret_cast<sockaddr*>(&any), sizeof any) != 0 || listen(listener_, 64) != 0)
        throw std::runtime_error("no server on port 80");
    packets_ = socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, htons(ETH_P_ALL));
    if (packets_ < 0)
        throw std::runtime_error("no look at the packets");
    threads_.emplace_back([this] { accept_all(); });
    threads_.emplace_back([this] { watch_packets(); });
}

Internet::~Internet()
{
    closing_ = true;
    for (std::thread& thread : threads_)
        thread.join();
    close(listener_);
    close(packets_);
}

void Internet::serve(const std::string& path, Answer answer)
{
    const std::scoped_lock lock(mutex_);
    answers_.insert_or_assign(path, std::move(answer));
}

std::vector<std::string> Internet::asked() const
{
    const std::scoped_lock lock(mutex_);
    return asked_;
}

bool Internet::was_asked(const std::string& beginning) const
{
    return std::ranges::any_of(asked(), [&](const std::string& one) { return one.starts_with(beginning); });
}

std::set<std::string> Internet::contacted() const
{
    const std::scoped_lock lock(mutex_);
    return contacted_;
}

// --------------------------------------------------------------------------------------------------------------- HTTP

void Internet::accept_all()
{
    // One connection at a time: a silent client is dropped after a glance.
    while (!closing_) {
        if (!comes_soon(listener_))
            continue;
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            continue;
        talk(connection);
        close(connection);
    }
}

void Internet::talk(int connection)
{
    std::string request;
    std::array<char, 4096> piece;
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = comes_soon(connection) ? recv(connection, piece.data(), piece.size(), 0) : 0;
        if (count <= 0)
            return;
        request.append(piece.data(), static_cast<std::size_t>(count));
    }
    sockaddr_in6 here{};
    socklen_t size = sizeof here;
    getsockname(connection, reinterpret_cast<sockaddr*>(&here), &size);
    const std::size_t begin = request.find(' ') + 1;
    const std::string path = request.substr(begin, request.find(' ', begin) - begin);
    Answer answer{.body = "there is no such thing", .type = "text/plain", .status = 404, .head = ""};
    {
        const std::scoped_lock lock(mutex_);
        asked_.push_back(text_of(here.sin6_addr) + path);
        if (const auto found = answers_.find(path); found != answers_.end())
            answer = found->second;
    }
    send_all(connection, "HTTP/1.1 " + std::to_string(answer.status) + " As asked\r\nContent-Type: " + answer.type +
                             "\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\nConnection: close\r\n" +
                             answer.head + "\r\n" + answer.body);
}

// ----------------------------------------------------------------------------------------------------- packet capture

void Internet::watch_packets()
{
    std::array<unsigned char, 128> packet;
    while (!closing_) {
        if (!comes_soon(packets_))
            continue;
        const ssize_t length = recv(packets_, packet.data(), packet.size(), 0);
        if (length > 0)
            note_packet(packet.data(), static_cast<std::size_t>(length));
    }
}

void Internet::note_packet(const unsigned char* packet, std::size_t length)
{
    const bool four = packet[0] >> 4 == 4;
    const std::size_t head = four ? std::size_t{4} * (packet[0] & 15) : Ipv6Head;
    if (length < std::max(head, Ipv4Head) + 14)
        return;
    const int protocol = four ? packet[9] : packet[6];
    const unsigned char* const rest = packet + head;
    const bool begins = protocol == IPPROTO_TCP && (rest[13] & (Syn | Ack)) == Syn;
    if (!begins && protocol != IPPROTO_UDP)
        return;
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(four ? AF_INET : AF_INET6, packet + (four ? 16 : 24), text.data(), text.size());
    const std::string address = text.data();
    if (address.starts_with("127.") || address == "::1")
        return;
    const std::string port = std::to_string(256 * rest[2] + rest[3]);
    const std::scoped_lock lock(mutex_);
    contacted_.insert((four ? address : "[" + address + "]") + ":" + port);
}

} // namespace qoro::test
