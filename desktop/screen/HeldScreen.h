#pragma once

#include "views/HeldTurn.h"
#include "views/ViewNode.h"

namespace qoro
{

// Pure geometry: the device's screen as the viewer holds it. A screen retains its own coordinates and is displayed
// rotated.

/// A screen in its window. The rotation is in radians.
struct HeldScreen {
    CGSize screen;
    double turn = 0;

    /// Size of the rotated screen's bounding box.
    CGSize extents() const;
    /// Converts a point of the screen to window points.
    CGPoint to_window(CGPoint on_screen) const;
    /// Converts a point of the window to screen points.
    CGPoint to_screen(CGPoint in_window) const;
};

/// Position of a widget in the window: centre, size in whole points, and rotation in radians. At multiples of a quarter
/// turn its edges lie on whole points, so that pictures are copied without resampling and adjacent widgets still touch.
struct WidgetPlace {
    CGPoint center;
    int width = 0;
    int height = 0;
    double angle = 0;

    /// The axis-parallel bounding box.
    CGRect around() const;
    friend bool operator==(const WidgetPlace&, const WidgetPlace&) = default;
};

/// Maps a view's placement on the screen to the window, rounded as WidgetPlace describes.
WidgetPlace place_in_window(const Placement& on_screen, const HeldScreen& held);

} // namespace qoro
