#pragma once

#include "platform/Export.h"
#include "platform/Value.h"

#include <memory>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

class Platform;
struct ViewNode;

/// The place of a view in its platform's tree: the index of its window among all windows, then the index in each
/// parent. Null for a view in no window, and for null.
Value view_path(const std::shared_ptr<ViewNode>& view);
/// The view at such a place; null without one.
std::shared_ptr<ViewNode> view_at(Platform& platform, const Value& path);

/// Where a touch of a view lands: its path, and a point of the screen, [x, y].
Value touch_record(const std::shared_ptr<ViewNode>& view);

/// The viewer has touched a page now, by a pointer or a key of the window system.
void note_page_touch(const std::shared_ptr<ViewNode>& page);

} // namespace qoro
