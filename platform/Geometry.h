#pragma once

#include <numbers>

namespace qoro
{

// All coordinates are in points; x grows to the right, y down, from the parent's top left corner.

struct CGPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
    double width = 0;
    double height = 0;
    friend bool operator==(const CGSize&, const CGSize&) = default;
};

struct CGRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const CGRect&, const CGRect&) = default;
};

/// The bottom edge, y + height. A negative height is not normalised.
inline double CGRectGetMaxY(const CGRect& rect)
{
    return rect.y + rect.height;
}

inline constexpr double QuarterTurn = std::numbers::pi / 2;
inline constexpr double HalfTurn = std::numbers::pi;

/// A rotation about a view's centre, clockwise on the screen. The controller uses no other transform.
struct CGAffineTransform {
    /// Radians, in (−π, π].
    double angle = 0;
};

/// Normalises the angle to (−π, π]. Multiples of a quarter turn become exact; a non-finite angle becomes 0.
CGAffineTransform CGAffineTransformMakeRotation(double angle);

} // namespace qoro
