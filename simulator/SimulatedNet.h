#pragma once

#include "platform/Ports.h"
#include "session/World.h"

#include <cstddef>

namespace qoro
{

class VirtualLoop;

/// Answers addresses as the world says.
class SimulatedNet final : public Fetcher
{
public:
    SimulatedNet(VirtualLoop& loop, const World& world) : loop_(loop), world_(world) {}

    void fetch(const std::string& address, FetchKind, std::function<void(FetchAnswer)> answer) override;
    /// At once, whatever delay the address has; the delay is added to blocked_seconds().
    FetchAnswer fetch_now(const std::string& address) override;

    /// How long a real main thread would have waited for synchronous fetches.
    double blocked_seconds() const { return blocked_seconds_; }
    /// How many requests wait for their answer.
    std::size_t pending() const { return pending_; }

private:
    VirtualLoop& loop_;
    const World& world_;
    double blocked_seconds_ = 0;
    std::size_t pending_ = 0;
};

/// Holds the copies that the world says.
class SimulatedVideoCache final : public VideoCacheStore
{
public:
    explicit SimulatedVideoCache(const World& world) : world_(world) {}
    NSString path_for(const NSString& address) override;

private:
    const World& world_;
};

} // namespace qoro
