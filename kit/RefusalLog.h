#pragma once

#include "kit/LineLimit.h"
#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

class Platform;

/// Limits the trace lines about refusals: a burst of 100 lines, then one a second. Each line carries the number of
/// refusals that it covers, so that a page which floods the ad does not flood the trace.
class RefusalLog
{
public:
    /// Counts a refusal.
    /// @param now monotonic time in seconds
    /// @return the number of refusals that a line written now covers; absent when no line is due
    std::optional<std::int64_t> count(double now) { return lines_.count(now); }
    /// Counts a refusal of a web view and reports it if a line is due.
    /// @param kind what was refused, in one word
    void report(Platform& platform, const std::string& kind, const std::string& detail);
    /// Truncates a text from a page to 1000 bytes.
    static std::string shortened(const std::string& detail);

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    LineLimit lines_{100, 1};
};

} // namespace qoro
