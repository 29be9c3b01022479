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

/// Every server of the world, for a process in a network of its own (OwnNetwork.h): it answers HTTP on port 80 of each
/// address, of this machine's own too, and sees who is asked for what, on whatever port.
class Internet
{
public:
    struct Answer {
        std::string body = {};
        std::string type = "text/html";
        int status = 200;
        /// Lines of the head, each with its end.
        std::string head = {};
    };

    Internet();
    ~Internet();
    Internet(const Internet&) = delete;
    Internet& operator=(const Internet&) = delete;

    /// What a path answers, on every address; any other is not found.
    void serve(const std::string& path, Answer answer);
    /// What has been asked for so far: "203.0.113.1/page.html", each time that it was.
    std::vector<std::string> asked() const;
    /// Whether anything was asked for that begins so.
    bool was_asked(const std::string& beginning) const;
    /// To whom the first packet of a connection went, or a datagram: "203.0.113.1:80", "[2001:db8::1]:443". Addresses
    /// of 127/8 are left out, as the ad's own server and this one's neighbours talk there.
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
