#pragma once

#include "formats/Steps.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qoro
{

class Platform;
class QoroVideoWebViewController;
struct ViewNode;

/// What a step's touch reaches.
struct TouchAim {
    /// The view that receives the touch; null without one.
    std::shared_ptr<ViewNode> view;
    /// The button's name in the controller, or its action's for a button of the kit; "page" and the page's element;
    /// null for a touch of neither.
    std::optional<std::string> hit;
};

/// Finds what a touch reaches. A control of the ad that covers a page's element receives the element's touch, as it
/// would receive a finger's.
/// @param controller names the controls; may be null
/// @param found called once: inside the call, or as an event of its own if a page must be asked for its element. The
///        page keeps the element until deliver_touch()
void aim_touch(Platform& platform, const TouchStep& step, const std::weak_ptr<QoroVideoWebViewController>& controller,
               const std::function<void(const TouchAim&)>& found);

/// Touches what aim_touch() has found: runs a control's actions; or counts as the viewer's touch of a page, and
/// delivers it to the page's element.
void deliver_touch(Platform& platform, const TouchAim& aim);

} // namespace qoro
