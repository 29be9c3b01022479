#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace qoro::test
{

/// A stand-in for every server in a process's own network namespace (OwnNetwork.h). Answers HTTP on port 80 of every
/// address, including this machine's, and records contacts on all ports.
class Internet
{
public:
    struct Answer {
        std::string body = {};
        std::string type = "text/html";
        int status = 200;
        /// Header lines, each with its line end.
        std::string head = {};
    };

    Internet();
    ~Internet();
    Internet(const Internet&) = delete;
    Internet& operator=(const Internet&) = delete;

    /// Sets the answer for a path on every address. Other paths answer 404.
    void serve(const std::string& path, Answer answer);
    /// The requests so far, with repeats: "203.0.113.1/page.html".
    std::vector<std::string> asked() const;
    /// Whether any request starts with a prefix.
    bool was_asked(const std::string& beginning) const;
    /// Destinations of connection attempts and datagrams: "203.0.113.1:80", "[2001:db8::1]:443". Excludes 127/8, which
    /// the ad's own server and this one use.
    std::set<std::string> contacted() const;

private:
    void accept_all();
    void talk(int connection);
    void watch_packets();
    void note_packet(const unsigned char* packet, std::size_t length);

    int listener_ = -1;
    int packets_ = -1;
    mutable std::mutex mutex_;
    std::map<std::string, Answer> answers_;
    std::vector<std::string> asked_;
    std::set<std::string> contacted_;
    std::atomic<bool> closing_ = false;
    std::vector<std::thread> threads_;
};

} // namespace qoro::test
