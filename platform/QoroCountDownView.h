#pragma once

#include "platform/UIKit.h"

namespace qoro
{

/// The kit's countdown: a ring that runs down, and the whole seconds left. A handle like every view.
class QoroCountDownView : public UIView
{
public:
    using UIView::UIView;
    /// @param withSecond the seconds that a full ring stands for
    /// @param boardWidth the ring's width in points
    static QoroCountDownView initWithFrame(const CGRect& frame, double withSecond, double boardWidth);
    void updateWithSeconds(double seconds) const;
    /// What it shows; 0 for null.
    double seconds() const;
};

} // namespace qoro
