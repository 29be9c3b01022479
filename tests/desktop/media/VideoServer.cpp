#include "VideoServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>

namespace qoro::test
{

VideoServer::VideoServer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in here{};
    here.sin_family = AF_INET;
    here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof here;
    if (bind(listener_, reinterpret_cast<sockaddr*>(&here), size) != 0 || listen(listener_, 16) != 0)
        throw std::runtime_error("no port of this machine could be had");
    getsockname(listener_, reinterpret_cast<sockaddr*>(&here), &size);
    port_ = ntohs(here.sin_port);
    thread_ = std::thread([this] { accept_all(); });
}

VideoServer::~VideoServer()
{
    {
        std::scoped_lock lock(mutex_);
        closing_ = true;
        changed_.notify_all();
        for (const int connection : connections_)
            shutdown(connection, SHUT_RDWR);
    }
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return talking_ == 0; });
}

void VideoServer::serve(const std::string& path, Answer answer)
{
    serve_in_turn(path, {std::move(answer)});
}

void VideoServer::serve_in_turn(const std::string& path, std::vector<Answer> answers)
{
    std::scoped_lock lock(mutex_);
    answers_[path] = std::move(answers);
}

std::string VideoServer::address(const std::string& path) const
{
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void VideoServer::serve_others(Answer answer)
{
    std::scoped_lock lock(mutex_);
    others_ = std::move(answer);
}

std::vector<std::string> VideoServer::paths()
{
    std::scoped_lock lock(mutex_);
    return paths_;
}

void VideoServer::release()
{
    std::scoped_lock lock(mutex_);
    released_ = true;
    changed_.notify_all();
}

void VideoServer::accept_all()
{
    for (;;) {
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            return;
        std::scoped_lock lock(mutex_);
        connections_.insert(connection);
        ++talking_;
        std::thread([this, connection] {
            talk(connection);
            std::scoped_lock inner(mutex_);
            connections_.erase(connection);
            close(connection);
            --talking_;
            changed_.notify_all();
        }).detach();
    }
}

bool VideoServer::send_all(int connection, const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

void VideoServer::talk(int connection)
{
    std::string request;
    char buffer[4096];
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
        if (count <= 0)
            return;
        request.append(buffer, static_cast<std::size_t>(count));
    }
    ++requests_;
    const std::size_t path_at = request.find(' ') + 1;
    const std::string path = request.substr(path_at, request.find(' ', path_at) - path_at);
    Answer answer;
    std::unique_lock lock(mutex_);
    paths_.push_back(path);
    if (const auto found = answers_.find(path); found != answers_.end()) {
        answer = found->second.front();
        if (found->second.size() > 1)
            found->second.erase(found->second.begin());
    } else {
        answer = others_;
    }
    if (answer.resets) {
        const linger at_once{.l_onoff = 1, .l_linger = 0};
        setsockopt(connection, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        return;
    }
    if (answer.silent) {
        changed_.wait(lock, [this] { return closing_; });
        return;
    }
    lock.unlock();

    std::size_t from = 0;
    const bool part = answer.knows_ranges && request.find("Range: bytes=") != std::string::npos && answer.status == 200;
    if (part)
        from = std::min<std::size_t>(std::strtoul(request.c_str() + request.find("Range: bytes=") + 13, nullptr, 10),
                                     answer.body.size());
    const std::string all = std::to_string(answer.body.size());
    std::string head = "HTTP/1.1 " + std::to_string(part ? 206 : answer.status) + " As asked\r\nContent-Type: ";
    head += answer.type + "\r\nContent-Length: " + std::to_string(answer.body.size() - from);
    head += std::string("\r\nAccept-Ranges: ") + (answer.knows_ranges ? "bytes" : "none") + "\r\nConnection: close\r\n";
    if (part)
        head += "Content-Range: bytes " + std::to_string(from) + "-" + std::to_string(answer.body.size() - 1) + "/" +
                all + "\r\n";
    if (!send_all(connection, head + "\r\n"))
        return;
    const std::size_t breaks_at =
        answer.breaks_after == VideoServer::Never ? VideoServer::Never : from + answer.breaks_after;
    const std::size_t until =
        std::max(from, std::min({answer.holds_at, answer.cuts_at, breaks_at, answer.body.size()}));
    if (!send_all(connection, answer.body.substr(from, until - from)) || until == answer.body.size())
        return;
    if (answer.holds_at == Never)
        return;
    lock.lock();
    changed_.wait(lock, [this] { return released_ || closing_; });
    lock.unlock();
    const std::size_t end = std::min(answer.cuts_at, answer.body.size());
    if (until < end)
        send_all(connection, answer.body.substr(until, end - until));
}

} // namespace qoro::test
