#pragma once

#include "desktop/screen/HeldScreen.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

/// Where the device's screen appears in the surface that shows it. Pure geometry; all lengths are in points.
struct Viewport {
    HeldScreen held{{375, 812}, 0};
    /// The held device's top left corner in the surface.
    CGPoint origin = {};
    /// Surface points per point of the screen.
    double scale = 1;
    /// Maximum of `scale`.
    double max_scale = 1;

    /// Centres the device in a surface of a size in surface points, as large as fits and max_scale allows.
    void fit(int width, int height)
    {
        const CGSize device = held.extents();
        scale = std::min({max_scale, width / device.width, height / device.height});
        origin = {std::floor((width - device.width * scale) / 2), std::floor((height - device.height * scale) / 2)};
    }
    /// Converts a rectangle of the held device to surface points.
    CGRect to_surface(const CGRect& box) const
    {
        return {origin.x + box.x * scale, origin.y + box.y * scale, box.width * scale, box.height * scale};
    }
    /// The whole device, in surface points.
    CGRect area() const
    {
        const CGSize device = held.extents();
        return to_surface({0, 0, device.width, device.height});
    }
    /// Converts a point of the surface to the screen's own coordinates.
    CGPoint to_screen(CGPoint in_surface) const
    {
        return held.to_screen({(in_surface.x - origin.x) / scale, (in_surface.y - origin.y) / scale});
    }
};

} // namespace qoro
