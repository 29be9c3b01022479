#pragma once

#include "platform/Export.h"

#include <string_view>

namespace QORO_EXPORT_TO_DESKTOP qoro
{

class Platform;

/// Reports the exception that is being handled: to the platform's event sink as a fault and as an error of the ad's
/// log. Without a platform or a sink: as a line on standard error.
/// @param callback what threw it, in words
/// @param platform null for a callback outside the platform's thread
void report_exception(std::string_view callback, Platform* platform) noexcept;

/// Calls a callback of the host, which may throw: its callers are C libraries and the controller, which an exception
/// must not pass through. The exception is reported, and the ad continues.
/// @param callback its name, for the report
/// @param platform null for a callback outside the platform's thread
/// @return false when it has thrown
template <typename Call>
bool call_host(std::string_view callback, Platform* platform, Call&& call) noexcept
{
    try {
        call();
        return true;
    } catch (...) {
        report_exception(callback, platform);
        return false;
    }
}

} // namespace qoro
