#pragma once

#include <algorithm>

namespace qoro
{

/// A token bucket that limits a page's messages, or their bytes: a burst of at_once, refilled at per_second.
class MessageBudget
{
public:
    /// @param at_once capacity; the bucket starts full
    /// @param per_second tokens added per second
    MessageBudget(double at_once, double per_second) : at_once_(at_once), per_second_(per_second), left_(at_once) {}

    /// Takes tokens.
    /// @param now monotonic time in seconds
    /// @return false when too few tokens are left; none is taken then
    bool take(double now, double amount = 1)
    {
        left_ = std::min(at_once_, left_ + (now - last_) * per_second_);
        last_ = now;
        if (left_ < amount)
            return false;
        left_ -= amount;
        return true;
    }

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    const double at_once_;
    const double per_second_;
    double left_;
    double last_ = 0;
};

} // namespace qoro
