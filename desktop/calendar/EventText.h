#pragma once

#include "platform/CalendarEvent.h"

#include <cstdint>
#include <string>

namespace qoro
{

/// What a file of an event has beside the event.
struct EventStamp {
    /// Names the event among all others.
    std::string uid;
    /// Seconds since 1970.
    std::int64_t made = 0;
};

/// An event as iCalendar (RFC 5545). One that comes again keeps its clock: its days and hours are those that the clock
/// shows, whatever days they are in UTC.
/// @return null when the event's zone is not known here
NSString event_text(const CalendarEvent& event, const EventStamp& stamp);

} // namespace qoro
