#pragma once

#include <algorithm>

namespace qoro
{

/// How many messages of a page are heard: so many at once, and so many a second in the long run.
class MessageBudget
{
public:
    static constexpr double AtOnce = 300;
    static constexpr double PerSecond = 100;

    /// Takes one message at a moment, in seconds that only grow.
    /// @return false when there are too many
    bool take(double now)
    {
        left_ = std::min(AtOnce, left_ + (now - last_) * PerSecond);
        last_ = now;
        if (left_ < 1)
            return false;
        left_ -= 1;
        return true;
    }

private:
    double left_ = AtOnce;
    double last_ = 0;
};

} // namespace qoro
