#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <string>

namespace qoro
{

/// Fetches over HTTP with libsoup, on a thread and session of its own, so that a fetch for which the main thread waits
/// and those in the background share connections, and neither holds the other up.
///
/// A fetch goes out at once unless its host is busy with as many as it may have; then it waits for one of these, and
/// its time begins when it goes out. One for which the main thread waits goes before all others.
///
/// Each request goes out at most once: a tracker that is sent again when a server has hung up without a word may be
/// counted twice. So that a server's ordinary hanging up meets no request, a connection that was idle for a few seconds
/// is not used again; servers wait longer.
///
/// A page is asked for once more, after a short pause, when its server fails: a status of 500 and more, a connection
/// that breaks, no answer in time. It is one fetch with one answer all the same.
///
/// Redirects are followed, twenty at most, and nothing goes further inside than it may (Reach.h). Cookies are kept as
/// long as the fetcher lives, so that a server can tell that the requests of a session belong together, and nothing of
/// the viewer is left when the program has ended.
///
/// A status of 400 or more, a body above the bound and a server that takes too long are failures.
class SoupFetcher : public Fetcher
{
public:
    struct Limits {
        /// Seconds for a fetch from its going out to the end of its body.
        double background_seconds = 10;
        /// The same while the main thread waits.
        double waiting_seconds = 5;
        /// Seconds from a page's failure until it is asked for once more.
        double page_pause = 0.5;
        /// Bytes.
        std::size_t body = 16u << 20;
        /// Fetches that one host may have under way. Trackers of one moment go to one host together, and none is to
        /// wait for another.
        int per_host = 64;
        /// Whole seconds after which a connection that is idle is not used again.
        unsigned idle_seconds = 4;
        /// Fetches under way in all: eight hosts that answer nothing do not keep out a ninth. Each is an open
        /// file.
        int in_all = 576;
    };

    /// @param loop gets the answers; its post() must take them from any thread, and it outlives the fetcher
    explicit SoupFetcher(MainLoop& loop);
    SoupFetcher(MainLoop& loop, const Limits& limits);
    /// What is under way is broken off; its answers never come.
    ~SoupFetcher() override;

    void fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer) override;
    FetchAnswer fetch_now(const std::string& address) override;

    /// Hears of a page that does not come, ahead of its answer: its address and the reason. May be empty.
    std::function<void(const std::string& address, const std::string& reason)> on_page_failure;

    /// Lets go of everyone who waits for an answer; what is under way goes on.
    void abandon();
    /// Waits until nothing is under way any more.
    /// @param seconds how long at most
    void finish(double seconds);
    /// How many fetches have not been answered yet.
    std::size_t pending() const;

private:
    struct Waiting;
    class Worker;

    MainLoop& loop_;
    const Limits limits_;
    /// Answers that are still to come, by number; touched by the main thread alone.
    std::shared_ptr<Waiting> waiting_;
    std::unique_ptr<Worker> worker_;
};

} // namespace qoro
