#pragma once

#include "desktop/glib/Owned.h"

namespace qoro
{

/// Records when the main loop last woke.
class LoopTurn
{
public:
    LoopTurn();
    LoopTurn(const LoopTurn&) = delete;
    LoopTurn& operator=(const LoopTurn&) = delete;

    /// Seconds of the same monotonic clock as now(); 0 before the loop has woken.
    double woke() const;
    /// Seconds of the machine's monotonic clock.
    static double now();

private:
    const OwnedSource source_;
};

} // namespace qoro
