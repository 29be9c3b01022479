#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace qoro::test
{

/// An HTTP server on 127.0.0.1 that can be slow, silent, or gone in the middle.
class VideoServer
{
public:
    static constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

    struct Answer {
        std::string body;
        int status = 200;
        std::string type = "video/mp4";
        /// Byte of the body at which it stops sending until release().
        std::size_t holds_at = Never;
        /// Byte of the body at which it hangs up.
        std::size_t cuts_at = Never;
        /// Bytes of the body after which each connection ends, wherever it began.
        std::size_t breaks_after = Never;
        /// Whether it can begin elsewhere than at the first byte.
        bool knows_ranges = true;
        /// Whether it takes the request and never says a word.
        bool silent = false;
        /// Whether it takes the request and resets the connection.
        bool resets = false;
    };

    VideoServer();
    ~VideoServer();
    VideoServer(const VideoServer&) = delete;
    VideoServer& operator=(const VideoServer&) = delete;

    void serve(const std::string& path, Answer answer);
    /// Gives each request for the path the next answer; the last one stays.
    void serve_in_turn(const std::string& path, std::vector<Answer> answers);
    std::string address(const std::string& path) const;
    /// Lets what is held go on.
    void release();
    /// How many requests came for everything.
    int requests() const { return requests_; }

private:
    void accept_all();
    void talk(int connection);
    bool send_all(int connection, const std::string& bytes);

    int listener_ = -1;
    int port_ = 0;
    std::atomic<int> requests_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    /// By path: those that are still to be given.
    std::map<std::string, std::vector<Answer>> answers_;
    std::set<int> connections_;
    int talking_ = 0;
    bool released_ = false;
    bool closing_ = false;
    std::thread thread_;
};

} // namespace qoro::test
