#pragma once

#include "platform/CalendarEvent.h"

namespace qoro
{

/// The result of parsing an event.
struct CalendarEventReading {
    CalendarEvent event = {};
    /// Null on success; otherwise one line that names the field, its value and the expected one.
    NSString error = {};
};

/// Parses MRAID's calendar event: the event of the W3C Calendar API (Working Draft of April 2011), as described in
/// docs/creative.md. Accepts any value that a page may send.
CalendarEventReading read_calendar_event(const Value& given);

} // namespace qoro
