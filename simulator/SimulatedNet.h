#pragma once

#include "formats/AddressPattern.h"
#include "formats/World.h"
#include "platform/Ports.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{

class VirtualLoop;

/// Answers requests as the world defines. A macro in one of its addresses, such as [CACHEBUSTING], matches any value.
class SimulatedNet final : public Fetcher
{
public:
    SimulatedNet(VirtualLoop& loop, const World& world);

    void fetch(const std::string& address, FetchKind, std::function<void(FetchAnswer)> answer) override;
    /// Answers immediately, whatever the address's delay; the delay is added to blocked_seconds().
    FetchAnswer fetch_now(const std::string& address) override;

    /// From now on the answers of a server, also those that are awaited, are failures.
    /// @param server "https://ads.example"; "*" for every server
    /// @param failure absent: it answers again
    void change_server(const std::string& server, const std::optional<std::string>& failure);

    /// Seconds that a real main thread would have been blocked by synchronous fetches.
    double blocked_seconds() const { return blocked_seconds_; }
    /// Number of requests without an answer yet.
    std::size_t pending() const { return pending_; }

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    /// The work of the main loop.
    struct Due {
        SimulatedNet* net;
        std::string address;
        FetchKind kind;
        const NetAnswer* named;
        std::function<void(FetchAnswer)> answer;
        void operator()() const;
    };
    const NetAnswer& find(const std::string& address) const;
    /// What arrives now.
    FetchAnswer answer_of(const NetAnswer& named, const std::string& address) const;

    VirtualLoop& loop_;
    const World& world_;
    /// The addresses with macros.
    std::vector<std::pair<AddressPattern, const NetAnswer*>> patterns_;
    /// Why, by server.
    std::map<std::string, std::string, std::less<>> failing_;
    double blocked_seconds_ = 0;
    std::size_t pending_ = 0;
};

/// Holds the copies that the world defines.
class SimulatedVideoCache final : public VideoCacheStore
{
public:
    explicit SimulatedVideoCache(const World& world) : world_(world) {}
    NSString path_for(const NSString& address) override;

private:
    const World& world_;
};

} // namespace qoro
