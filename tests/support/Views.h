#pragma once

#include "platform/Geometry.h"
#include "platform/UIKit.h"

#include <ostream>

namespace qoro
{

// Printers for failed comparisons.

inline void PrintTo(CGPoint point, std::ostream* out)
{
    *out << '(' << point.x << ", " << point.y << ')';
}

inline void PrintTo(CGSize size, std::ostream* out)
{
    *out << size.width << " by " << size.height;
}

inline void PrintTo(const CGRect& rect, std::ostream* out)
{
    *out << '(' << rect.x << ", " << rect.y << ", " << rect.width << ", " << rect.height << ')';
}

/// The bytes of a button's image, for comparison with an embedded image's array; null without an image.
inline const unsigned char* picture_of(const UIButton& button)
{
    return button.backgroundImage().data().bytes();
}

/// Whether a view is its superview's topmost subview.
inline bool is_on_top(const UIView& view)
{
    return view.superview() && view.superview().subviews().back() == view;
}

} // namespace qoro
