#pragma once

#include <algorithm>

namespace qoro
{

/// How many of a page's doings, or bytes of them, are heard: so many at once, and so many a second in the long run.
class MessageBudget
{
public:
    MessageBudget(double at_once, double per_second) : at_once_(at_once), per_second_(per_second), left_(at_once) {}

    /// Takes one, or as many as are wanted, at a moment in seconds that only grow.
    /// @return false when there are too many: none is taken then
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
    const double at_once_;
    const double per_second_;
    double left_;
    double last_ = 0;
};

} // namespace qoro
