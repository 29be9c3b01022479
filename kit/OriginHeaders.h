#pragma once

#include "platform/Export.h"

#include <string>
#include <utility>
#include <vector>

namespace QORO_EXPORT qoro
{

/// Headers and cookies that the host adds to requests for one origin. They are sent to that origin only: a redirect to
/// another one goes without them.
struct OriginHeaders {
    /// Scheme, host and port, without a path (RFC 6454): "https://ads.example", "http://studio.example:8080".
    std::string origin;
    /// Name and value of each header. A name may be any that neither belongs to the connection (RFC 9110, 7.6.1) nor is
    /// set by this library; see fault_of().
    std::vector<std::pair<std::string, std::string>> headers = {};
    /// Name and value of each cookie (RFC 6265, 4.1.1). A cookie of the same name that the server has set since takes
    /// precedence.
    std::vector<std::pair<std::string, std::string>> cookies = {};
};

/// Why headers and cookies cannot be sent, one line that names the culprit; empty if they can.
std::string fault_of(const OriginHeaders& added);

} // namespace qoro
