#pragma once

#include "platform/CalendarEvent.h"

namespace qoro
{

/// What came of reading an event.
struct CalendarEventReading {
    CalendarEvent event = {};
    /// Null when the event could be read; else one line: which field, what it is, what was expected.
    NSString error = {};
};

/// Reads MRAID's calendar event: the W3C Calendar API's (Working Draft of April 2011), as docs/creative.md has it.
/// @param given anything that a page may send
CalendarEventReading read_calendar_event(const Value& given);

} // namespace qoro
