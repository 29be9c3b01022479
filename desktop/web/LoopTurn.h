#pragma once

typedef struct _GSource GSource;

namespace qoro
{

/// Knows when the main loop last woke.
class LoopTurn
{
public:
    LoopTurn();
    ~LoopTurn();
    LoopTurn(const LoopTurn&) = delete;
    LoopTurn& operator=(const LoopTurn&) = delete;

    /// Seconds of a clock that only grows, as now() counts them; 0 before the first time.
    double woke() const;
    static double now();

private:
    GSource* const source_;
};

} // namespace qoro
