#include "tests/contract/ContractPlatform.h"

namespace qoro::test
{

namespace
{

/// A weekly event for a month with every optional property set.
CalendarEvent lesson()
{
    CalendarEvent event;
    event.title = "Lesson";
    event.description = "The first line\nthe second";
    event.location = "Hall 3; left";
    event.clock.offset = -480;
    event.start = 1'805'925'600;
    event.end = event.start + 3600;
    event.status = CalendarStatus::Confirmed;
    event.busy = true;
    event.reminder = 600;
    CalendarRecurrence weekly;
    weekly.frequency = CalendarRecurrence::Frequency::Weekly;
    weekly.until = event.start + 28 * 86'400;
    event.recurrence = weekly;
    return event;
}

} // namespace

TEST_P(CalendarContract, ACalendarTakesAnEvent)
{
    EXPECT_TRUE(platform().calendar().available());
    EXPECT_EQ(platform().calendar().add(lesson()), NSString());
}

TEST_P(CalendarContract, WithoutACalendarAnEventIsRefusedInOneLine)
{
    begin({.calendar = false});

    EXPECT_FALSE(platform().calendar().available());
    EXPECT_EQ(platform().calendar().add(lesson()), "this device has no calendar");
}

} // namespace qoro::test
