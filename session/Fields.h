#pragma once

#include "platform/UIKit.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class QoroVideoWebViewController;

/// A view or window of the controller by its name.
struct ViewField {
    std::string_view name;
    UIView (*get)(const QoroVideoWebViewController& controller);
};

/// Everything of the controller that stands, or may stand, on the screen.
std::span<const ViewField> view_fields();

/// The controller's button of a field's name; null when there is no such field, or nothing in it.
UIButton button_named(const QoroVideoWebViewController& controller, std::string_view name);

/// The names of the controller's button fields.
std::vector<std::string> button_names();

} // namespace qoro
