#pragma once

namespace qoro
{

/// Makes SIGINT, SIGTERM and SIGHUP end the program in order: the command completes or discards the file that it is
/// writing. A second signal ends the program at once. At most one object at a time.
class Interruption
{
public:
    /// Installs the handlers. System calls of the main thread return with EINTR.
    Interruption();
    /// Restores the previous handlers.
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Whether a signal has arrived. Any thread may call this.
    static bool requested();
    /// Ends the program by the signal that has arrived, as its parent expects; no effect without one.
    static void end_program();
};

} // namespace qoro
