#pragma once

namespace qoro
{

/// Edges of the screen that rounded corners, a camera or the system's own bars may cover, in points.
struct SafeAreaInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
};

} // namespace qoro
