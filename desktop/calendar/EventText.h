#pragma once

#include "platform/CalendarEvent.h"

#include <cstdint>
#include <string>

namespace qoro
{

/// Metadata of an event's file.
struct EventStamp {
    /// Globally unique identifier of the event (UID; RFC 5545, 3.8.4.7).
    std::string uid;
    /// Seconds since 1970 (DTSTAMP; RFC 5545, 3.8.7.2).
    std::int64_t made = 0;
};

/// An event as iCalendar text (RFC 5545). A recurring event keeps its local clock: its days and hours are those of the
/// event's time zone, even where the days differ in UTC.
/// @return null if the event's time zone is unknown on this machine
NSString event_text(const CalendarEvent& event, const EventStamp& stamp);

} // namespace qoro
