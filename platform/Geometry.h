#pragma once

#include "platform/Export.h"

#include <numbers>

namespace QORO_EXPORT qoro
{

// All coordinates are in points; x grows to the right, y down, from the parent's top left corner.

/// A point, or a vector.
struct CGPoint {
    double x = 0; ///< To the right.
    double y = 0; ///< Down.
    /// Exact comparison, without a tolerance.
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

/// A size; a computed one may be negative.
struct CGSize {
    double width = 0;  ///< In points.
    double height = 0; ///< In points.
    /// Exact comparison, without a tolerance.
    friend bool operator==(const CGSize&, const CGSize&) = default;
};

/// A rectangle with axis-parallel sides.
struct CGRect {
    double x = 0;      ///< Left edge.
    double y = 0;      ///< Top edge.
    double width = 0;  ///< In points; may be negative.
    double height = 0; ///< In points; may be negative.
    /// Exact comparison, without a tolerance.
    friend bool operator==(const CGRect&, const CGRect&) = default;
};

/// The bottom edge, y + height. A negative height is not normalised.
inline double CGRectGetMaxY(const CGRect& rect)
{
    return rect.y + rect.height;
}

/// Radians, clockwise on the screen.
/// @{
inline constexpr double QuarterTurn = std::numbers::pi / 2;
inline constexpr double HalfTurn = std::numbers::pi;
/// @}

/// A rotation about a view's centre, clockwise on the screen. The controller uses no other transform.
struct CGAffineTransform {
    /// Radians, in (−π, π].
    double angle = 0;
};

/// Normalises the angle to (−π, π]. Multiples of a quarter turn become exact; a non-finite angle becomes 0.
CGAffineTransform CGAffineTransformMakeRotation(double angle);

} // namespace qoro
