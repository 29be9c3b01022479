#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <string>

namespace qoro
{

/// Fetches over HTTP with libsoup, on its own thread and session. Fetches that block the main thread and fetches in the
/// background share connections, and neither delays the other.
///
/// A fetch is sent at once unless its host, or the fetcher, has reached its maximum of pending fetches. Then it is
/// queued, and its time limit starts when it is sent. A fetch that blocks the main thread is never queued.
///
/// Each request is sent at most once: a tracker that is repeated after the server closed the connection without an
/// answer might be counted twice. Connections that were idle for a few seconds are not reused, so that a request rarely
/// meets a server that is about to close one; servers use longer time-outs.
///
/// A page is requested a second time, after a short pause, when its server fails: status 500 or above, a broken
/// connection, or a time-out. The caller still receives one answer.
///
/// Redirects are followed, at most twenty, and none may lead further inside than allowed (Reach.h). Cookies last as
/// long as the fetcher: a server can relate the requests of a session, and no data of the viewer remains when the
/// program has ended.
///
/// A status of 400 or above, a body above the limit and a time-out are failures.
class SoupFetcher : public Fetcher
{
public:
    /// Time, size and concurrency limits.
    struct Limits {
        /// Seconds from sending a fetch to the end of its body.
        double background_seconds = 10;
        /// The same, for a fetch that blocks the main thread.
        double waiting_seconds = 5;
        /// Seconds from a page's failure to its second request.
        double page_pause = 0.5;
        /// Maximum length of a body, in bytes.
        std::size_t body = 16u << 20;
        /// Maximum number of pending fetches per host. High, because simultaneous trackers go to one host and must not
        /// wait for each other.
        int per_host = 64;
        /// Whole seconds after which an idle connection is not reused.
        unsigned idle_seconds = 4;
        /// Maximum number of pending fetches in total: eight unresponsive hosts must not block a ninth. Each uses a
        /// file descriptor.
        int in_all = 576;
    };

    /// @param loop receives the answers; its post() must accept calls from any thread; must outlive the fetcher
    explicit SoupFetcher(MainLoop& loop);
    SoupFetcher(MainLoop& loop, const Limits& limits);
    /// Cancels pending fetches; their answers are never delivered.
    ~SoupFetcher() override;

    void fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer) override;
    FetchAnswer fetch_now(const std::string& address) override;

    /// Receives the address of a page that failed and the reason, before the page's answer is delivered. May be empty.
    std::function<void(const std::string& address, const std::string& reason)> on_page_failure;

    /// As on_page_failure, for a picture, inside fetch_now().
    std::function<void(const std::string& address, const std::string& reason)> on_image_failure;

    /// Discards the callbacks of all pending fetches; the fetches continue.
    void abandon();
    /// Blocks until nothing is pending.
    /// @param seconds maximum time to wait
    void finish(double seconds);
    /// Number of fetches whose answer has not been delivered.
    std::size_t pending() const;

private:
    struct Waiting;
    class Worker;

    MainLoop& loop_;
    const Limits limits_;
    /// Callbacks of pending fetches, by number; only touched by the main thread.
    std::shared_ptr<Waiting> waiting_;
    std::unique_ptr<Worker> worker_;
};

} // namespace qoro
