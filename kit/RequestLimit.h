#pragma once

#include "kit/MessageBudget.h"
#include "platform/Ports.h"

#include <cstdint>
#include <string>

namespace qoro
{

/// How many addresses one ad may have fetched. A heartbeat with a tiny interval drains the viewer's line and battery,
/// so heartbeats are bounded in time: twenty at once, and twenty a second in the long run. Everything else is bounded
/// by its sum: 20,000.
///
/// It reports refusals to the witness: one line at once, and at most one a second, each with the number of refusals
/// that it reports. No refusal is left out, but for those of an ad's last second.
class RequestLimit
{
public:
    explicit RequestLimit(Platform& platform) : platform_(platform) {}
    ~RequestLimit();
    RequestLimit(const RequestLimit&) = delete;
    RequestLimit& operator=(const RequestLimit&) = delete;

    /// One more request.
    /// @param heartbeat whether the tracking timer makes it, with the ad's own interval
    /// @return null when it may go out; else one line that says why not, as long as the program runs
    const char* refusal(const std::string& address, bool heartbeat);

private:
    static constexpr double HeartbeatsAtOnce = 20;
    static constexpr double HeartbeatsPerSecond = 20;
    static constexpr std::int64_t MostOthers = 20'000;
    /// Seconds from one line to the next.
    static constexpr double BetweenLines = 1;

    void refused(const std::string& address, const char* why);
    void tell();

    Platform& platform_;
    MessageBudget heartbeats_{HeartbeatsAtOnce, HeartbeatsPerSecond};
    std::int64_t others_ = 0;

    // What the next line says; of the first refusal that it reports.
    std::string address_;
    const char* why_ = "";
    std::int64_t untold_ = 0;
    double next_line_ = 0;
    /// Runs while something is untold.
    TimerId line_ = 0;
};

} // namespace qoro
