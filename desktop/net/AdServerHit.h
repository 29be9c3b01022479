#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>

namespace QORO_EXPORT qoro
{

/// One request that an ad's own server received.
struct AdServerHit {
    /// Microseconds of the machine's monotonic clock.
    std::int64_t time = 0;
    /// HTTP method, such as "GET".
    std::string method;
    /// Path and query as the client sent them.
    std::string target;
    /// HTTP status of the answer.
    unsigned status = 0;
    /// Whether the path matched one of the trackers.
    bool tracker = false;
};

} // namespace qoro
