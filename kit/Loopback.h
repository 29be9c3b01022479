#pragma once

#include <string_view>

namespace qoro
{

/// Whether a web address (http, https, ws, wss) names this machine itself: localhost and what stands under it, the
/// addresses 127.0.0.0/8 and 0.0.0.0/8 however they are spelt, ::1, :: and those two in their IPv6 form. A host that
/// hides behind percent signs counts as one. Names are not resolved.
bool is_loopback_address(std::string_view address);

} // namespace qoro
