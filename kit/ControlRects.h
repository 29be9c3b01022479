#pragma once

#include "kit/ScriptExtras.h"
#include "views/ViewNode.h"

#include <span>

namespace qoro
{

/// Where controls lie over a page: those in front of it that overlap it, shown or not, in the given order. Each is a
/// mapping of `name`, `x`, `y`, `width` and `height` in CSS pixels relative to the page's upper left corner, however
/// the page is turned and scaled; `visible`, whether the viewer sees it; and `hittable`, whether a touch reaches it.
/// @param page a web view
/// @param screen size of the main screen, in the points of its windows
NSArray rects_over_page(const ViewNode& page, std::span<const NamedControl> controls, CGSize screen);

} // namespace qoro
