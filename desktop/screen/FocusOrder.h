#pragma once

#include "platform/Geometry.h"

#include <cstddef>
#include <vector>

namespace qoro
{

/// A control that is reachable by keyboard.
struct FocusStop {
    /// Stacking position of the control's window: the window with the larger number covers the other.
    std::size_t window = 0;
    /// The control's visible rectangle.
    CGRect box;
};

/// Keyboard order of controls: the topmost window first, within a window in reading order, row by row. Two controls are
/// in one row if they overlap vertically by at least half the taller one's height.
/// @return indices into `stops`
std::vector<std::size_t> focus_order(const std::vector<FocusStop>& stops);

} // namespace qoro
