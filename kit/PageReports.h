#pragma once

#include "platform/Ports.h"

#include <cstdint>

namespace qoro
{

class Platform;

/// Emits a page's report as event::PageConsole or event::PageError.
/// @param times number of reports that the event represents
void emit_page_report(Platform& platform, const PageReport& report, std::int64_t times);

} // namespace qoro
