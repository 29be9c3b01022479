#pragma once

typedef struct _GSource GSource;

namespace qoro
{

/// Records when the main loop last woke.
class LoopTurn
{
public:
    LoopTurn();
    ~LoopTurn();
    LoopTurn(const LoopTurn&) = delete;
    LoopTurn& operator=(const LoopTurn&) = delete;

    /// Seconds of the same monotonic clock as now(); 0 before the loop has woken.
    double woke() const;
    /// Seconds of the machine's monotonic clock.
    static double now();

private:
    GSource* const source_;
};

} // namespace qoro
