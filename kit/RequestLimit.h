#pragma once

#include "kit/MessageBudget.h"
#include "platform/Ports.h"
#include "platform/Purposes.h"

#include <cstdint>
#include <string>

namespace qoro
{

/// Limits the requests of one ad. Heartbeats are limited by rate, because a tiny interval would drain the viewer's
/// bandwidth and battery: a burst of 20, then 20 a second. All other requests are limited by number: 20,000.
///
/// Refusals are reported as events: the first at once, then at most one line a second, each with the number of
/// refusals that it covers. Only refusals within an ad's last second may go unreported.
class RequestLimit
{
public:
    explicit RequestLimit(Platform& platform) : platform_(platform) {}
    ~RequestLimit();
    RequestLimit(const RequestLimit&) = delete;
    RequestLimit& operator=(const RequestLimit&) = delete;

    /// Counts a request.
    /// @return null when it is permitted; otherwise a one-line reason with static storage duration
    const char* refusal(const std::string& address, RequestPurpose purpose);

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    static constexpr double HeartbeatsAtOnce = 20;
    static constexpr double HeartbeatsPerSecond = 20;
    static constexpr std::int64_t MostOthers = 20'000;
    /// Minimum seconds between lines.
    static constexpr double BetweenLines = 1;

    void refused(const std::string& address, const char* why);
    void report();

    Platform& platform_;
    MessageBudget heartbeats_{HeartbeatsAtOnce, HeartbeatsPerSecond};
    std::int64_t others_ = 0;

    // Content of the next line: address and reason of the first refusal that it covers.
    std::string address_;
    const char* why_ = "";
    std::int64_t unreported_ = 0;
    double next_line_ = 0;
    /// Runs while a refusal is unreported.
    TimerId line_ = 0;
};

} // namespace qoro
