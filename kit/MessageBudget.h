#pragma once

#include <algorithm>

namespace qoro
{

/// How many of a page's doings are heard: so many at once, and so many a second in the long run.
class MessageBudget
{
public:
    MessageBudget(double at_once, double per_second) : at_once_(at_once), per_second_(per_second), left_(at_once) {}

    /// Takes one, at a moment in seconds that only grow.
    /// @return false when there are too many
    bool take(double now)
    {
        left_ = std::min(at_once_, left_ + (now - last_) * per_second_);
        last_ = now;
        if (left_ < 1)
            return false;
        left_ -= 1;
        return true;
    }

private:
    const double at_once_;
    const double per_second_;
    double left_;
    double last_ = 0;
};

} // namespace qoro
