#pragma once

#include <algorithm>

namespace qoro
{

/// Knows when a page's messages take the main loop for themselves. Most of what a message costs is spent before anyone
/// can look at it, so it is measured from the moment at which the loop woke for it. On a clock that goes on when the
/// processor is taken away: a viewer of a busy machine waits no less.
///
/// All moments are seconds that only grow.
class MessageLoad
{
public:
    /// One more message has been dealt with.
    /// @param woke when the main loop last began a turn; other work of that turn, ahead of the message, counts as its
    /// @return whether for about three seconds messages have left little time for anything else
    bool is_too_much(double woke, double now)
    {
        worked_ += now - std::max(woke, last_);
        last_ = now;
        const double passed = now - began_;
        if (passed < While)
            return false;
        busy_ = worked_ > MuchWork * passed ? busy_ + std::min(passed, LongestWhile) : 0;
        began_ = now;
        worked_ = 0;
        return busy_ >= TooLong;
    }

private:
    static constexpr double While = 1;
    /// One message alone never is too much: the whole program may have been held up meanwhile.
    static constexpr double LongestWhile = 2;
    static constexpr double TooLong = 3;
    /// Of a while.
    static constexpr double MuchWork = 0.8;

    double last_ = 0;
    double began_ = 0;
    double worked_ = 0;
    /// Without a calmer while between.
    double busy_ = 0;
};

} // namespace qoro
