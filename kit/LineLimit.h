#pragma once

#include "kit/MessageBudget.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace qoro
{

/// Limits lines that a page causes. Each line carries the number of occurrences that it covers.
class LineLimit
{
public:
    /// @param at_once lines of a burst
    /// @param per_second lines in the long run
    LineLimit(double at_once, double per_second) : lines_(at_once, per_second) {}

    /// Counts occurrences.
    /// @param now monotonic time in seconds
    /// @param times not negative
    /// @return the number of occurrences that a line written now covers; absent when no line is due
    std::optional<std::int64_t> count(double now, std::int64_t times = 1)
    {
        unreported_ += times;
        if (!lines_.take(now))
            return std::nullopt;
        return std::exchange(unreported_, 0);
    }

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    MessageBudget lines_;
    std::int64_t unreported_ = 0;
};

} // namespace qoro
