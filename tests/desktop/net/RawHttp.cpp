#include "tests/desktop/net/RawHttp.h"

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace qoro::test
{

namespace
{
sockaddr_in local(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool send_all(int socket, const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t now = ::send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (now <= 0)
            return false;
        sent += static_cast<std::size_t>(now);
    }
    return true;
}

std::string receive_until(int socket, const std::string& mark)
{
    std::string got;
    std::array<char, 4096> piece;
    while (mark.empty() || got.find(mark) == std::string::npos) {
        const ssize_t now = recv(socket, piece.data(), piece.size(), 0);
        if (now <= 0)
            break;
        got.append(piece.data(), static_cast<std::size_t>(now));
    }
    return got;
}
} // namespace

std::string converse(int port, const std::string& request)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = local(port);
    std::string answer;
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && send_all(socket, request))
        answer = receive_until(socket, "");
    close(socket);
    return answer;
}

int port_of(const std::string& base)
{
    return std::stoi(base.substr(base.rfind(':') + 1));
}

bool RawServer::Connection::send(const std::string& bytes) const
{
    return send_all(socket_, bytes);
}

std::string RawServer::Connection::next_head() const
{
    return receive_until(socket_, "\r\n\r\n");
}

void RawServer::Connection::wait_for_close() const
{
    receive_until(socket_, "");
}

RawServer::RawServer(Answer answer, bool everywhere)
    : answer_(std::move(answer)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address = local(0);
    if (everywhere)
        address.sin_addr.s_addr = htonl(INADDR_ANY);
    socklen_t size = sizeof address;
    bind(listener_, reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    listen(listener_, 64);
    acceptor_ = std::thread([this] { accept_all(); });
}

RawServer::~RawServer()
{
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    close(listener_);
}

void RawServer::accept_all()
{
    std::vector<std::pair<int, std::thread>> served;
    for (;;) {
        const int socket = accept(listener_, nullptr, nullptr);
        if (socket < 0)
            break;
        ++connections_;
        served.emplace_back(socket, std::thread([this, socket] {
                                answer_(receive_until(socket, "\r\n\r\n"), Connection(socket));
                                shutdown(socket, SHUT_RDWR);
                            }));
    }
    for (auto& [socket, thread] : served) {
        shutdown(socket, SHUT_RDWR);
        thread.join();
        close(socket);
    }
}

} // namespace qoro::test
