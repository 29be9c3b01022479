#include "platform/Geometry.h"

#include <cmath>
#include <initializer_list>

namespace qoro
{

namespace
{

// Sums and differences of quarter turns are off by a few parts in 10^16.
constexpr double TurnResidue = 1e-12;

double without_residue(double angle)
{
    for (const double turn : {0.0, QuarterTurn, -QuarterTurn, HalfTurn})
        if (std::fabs(angle - turn) < TurnResidue)
            return turn;
    return std::fabs(angle + HalfTurn) < TurnResidue ? HalfTurn : angle;
}

} // namespace

CGAffineTransform CGAffineTransformMakeRotation(double angle)
{
    if (!std::isfinite(angle))
        return {};
    return {without_residue(std::remainder(angle, 2 * HalfTurn))};
}

} // namespace qoro
