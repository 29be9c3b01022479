#pragma once

#include "kit/MessageBudget.h"

#include <cstdint>
#include <optional>

namespace qoro
{

/// How much of what a page is refused is written down: a hundred lines at once and one a second in the long run, each
/// of which tells how many refusals it stands for. A page that floods its ad does not flood the trace.
class RefusalLog
{
public:
    /// One more refusal, at a moment in seconds that only grow.
    /// @return for how many a line stands that is to be written now; absent when none is
    std::optional<std::int64_t> count(double now)
    {
        ++untold_;
        if (!lines_.take(now))
            return std::nullopt;
        const std::int64_t told = untold_;
        untold_ = 0;
        return told;
    }

private:
    MessageBudget lines_{100, 1};
    std::int64_t untold_ = 0;
};

} // namespace qoro
