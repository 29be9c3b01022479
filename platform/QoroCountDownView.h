#pragma once

#include "platform/UIKit.h"

namespace qoro
{

/// Handle of the kit's countdown view: a shrinking ring around the whole seconds left.
class QoroCountDownView : public UIView
{
public:
    using UIView::UIView;
    /// Creates a countdown that shows a full ring.
    /// @param withSecond the seconds that a full ring represents
    /// @param boardWidth width of the ring's line, in points
    static QoroCountDownView initWithFrame(const CGRect& frame, double withSecond, double boardWidth);
    void updateWithSeconds(double seconds) const;
    /// The seconds shown; 0 for null.
    double seconds() const;
};

} // namespace qoro
