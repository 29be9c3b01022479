#pragma once

#include "platform/Export.h"
#include "platform/KitEnumerations.h"

#include <functional>
#include <string_view>

namespace QORO_EXPORT qoro
{

/// Receives a line of an ad's log. The message lives only as long as the call.
using LogSink = std::function<void(ZulixLogTag level, std::string_view message)>;

} // namespace qoro
