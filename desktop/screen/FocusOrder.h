#pragma once

#include "platform/Geometry.h"

#include <cstddef>
#include <vector>

namespace qoro
{

/// A control that the keyboard can reach.
struct FocusStop {
    /// How high the control's window lies: of two, the one with the larger number covers the other.
    std::size_t window = 0;
    /// The control as the viewer sees it.
    CGRect box;
};

/// The order in which the keyboard goes through controls: the topmost window's first, each window's as one reads, row
/// by row. What stands beside each other over half of the taller one's height is a row.
/// @return places in the given list
std::vector<std::size_t> focus_order(const std::vector<FocusStop>& stops);

} // namespace qoro
