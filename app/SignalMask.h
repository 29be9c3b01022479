#pragma once

#include <csignal>

namespace qoro
{

/// Blocks signals in the calling thread. A thread that is created meanwhile inherits the mask, so that signals reach
/// the main thread. Not SIGPIPE, which a thread's own writing causes.
class SignalMask
{
public:
    SignalMask()
    {
        sigset_t all;
        sigfillset(&all);
        sigdelset(&all, SIGPIPE);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    /// Restores the mask.
    ~SignalMask() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalMask(const SignalMask&) = delete;
    SignalMask& operator=(const SignalMask&) = delete;

private:
    sigset_t before_;
};

} // namespace qoro
