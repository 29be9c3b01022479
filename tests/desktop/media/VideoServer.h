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

/// An HTTP server on 127.0.0.1 that can stall, stay silent, or break off. Each connection has a thread.
class VideoServer
{
public:
    static constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

    /// How a path is answered.
    struct Answer {
        std::string body;
        int status = 200;
        std::string type = "video/mp4";
        /// Offset in the body at which it stops sending until release().
        std::size_t holds_at = Never;
        /// Offset in the body at which it closes the connection.
        std::size_t cuts_at = Never;
        /// Number of body bytes after which it closes a connection, whatever the start offset.
        std::size_t breaks_after = Never;
        /// Whether it supports range requests.
        bool knows_ranges = true;
        /// Whether it accepts the request and never answers.
        bool silent = false;
        /// Whether it accepts the request and resets the connection.
        bool resets = false;
    };

    VideoServer();
    ~VideoServer();
    VideoServer(const VideoServer&) = delete;
    VideoServer& operator=(const VideoServer&) = delete;

    void serve(const std::string& path, Answer answer);
    /// Gives each request for the path the next answer; the last answer repeats.
    void serve_in_turn(const std::string& path, std::vector<Answer> answers);
    /// Answers all other paths, which otherwise get status 404.
    void serve_others(Answer answer);
    std::string address(const std::string& path) const;
    /// Resumes all answers that are held at `holds_at`, and holds no further ones.
    void release();
    /// The number of requests so far, for all paths.
    int requests() const { return requests_; }
    /// The paths of all requests so far, with their queries, oldest first.
    std::vector<std::string> paths();

private:
    void accept_all();
    void talk(int connection);
    bool send_all(int connection, const std::string& bytes);

    int listener_ = -1;
    int port_ = 0;
    std::atomic<int> requests_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    /// The remaining answers by path.
    std::map<std::string, std::vector<Answer>> answers_;
    Answer others_{.body = {}, .status = 404};
    std::vector<std::string> paths_;
    std::set<int> connections_;
    int talking_ = 0;
    bool released_ = false;
    bool closing_ = false;
    std::thread thread_;
};

} // namespace qoro::test
