#pragma once

namespace qoro
{

/// Knows when a page's messages take the main loop for themselves. WebKit unpacks a message before anyone can look at
/// it, so what a message costs shows in the processor time of the loop's thread alone.
class MessageLoad
{
public:
    /// One more message has come.
    /// @return whether for three seconds in a row messages kept coming, and the thread had little time for anything
    /// else
    bool is_too_much();

private:
    /// Seconds; of the clock and of the thread's work, at the beginning of the present second.
    double began_ = 0;
    double worked_ = 0;
    int messages_ = 0;
    int busy_seconds_ = 0;
};

} // namespace qoro
