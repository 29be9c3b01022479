#pragma once

#include "platform/Export.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace QORO_EXPORT qoro
{

/// Wall-clock time: seconds since 1970-01-01 00:00 as a local clock shows it, whether or not summer time applies. It
/// counts displayed days and hours, not elapsed time. A bare date is its midnight.
using WallTime = std::int64_t;

/// How certain an event is.
enum class CalendarStatus { Tentative, Confirmed, Cancelled };

/// The clock of an event's times. With neither an offset nor a zone the event is floating: it takes place at that time
/// of day in the reader's own zone (RFC 5545, section 3.3.5, form 1).
struct CalendarClock {
    /// Minutes ahead of UTC; absent without a fixed offset.
    std::optional<int> offset = {};
    /// IANA time zone name, such as "Europe/Berlin"; null without a zone.
    NSString zone = {};
};

/// Recurrence rule. Each list is sorted and free of duplicates; an empty list restricts nothing.
struct CalendarRecurrence {
    /// Unit of the interval.
    enum class Frequency { Daily, Weekly, Monthly, Yearly };
    /// Whether the event recurs by days, weeks, months or years.
    Frequency frequency = Frequency::Daily;
    /// Number of days, weeks, months or years from one recurrence to the next; at least 1.
    int interval = 1;
    /// Latest start of a recurrence; for an all-day event the last day. Absent for an unlimited recurrence.
    std::optional<WallTime> until = {};
    /// Starts that the rule yields but that are skipped.
    std::vector<WallTime> exceptions = {};
    /// 0 (Sunday) to 6.
    std::vector<int> days_in_week = {};
    /// 1 to 31, or −1 (the last day) to −31.
    std::vector<int> days_in_month = {};
    /// 1 to 366, or −1 (the last day) to −366.
    std::vector<int> days_in_year = {};
    /// Ordinal of the weekday within the month, 1 to 5, or −1 (the last one) to −5. Never set without days_in_week.
    std::vector<int> weeks_in_month = {};
    /// 1 to 12.
    std::vector<int> months_in_year = {};
};

/// An event to add to a calendar. Texts contain no control characters except line feeds and tabs.
struct CalendarEvent {
    /// Never null.
    NSString title = {};
    /// Null without one.
    /// @{
    NSString description = {};
    NSString location = {};
    /// @}
    /// The clock of start, end and the recurrence's times.
    CalendarClock clock = {};
    /// Whole days: start is the first day, end the day after the last. The clock is not set.
    bool all_day = false;
    /// Start by the clock.
    WallTime start = 0;
    /// End, not before start; absent for an event without a duration.
    std::optional<WallTime> end = {};
    /// Absent when unspecified.
    std::optional<CalendarStatus> status = {};
    /// Whether the event blocks time; absent when unspecified.
    std::optional<bool> busy = {};
    /// Absent for an event that takes place once.
    std::optional<CalendarRecurrence> recurrence = {};
    /// Seconds before the start at which to remind, at least 0; absent for no reminder.
    std::optional<std::int64_t> reminder = {};
};

} // namespace qoro
