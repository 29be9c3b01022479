#include "app/Interruption.h"

#include <array>
#include <atomic>
#include <csignal>

namespace qoro
{

namespace
{

constexpr std::array Signals{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> arrived = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler sets it");
std::array<struct sigaction, Signals.size()> before;

void note(int number)
{
    arrived = number;
}

} // namespace

Interruption::Interruption()
{
    arrived = 0;
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t n = 0; n < Signals.size(); ++n) {
        sigaction(Signals[n], nullptr, &before[n]);
        // As nohup, or a shell's background command, asks for.
        if (before[n].sa_handler != SIG_IGN)
            sigaction(Signals[n], &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t n = 0; n < Signals.size(); ++n)
        sigaction(Signals[n], &before[n], nullptr);
}

bool Interruption::requested()
{
    return arrived != 0;
}

void Interruption::end_program()
{
    if (const int number = arrived; number != 0) {
        std::signal(number, SIG_DFL);
        std::raise(number);
    }
}

} // namespace qoro
