#pragma once

#include "views/HeldTurn.h"
#include "views/ViewNode.h"

namespace qoro
{

// Pure geometry: the device's screen as its viewer holds it. A screen keeps its own coordinates, and is shown turned.

/// A screen in its window.
struct HeldScreen {
    CGSize screen;
    double turn = 0;

    /// The room that it takes when turned.
    CGSize extents() const;
    CGPoint to_window(CGPoint on_screen) const;
    CGPoint to_screen(CGPoint in_window) const;
};

/// Where a widget stands in the window: a middle, a size in whole points, and a turn. At whole quarter turns its edges
/// lie on whole points, so that pictures are copied and not resampled; neighbours that touch still touch.
struct WidgetPlace {
    CGPoint center;
    int width = 0;
    int height = 0;
    double angle = 0;

    /// The upright rectangle around it.
    CGRect around() const;
    friend bool operator==(const WidgetPlace&, const WidgetPlace&) = default;
};

WidgetPlace place_in_window(const Placement& on_screen, const HeldScreen& held);

} // namespace qoro
