#pragma once

#include "kit/MessageBudget.h"

#include <cstdint>
#include <optional>
#include <string>

namespace qoro
{

class Platform;

/// How much of what a page is refused is written down: a hundred lines at once and one a second in the long run, each
/// of which tells how many refusals it stands for. A page that floods its ad does not flood the trace.
class RefusalLog
{
public:
    /// One more refusal, at a moment in seconds that only grow.
    /// @return for how many a line stands that is to be written now; absent when none is
    std::optional<std::int64_t> count(double now);
    /// One more refusal of a web view, for a line of its own unless there are too many.
    /// @param kind of what was refused, in a word
    void tell(Platform& platform, const std::string& kind, const std::string& detail);
    /// As much of what a page said as a line has use for: 1000 bytes.
    static std::string shortened(const std::string& detail);

private:
    MessageBudget lines_{100, 1};
    std::int64_t untold_ = 0;
};

} // namespace qoro
