#pragma once

#include "platform/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class QoroVideoWebViewController;

/// The type of an operation's argument.
enum class ArgumentKind { Flag, WholeNumber, TextOrNull, ButtonName };

/// An operation that the host or the kit calls on the controller.
struct Operation {
    std::string_view name;
    std::vector<ArgumentKind> arguments;
    Value (*call)(QoroVideoWebViewController& controller, const NSArray& arguments);
};

/// The operations that a step may call.
const std::vector<Operation>& operations();

/// Calls an operation by name.
/// @return its result; null for an operation without one, and for an unknown name
Value call_operation(QoroVideoWebViewController& controller, std::string_view name, const NSArray& arguments);

} // namespace qoro
