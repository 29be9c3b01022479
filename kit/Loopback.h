#pragma once

#include <string_view>

namespace qoro
{

/// Whether a web address (http, https, ws, wss) names this machine itself: localhost and what stands under it, the
/// addresses 127.0.0.0/8 and 0.0.0.0/8 however they are spelt, ::1, :: and those two in their IPv6 forms. Names are not
/// resolved.
bool is_loopback_address(std::string_view address);

/// Whether one address must not lead to another: whatever comes from elsewhere reaches nothing on this machine, whose
/// services trust who asks. A host that others may read otherwise (percent signs, backslashes, letters beyond ASCII,
/// which become digits, a placeholder that is yet to be filled, "{…}") counts as this machine where something leads,
/// and as elsewhere where it comes from.
bool leads_to_this_machine(std::string_view from, std::string_view to);

} // namespace qoro
