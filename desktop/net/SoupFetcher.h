#pragma once

#include "platform/Ports.h"

#include <memory>

namespace qoro
{

/// Fetches over HTTP with libsoup, on a thread and session of its own, so that a fetch for which the main thread waits
/// and those in the background share connections, and neither holds the other up. Redirects are followed. A status of
/// 400 or more, a body above the bound and a server that takes too long are failures.
class SoupFetcher : public Fetcher
{
public:
    struct Limits {
        /// Seconds for a fetch from its start to the end of its body.
        double background_seconds = 10;
        /// The same while the main thread waits.
        double waiting_seconds = 5;
        /// Bytes.
        std::size_t body = 16u << 20;
    };

    /// @param loop gets the answers; its post() must take them from any thread, and it outlives the fetcher
    explicit SoupFetcher(MainLoop& loop);
    SoupFetcher(MainLoop& loop, const Limits& limits);
    /// What is under way is broken off; its answers never come.
    ~SoupFetcher() override;

    void fetch(const std::string& address, std::function<void(FetchAnswer)> answer) override;
    FetchAnswer fetch_now(const std::string& address) override;

    /// Lets go of everyone who waits for an answer.
    void abandon();
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
