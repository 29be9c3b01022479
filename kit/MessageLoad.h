#pragma once

#include <algorithm>

namespace qoro
{

/// Detects when a page's messages monopolise the main loop. Most of a message's cost arises before its handler runs, so
/// the time is measured from the loop's wake-up. It is elapsed time rather than processor time: on a busy machine the
/// viewer waits just as long.
///
/// All times are monotonic, in seconds.
class MessageLoad
{
public:
    /// Accounts for a message that has just been handled.
    /// @param woke when the current turn of the main loop began; other work of the turn before the message counts as
    ///             its own
    /// @return whether messages have left little time for anything else for about three seconds
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
    /// Length of a measuring interval.
    static constexpr double While = 1;
    /// The most that one interval counts, so that a single message never exceeds the limit: the whole program may have
    /// been suspended meanwhile.
    static constexpr double LongestWhile = 2;
    static constexpr double TooLong = 3;
    /// The fraction of an interval above which it counts as busy.
    static constexpr double MuchWork = 0.8;

    double last_ = 0;
    double began_ = 0;
    double worked_ = 0;
    /// Total of the consecutive busy intervals.
    double busy_ = 0;
};

} // namespace qoro
