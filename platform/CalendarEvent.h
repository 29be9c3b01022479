#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace qoro
{

/// Seconds from 1970-01-01 00:00 to what a clock on the wall shows, summer time or not: a count of the days and hours
/// that one reads there, not of time that goes by. A day alone is its midnight.
using WallTime = std::int64_t;

enum class CalendarStatus { Tentative, Confirmed, Cancelled };

/// Which clock an event goes by.
struct CalendarClock {
    /// Minutes that the clock is ahead of UTC; absent for one without a fixed distance.
    std::optional<int> offset = {};
    /// A zone of the IANA's, such as "Europe/Berlin"; null for none. Without either the event is at that time of day
    /// wherever its reader is.
    NSString zone = {};
};

/// How an event comes again. Each list is sorted, without doubles; an empty one restricts nothing.
struct CalendarRecurrence {
    enum class Frequency { Daily, Weekly, Monthly, Yearly };
    Frequency frequency = Frequency::Daily;
    /// Every so many days, weeks, months or years; 1 and more.
    int interval = 1;
    /// The last moment at which it may begin again; of an event of whole days the last day. Absent for no end.
    std::optional<WallTime> until = {};
    /// When it would begin again, but does not.
    std::vector<WallTime> exceptions = {};
    /// 0 (Sunday) to 6.
    std::vector<int> days_in_week = {};
    /// 1 to 31, or −1 (the last day) to −31.
    std::vector<int> days_in_month = {};
    /// 1 to 366, or −1 (the last day) to −366.
    std::vector<int> days_in_year = {};
    /// Which of the month's Mondays, say: 1 to 5, or −1 (the last one) to −5. Never without days_in_week.
    std::vector<int> weeks_in_month = {};
    /// 1 to 12.
    std::vector<int> months_in_year = {};
};

/// What is to be put into a calendar. Texts have no control characters but line feeds and tabs.
struct CalendarEvent {
    /// Never null.
    NSString title = {};
    NSString description = {};
    NSString location = {};
    CalendarClock clock = {};
    /// Whole days, from the one of start to the one before end's; they have no clock.
    bool all_day = false;
    WallTime start = 0;
    /// When it is over, not before start; absent for an event that takes no time.
    std::optional<WallTime> end = {};
    std::optional<CalendarStatus> status = {};
    /// Whether the time counts as taken; absent when nothing was said.
    std::optional<bool> busy = {};
    std::optional<CalendarRecurrence> recurrence = {};
    /// Seconds before the start at which its reader is reminded, 0 and more; absent for no reminder.
    std::optional<std::int64_t> reminder = {};
};

} // namespace qoro
