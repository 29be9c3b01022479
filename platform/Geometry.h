#pragma once

#include <numbers>

namespace qoro
{

// Points throughout: x to the right, y down, from the top left of the parent.

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

/// The bottom edge. A negative height stays as it is: y + height.
inline double CGRectGetMaxY(const CGRect& rect)
{
    return rect.y + rect.height;
}

inline constexpr double QuarterTurn = std::numbers::pi / 2;
inline constexpr double HalfTurn = std::numbers::pi;

/// A rotation about a view's centre, clockwise on the screen; the only transform that the controller uses.
struct CGAffineTransform {
    /// Radians, in (−π, π].
    double angle = 0;
};

/// The angle is brought into (−π, π]; whole quarter turns come out as exactly that. One that is not finite is 0.
CGAffineTransform CGAffineTransformMakeRotation(double angle);

} // namespace qoro
