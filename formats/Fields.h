#pragma once

#include "platform/UIKit.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class NSTimer;
class QoroVideoWebViewController;

/// A view or window of the controller, by the name of its field.
struct ViewField {
    std::string_view name;
    UIView (*get)(const QoroVideoWebViewController& controller);
};

/// The controller's views and windows that are, or can be, on screen.
std::span<const ViewField> view_fields();

/// The controller's button in the named field; null when the field is unknown or empty.
UIButton button_named(const QoroVideoWebViewController& controller, std::string_view name);

/// The names of the controller's button fields.
std::vector<std::string> button_names();

/// A timer of the controller, by the name of its field.
struct TimerField {
    std::string_view name;
    NSTimer QoroVideoWebViewController::*field;
};

/// The controller's timers.
std::span<const TimerField> timer_fields();

} // namespace qoro
