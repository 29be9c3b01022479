#pragma once

#include "views/ViewNode.h"

#include <optional>

namespace qoro
{

/// Where a page stands on the screen, and how much of it is to be seen: in the page's own points, on the screen as the
/// page has it upright.
struct PagePlace {
    CGSize screen = {};
    CGRect position = {};
    /// What is to be seen of the page, from its upper left corner; absent when nothing is.
    std::optional<CGRect> visible = {};
    /// The visible part's share of the page's area, 0 to 100.
    double exposed_percentage = 0;
};

/// @param page a web view
/// @param screen the main screen's size, in points as its windows have them
/// @param scale points of the screen to a point of the page
PagePlace place_of_page(const ViewNode& page, CGSize screen, double scale);

} // namespace qoro
