#pragma once

#include "views/ViewNode.h"

#include <optional>

namespace qoro
{

/// Position and visibility of a page, in the page's points and on the screen rotated so that the page is upright.
struct PagePlace {
    CGSize screen = {};
    CGRect position = {};
    /// The visible part, relative to the page's top left corner; absent when the page is not visible.
    std::optional<CGRect> visible = {};
    /// Visible fraction of the page's area, in percent, 0 to 100.
    double exposed_percentage = 0;
};

/// The part of a view that the viewer can see, in screen points. Absent when the view is hidden, off screen, or covered
/// by a video or another page.
std::optional<CGRect> visible_part(const ViewNode& view, CGSize screen);

/// Computes the position and visibility of a page.
/// @param page a web view
/// @param screen size of the main screen, in the points of its windows
/// @param scale screen points per page point
PagePlace place_of_page(const ViewNode& page, CGSize screen, double scale);

} // namespace qoro
