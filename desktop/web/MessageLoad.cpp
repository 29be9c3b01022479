#include "desktop/web/MessageLoad.h"

#include <ctime>

namespace qoro
{

namespace
{

constexpr int SomeMessages = 3;
/// Of a second.
constexpr double MuchWork = 0.8;

double seconds_of(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

bool MessageLoad::is_too_much()
{
    ++messages_;
    const double now = seconds_of(CLOCK_MONOTONIC);
    const double passed = now - began_;
    if (passed < 1)
        return false;
    const double worked = seconds_of(CLOCK_THREAD_CPUTIME_ID);
    // A second that was long because the page was silent for a while says nothing.
    const bool busy = messages_ >= SomeMessages && passed < 3 && worked - worked_ > MuchWork * passed;
    busy_seconds_ = busy ? busy_seconds_ + 1 : 0;
    began_ = now;
    worked_ = worked;
    messages_ = 0;
    return busy_seconds_ >= 3;
}

} // namespace qoro
