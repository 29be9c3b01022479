#include "kit/CalendarEvent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

using namespace std::chrono;

/// Local wall-clock time, in seconds since 1970.
WallTime on(int y, unsigned m, unsigned d, int hour = 0, int minute = 0, int second = 0)
{
    return sys_days(year(y) / m / d).time_since_epoch().count() * 86'400 + hour * 3600 + minute * 60 + second;
}

/// A concert on Wednesday, 2027-03-24, at 09:00, UTC−8.
NSDictionary concert()
{
    return {{"description", "Concert"}, {"start", "2027-03-24T09:00-08:00"}};
}

NSDictionary with(const std::string& key, const Value& value, NSDictionary event = concert())
{
    event.setObject(value, key);
    return event;
}

NSDictionary repeated(const NSDictionary& recurrence, const char* start = "2027-03-24T09:00-08:00")
{
    return with("recurrence", recurrence, with("start", start));
}

CalendarEvent read(const NSDictionary& event)
{
    const CalendarEventReading reading = read_calendar_event(event);
    EXPECT_EQ(reading.error, NSString());
    return reading.event;
}

CalendarRecurrence rule(const NSDictionary& recurrence, const char* start = "2027-03-24T09:00-08:00")
{
    return read(repeated(recurrence, start)).recurrence.value_or(CalendarRecurrence{});
}

std::string complaint(const Value& event)
{
    return read_calendar_event(event).error.text();
}

TEST(CalendarEvent, AComplaintIsOneLineWhateverItShows)
{
    EXPECT_EQ(complaint("a\r\nb\tc\x7F").find_first_of("\r\n\t\x7F"), std::string::npos);
    EXPECT_EQ(complaint(with("start", "2027\n03")).find('\n'), std::string::npos);
}

// -------------------------------------------------------------------------------------------------------------- dates

struct Written {
    const char* claim;
    const char* text;
    WallTime wall;
    std::optional<int> offset;
    bool all_day = false;

    friend void PrintTo(const Written& written, std::ostream* out) { *out << written.text; }
};

class CalendarDates : public testing::TestWithParam<Written>
{
};

TEST_P(CalendarDates, AreReadAsTheyAreWritten)
{
    const CalendarEvent event = read(with("start", GetParam().text));

    EXPECT_EQ(event.start, GetParam().wall);
    EXPECT_EQ(event.clock.offset, GetParam().offset);
    EXPECT_EQ(event.all_day, GetParam().all_day);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, CalendarDates,
    testing::Values(Written{"ADayIsAllDay", "2011-03-24", on(2011, 3, 24), {}, true},
                    Written{"ATimeOfDayHasNoOffset", "2011-03-24T09:00", on(2011, 3, 24, 9), {}},
                    Written{"Seconds", "2011-03-24T09:00:07", on(2011, 3, 24, 9, 0, 7), {}},
                    Written{"AFractionIsDropped", "2011-03-24T09:00:07.999", on(2011, 3, 24, 9, 0, 7), {}},
                    Written{"ZIsUtc", "2011-03-24T09:00Z", on(2011, 3, 24, 9), 0},
                    Written{"AnOffsetWithAColon", "2011-03-24T09:00-08:00", on(2011, 3, 24, 9), -480},
                    Written{"AnOffsetWithoutOne", "2011-03-24T09:00-0800", on(2011, 3, 24, 9), -480},
                    Written{"EverythingAtOnce", "2011-03-24T09:00:07.5+05:45", on(2011, 3, 24, 9, 0, 7), 345},
                    Written{"WhatAScriptsDateIs", "2011-03-24T09:00:00.000Z", on(2011, 3, 24, 9), 0},
                    Written{"TheLastMinute", "2011-12-31T23:59", on(2011, 12, 31, 23, 59), {}},
                    Written{"TheDayOfALeapYear", "2028-02-29", on(2028, 2, 29), {}, true},
                    Written{"TheDayOfALeapCentury", "2000-02-29", on(2000, 2, 29), {}, true},
                    Written{"BeforeTheEpoch", "1969-12-31T23:00Z", on(1969, 12, 31, 23), 0},
                    Written{"FurthestEast", "2011-03-24T09:00+14:00", on(2011, 3, 24, 9), 840},
                    Written{"FurthestWest", "2011-03-24T09:00-12:00", on(2011, 3, 24, 9), -720}),
    [](const auto& each) { return std::string(each.param.claim); });

TEST(CalendarEvent, ANonexistentDateIsRefused)
{
    for (const char* text :
         {"2011-02-29", "2100-02-29", "2011-04-31", "2011-13-01", "2011-00-10", "2011-01-00", "2011-03-24T24:00",
          "2011-03-24T23:60", "2011-03-24T23:59:60", "2011-03-24T09:00+14:01", "2011-03-24T09:00-12:01",
          "2011-03-24T09:00-08:60", "2011-03-24T09:00-99:00", "1899-12-31", "9999-01-01"})
        EXPECT_EQ(complaint(with("start", text)),
                  std::string("start is \"") + text +
                      "\": expected a date that there is, such as 2027-03-24 or 2027-03-24T09:00-08:00");
}

TEST(CalendarEvent, AnInvalidDateIsRefused)
{
    for (const char* text : {"",
                             "tomorrow",
                             "2011",
                             "2011-03",
                             "2011-3-24",
                             "24.03.2011",
                             "20110324",
                             " 2011-03-24",
                             "2011-03-24 ",
                             "2011-03-24T",
                             "2011-03-24T9:00",
                             "2011-03-24T09",
                             "2011-03-24T09:00:",
                             "2011-03-24T09:00:0",
                             "2011-03-24T09:00:00.",
                             "2011-03-24T09:00:00.Z",
                             "2011-03-24Z",
                             "2011-03-24T09:00 Z",
                             "2011-03-24T09:00z",
                             "2011-03-24T09:00-8:00",
                             "2011-03-24T09:00-08",
                             "2011-03-24T09:00ZZ",
                             "+2011-03-24",
                             "2011-03-24T09:00-08:00x"})
        EXPECT_EQ(complaint(with("start", text)).substr(0, 10), "start is \"") << text;
}

TEST(CalendarEvent, ADateThatIsNotATextIsRefused)
{
    EXPECT_EQ(complaint({NSDictionary{{"description", "Concert"}}}),
              "start is missing: expected a date that there is, such as 2027-03-24 or 2027-03-24T09:00-08:00");
    EXPECT_EQ(complaint(with("start", nullptr)).substr(0, 16), "start is missing");
    EXPECT_EQ(complaint(with("start", 1300957200000)).substr(0, 23), "start is 1300957200000:");
    EXPECT_EQ(complaint(with("start", true)).substr(0, 14), "start is true:");
    EXPECT_EQ(complaint(with("start", NSArray{1})).substr(0, 16), "start is a list:");
    EXPECT_EQ(complaint(with("start", NSDictionary::dictionary())).substr(0, 18), "start is a record:");
}

// ----------------------------------------------------------------------------------------------------- start and end

TEST(CalendarEvent, AnEventWithoutAnEndTakesNoTime)
{
    EXPECT_EQ(read(concert()).end, std::nullopt);
    EXPECT_EQ(read(with("end", "2027-03-24T09:00-08:00")).end, std::nullopt);
}

TEST(CalendarEvent, AnEndIsConvertedToTheOffsetOfTheStart)
{
    EXPECT_EQ(read(with("end", "2027-03-24T10:30-08:00")).end, on(2027, 3, 24, 10, 30));
    EXPECT_EQ(read(with("end", "2027-03-24T18:30Z")).end, on(2027, 3, 24, 10, 30));
    EXPECT_EQ(read(with("end", "2027-03-25T00:00+05:30")).end, on(2027, 3, 24, 10, 30));
    EXPECT_EQ(read(with("end", "2027-03-24T10:30")).end, on(2027, 3, 24, 10, 30));
}

TEST(CalendarEvent, AnEndBeforeTheStartIsRefused)
{
    EXPECT_EQ(complaint(with("end", "2027-03-24T08:59-08:00")),
              "end is \"2027-03-24T08:59-08:00\": expected a date that is not before start");
    EXPECT_EQ(complaint(with("end", "2027-03-24T16:59Z")).substr(0, 6), "end is");
    EXPECT_EQ(complaint(with("end", "2027-03-23", with("start", "2027-03-24"))).substr(0, 6), "end is");
}

TEST(CalendarEvent, TheEndDayOfWholeDaysIsInclusive)
{
    const NSDictionary fair = with("start", "2027-03-24");

    EXPECT_EQ(read(fair).end, on(2027, 3, 25));
    EXPECT_EQ(read(with("end", "2027-03-24", fair)).end, on(2027, 3, 25));
    EXPECT_EQ(read(with("end", "2027-03-31", fair)).end, on(2027, 4, 1));
}

TEST(CalendarEvent, StartAndEndAreBothDaysOrBothTimes)
{
    EXPECT_EQ(complaint(with("end", "2027-03-25")), "end is \"2027-03-25\": expected a day with a time, as start is");
    EXPECT_EQ(complaint(with("end", "2027-03-25T10:00", with("start", "2027-03-24"))),
              "end is \"2027-03-25T10:00\": expected a day without a time, as start is one");
}

TEST(CalendarEvent, AnEndWithAnOffsetForAStartWithoutOneIsRefused)
{
    EXPECT_EQ(complaint(with("end", "2027-03-24T10:00Z", with("start", "2027-03-24T09:00"))),
              "end is \"2027-03-24T10:00Z\": expected a date without an offset, as start has none or the event has a "
              "timezone");
}

TEST(CalendarEvent, ATimezoneRequiresTimesWithoutAnOffset)
{
    const CalendarEvent event = read(with("timezone", "Europe/Berlin", with("start", "2027-03-24T09:00")));
    EXPECT_EQ(event.clock.zone, "Europe/Berlin");
    EXPECT_EQ(event.clock.offset, std::nullopt);

    EXPECT_EQ(complaint(with("timezone", "Europe/Berlin")),
              "start is \"2027-03-24T09:00-08:00\": expected a date without an offset, as start has none or the event "
              "has a timezone");
}

TEST(CalendarEvent, WholeDaysHaveNoTimezone)
{
    const CalendarEvent event = read(with("timezone", "Europe/Berlin", with("start", "2027-03-24")));

    EXPECT_FALSE(event.clock.zone);
    EXPECT_EQ(event.clock.offset, std::nullopt);
}

TEST(CalendarEvent, NamesOfZonesMustBePlainNames)
{
    for (const char* name : {"Europe/Berlin", "America/Argentina/Buenos_Aires", "Etc/GMT+5", "UTC", "EST5EDT"})
        EXPECT_EQ(complaint(with("timezone", name, with("start", "2027-03-24T09:00"))), "") << name;
    for (const char* name :
         {"", "/etc/passwd", "../Berlin", "Europe/../Berlin", "Europe//Berlin", "Europe/", "Ber lin", "+01:00"})
        EXPECT_EQ(complaint(with("timezone", name)),
                  std::string("timezone is \"") + name + "\": expected a time zone's name, such as Europe/Berlin");
    EXPECT_NE(complaint(with("timezone", "Europe/Berlin\n")), "");
    EXPECT_NE(complaint(with("timezone", std::string(65, 'a'))), "");
    EXPECT_EQ(complaint(with("timezone", 1)).substr(0, 14), "timezone is 1:");
}

// -------------------------------------------------------------------------------------------------------------- texts

TEST(CalendarEvent, TheSummaryIsTheTitleAndWithoutOneTheDescription)
{
    const CalendarEvent both = read(with("summary", "Band X"));
    EXPECT_EQ(both.title, "Band X");
    EXPECT_EQ(both.description, "Concert");

    const CalendarEvent one = read(concert());
    EXPECT_EQ(one.title, "Concert");
    EXPECT_FALSE(one.description);
}

TEST(CalendarEvent, ATitleIsOneLine)
{
    const CalendarEvent event = read(with("description", "Concert\nDoors at eight"));

    EXPECT_EQ(event.title, "Concert Doors at eight");
    EXPECT_EQ(event.description, "Concert\nDoors at eight");
}

TEST(CalendarEvent, WithoutAnyTextItIsRefused)
{
    EXPECT_EQ(complaint(NSDictionary{{"start", "2027-03-24"}}), "description is missing: expected a text");
    EXPECT_EQ(complaint(with("description", " \n\t ")), "description is missing: expected a text");
    EXPECT_EQ(complaint(NSDictionary{{"start", "2027-03-24"}, {"summary", "Concert"}}), "");
}

TEST(CalendarEvent, FieldsOfTextMustBeTexts)
{
    for (const char* name : {"id", "description", "location", "summary"})
        EXPECT_EQ(complaint(with(name, 7)), std::string(name) + " is 7: expected a text");
    EXPECT_EQ(complaint(with("location", nullptr)), "");
}

TEST(CalendarEvent, TextsHaveAMaximumLength)
{
    EXPECT_EQ(complaint(with("location", std::string(1024, 'x'))), "");
    EXPECT_EQ(complaint(with("location", std::string(1025, 'x'))),
              "location is 1025 bytes long: expected 1024 at most");
    EXPECT_EQ(complaint(with("summary", std::string(1025, 'x'))), "summary is 1025 bytes long: expected 1024 at most");
    EXPECT_EQ(complaint(with("id", std::string(1025, 'x'))), "id is 1025 bytes long: expected 1024 at most");
    EXPECT_EQ(complaint(with("description", std::string(8192, 'x'))), "");
    EXPECT_EQ(complaint(with("description", std::string(8193, 'x'))),
              "description is 8193 bytes long: expected 8192 at most");
}

TEST(CalendarEvent, ControlCharactersAndLineBreaksAreNormalized)
{
    const CalendarEvent event = read(with("description",
                                          "a\r\nb\rc\vd\x01"
                                          "e\tf\x7f"
                                          "g\xc2\x85h\xe2\x80\xa8i\xe2\x80\xa9j",
                                          with("summary", "s")));

    EXPECT_EQ(event.description, "a\nb\nc d e\tf g\nh\ni\nj");
}

TEST(CalendarEvent, ALongValueIsTruncatedBetweenCharacters)
{
    const std::string umlauts = [] {
        std::string text = "x";
        for (int n = 0; n < 100; ++n)
            text += "ä";
        return text;
    }();

    EXPECT_EQ(complaint(with("start", umlauts)).substr(0, 10 + 59 + 4), "start is \"" + umlauts.substr(0, 59) + "…\"");
}

// ------------------------------------------------------------------------------------------------------- enumerations

TEST(CalendarEvent, StatusIsOneOfFour)
{
    EXPECT_EQ(read(concert()).status, std::nullopt);
    EXPECT_EQ(read(with("status", "pending")).status, CalendarStatus::Tentative);
    EXPECT_EQ(read(with("status", "tentative")).status, CalendarStatus::Tentative);
    EXPECT_EQ(read(with("status", "confirmed")).status, CalendarStatus::Confirmed);
    EXPECT_EQ(read(with("status", "cancelled")).status, CalendarStatus::Cancelled);
    EXPECT_EQ(complaint(with("status", "Confirmed")),
              "status is \"Confirmed\": expected pending, tentative, confirmed or cancelled");
    EXPECT_EQ(complaint(with("status", 1)), "status is 1: expected pending, tentative, confirmed or cancelled");
}

TEST(CalendarEvent, TransparencyIsOneOfTwo)
{
    EXPECT_EQ(read(concert()).busy, std::nullopt);
    EXPECT_EQ(read(with("transparency", "opaque")).busy, true);
    EXPECT_EQ(read(with("transparency", "transparent")).busy, false);
    EXPECT_EQ(complaint(with("transparency", "")), "transparency is \"\": expected opaque or transparent");
}

TEST(CalendarEvent, UnknownPropertiesAreIgnored)
{
    EXPECT_EQ(complaint(with("attendees", NSArray{"a@b"})), "");
}

TEST(CalendarEvent, AnEventMustBeADictionary)
{
    EXPECT_EQ(complaint(nullptr), "the event is missing: expected a record");
    EXPECT_EQ(complaint("party"), "the event is \"party\": expected a record");
    EXPECT_EQ(complaint(7), "the event is 7: expected a record");
    EXPECT_EQ(complaint(NSArray{1}), "the event is a list: expected a record");
}

// ----------------------------------------------------------------------------------------------------------- reminder

TEST(CalendarEvent, AReminderCountsMillisecondsBeforeTheStart)
{
    EXPECT_EQ(read(concert()).reminder, std::nullopt);
    EXPECT_EQ(read(with("reminder", -3600000)).reminder, 3600);
    EXPECT_EQ(read(with("reminder", -1500.0)).reminder, 1);
    EXPECT_EQ(read(with("reminder", "-60000")).reminder, 60);
    EXPECT_EQ(read(with("reminder", 0)).reminder, 0);
}

TEST(CalendarEvent, AReminderMayBeADate)
{
    EXPECT_EQ(read(with("reminder", "2027-03-24T08:00-08:00")).reminder, 3600);
    EXPECT_EQ(read(with("reminder", "2027-03-24T16:00Z")).reminder, 3600);
    EXPECT_EQ(read(with("reminder", "2027-03-24")).reminder, 9 * 3600);
}

TEST(CalendarEvent, ALateOrInvalidReminderIsRefused)
{
    EXPECT_EQ(complaint(with("reminder", 1)), "reminder is 1: expected a time that is not after start");
    EXPECT_EQ(complaint(with("reminder", "2027-03-24T09:01-08:00")),
              "reminder is \"2027-03-24T09:01-08:00\": expected a time that is not after start");
    EXPECT_EQ(complaint(with("reminder", -1e15)), "reminder is -1e+15: expected a time within a year before start");
    for (const char* text : {"", "soon", "nan", "-1h"})
        EXPECT_EQ(complaint(with("reminder", text)),
                  std::string("reminder is \"") + text +
                      "\": expected milliseconds before the start, such as -3600000, or a date");
    EXPECT_EQ(complaint(with("reminder", true)).substr(0, 16), "reminder is true");
    EXPECT_EQ(complaint(with("reminder", NSArray{1})).substr(0, 18), "reminder is a list");
}

// --------------------------------------------------------------------------------------------------------- recurrence

TEST(CalendarRecurrences, HaveAFrequency)
{
    using Frequency = CalendarRecurrence::Frequency;
    EXPECT_FALSE(read(concert()).recurrence);
    EXPECT_EQ(rule({{"frequency", "daily"}}).frequency, Frequency::Daily);
    EXPECT_EQ(rule({{"frequency", "weekly"}}).frequency, Frequency::Weekly);
    EXPECT_EQ(rule({{"frequency", "monthly"}}).frequency, Frequency::Monthly);
    EXPECT_EQ(rule({{"frequency", "yearly"}}).frequency, Frequency::Yearly);
    EXPECT_EQ(complaint(repeated({{"frequency", "hourly"}})),
              "recurrence.frequency is \"hourly\": expected daily, weekly, monthly or yearly");
    EXPECT_EQ(complaint(repeated(NSDictionary::dictionary())),
              "recurrence.frequency is missing: expected daily, weekly, monthly or yearly");
    EXPECT_EQ(complaint(with("recurrence", "daily")), "recurrence is \"daily\": expected a record");
}

TEST(CalendarRecurrences, HaveAnInterval)
{
    EXPECT_EQ(rule({{"frequency", "daily"}}).interval, 1);
    EXPECT_EQ(rule({{"frequency", "daily"}, {"interval", 2}}).interval, 2);
    EXPECT_EQ(rule({{"frequency", "daily"}, {"interval", 2.0}}).interval, 2);
    for (const Value& wrong : {Value(0), Value(-1), Value(1000), Value(1.5), Value("2"), Value(true)})
        EXPECT_NE(complaint(repeated({{"frequency", "daily"}, {"interval", wrong}}))
                      .find("expected a whole number from 1 to 999"),
                  std::string::npos);
}

TEST(CalendarRecurrences, ExpireAtATimeOrOnADate)
{
    EXPECT_EQ(rule({{"frequency", "daily"}, {"expires", "2027-04-01T09:00-08:00"}}).until, on(2027, 4, 1, 9));
    EXPECT_EQ(rule({{"frequency", "daily"}, {"expires", "2027-04-01T17:00Z"}}).until, on(2027, 4, 1, 9));
    EXPECT_EQ(rule({{"frequency", "daily"}, {"expires", "2027-04-01"}}).until, on(2027, 4, 1, 23, 59, 59));
    EXPECT_EQ(rule({{"frequency", "daily"}, {"expires", "2027-04-01T09:00"}}, "2027-03-24").until, on(2027, 4, 1));
    EXPECT_EQ(complaint(repeated({{"frequency", "daily"}, {"expires", "2027-03-23"}})),
              "recurrence.expires is \"2027-03-23\": expected a date that is not before start");
    EXPECT_EQ(complaint(repeated({{"frequency", "daily"}, {"expires", "never"}})),
              "recurrence.expires is \"never\": expected a date that there is, such as 2027-03-24 or "
              "2027-03-24T09:00-08:00");
}

TEST(CalendarRecurrences, ExcludeTimesAndDates)
{
    EXPECT_EQ(
        rule({{"frequency", "daily"}, {"exceptionDates", NSArray{"2027-03-27", "2027-03-25T17:00Z", "2027-03-27"}}})
            .exceptions,
        (std::vector<WallTime>{on(2027, 3, 25, 9), on(2027, 3, 27, 9)}));
    EXPECT_EQ(rule({{"frequency", "daily"}, {"exceptionDates", NSArray{"2027-03-27"}}}, "2027-03-24").exceptions,
              (std::vector<WallTime>{on(2027, 3, 27)}));
    EXPECT_EQ(complaint(repeated({{"frequency", "daily"}, {"exceptionDates", NSArray{"2027-03-27", 7}}})),
              "recurrence.exceptionDates[1] is 7: expected a date that there is, such as 2027-03-24 or "
              "2027-03-24T09:00-08:00");
    EXPECT_EQ(complaint(repeated({{"frequency", "daily"}, {"exceptionDates", "2027-03-27"}})),
              "recurrence.exceptionDates is \"2027-03-27\": expected a list");
}

TEST(CalendarRecurrences, NameDaysWeeksAndMonths)
{
    EXPECT_EQ(rule({{"frequency", "weekly"}, {"daysInWeek", NSArray{6, 0, 6}}}).days_in_week, (std::vector<int>{0, 6}));
    EXPECT_EQ(rule({{"frequency", "monthly"}, {"daysInMonth", NSArray{15, 31}}}).days_in_month,
              (std::vector<int>{15, 31}));
    EXPECT_EQ(rule({{"frequency", "yearly"}, {"daysInYear", NSArray{1, 366}}}).days_in_year,
              (std::vector<int>{1, 366}));
    EXPECT_EQ(rule({{"frequency", "yearly"}, {"monthsInYear", NSArray{12, 1}}}).months_in_year,
              (std::vector<int>{1, 12}));
}

TEST(CalendarRecurrences, CountFromTheEndStartingAtZero)
{
    EXPECT_EQ(rule({{"frequency", "monthly"}, {"daysInMonth", NSArray{0, -30}}}).days_in_month,
              (std::vector<int>{-31, -1}));
    EXPECT_EQ(rule({{"frequency", "yearly"}, {"daysInYear", NSArray{0, -365}}}).days_in_year,
              (std::vector<int>{-366, -1}));
    EXPECT_EQ(
        rule({{"frequency", "monthly"}, {"daysInWeek", NSArray{5}}, {"weeksInMonth", NSArray{0, 2}}}).weeks_in_month,
        (std::vector<int>{-1, 2}));
}

TEST(CalendarRecurrences, DefaultToTheStart)
{
    EXPECT_EQ(rule({{"frequency", "monthly"}, {"weeksInMonth", NSArray{4}}}).days_in_week, std::vector<int>{3});
    EXPECT_EQ(rule({{"frequency", "yearly"}, {"daysInMonth", NSArray{1}}}).months_in_year, std::vector<int>{3});
    EXPECT_EQ(rule({{"frequency", "monthly"}, {"daysInMonth", NSArray{1}}}).months_in_year, std::vector<int>{});
}

TEST(CalendarRecurrences, RefuseInvalidDayNumbers)
{
    struct Range {
        const char* list;
        const char* frequency;
        int lowest;
        int highest;
    };
    for (const Range& range : {Range{"daysInWeek", "weekly", 0, 6}, Range{"daysInMonth", "monthly", -30, 31},
                               Range{"daysInYear", "yearly", -365, 366}, Range{"weeksInMonth", "monthly", -4, 5},
                               Range{"monthsInYear", "yearly", 1, 12}}) {
        const auto with_number = [&](const Value& number) {
            return complaint(repeated({{"frequency", range.frequency}, {range.list, NSArray{number}}}));
        };
        EXPECT_EQ(with_number(range.lowest), "");
        EXPECT_EQ(with_number(range.highest), "");
        for (const Value& wrong : {Value(range.lowest - 1), Value(range.highest + 1), Value(1.5), Value("1"), Value(),
                                   Value(true), Value(std::int64_t{1} << 40)})
            EXPECT_NE(with_number(wrong).find(std::string("recurrence.") + range.list + "[0] is"), std::string::npos)
                << range.list;
        EXPECT_EQ(with_number("1"), std::string("recurrence.") + range.list +
                                        "[0] is \"1\": expected a whole number from " + std::to_string(range.lowest) +
                                        " to " + std::to_string(range.highest));
    }
}

TEST(CalendarRecurrences, RefuseListsThatDoNotFit)
{
    EXPECT_EQ(complaint(repeated({{"frequency", "weekly"}, {"daysInMonth", NSArray{1}}})),
              "recurrence.frequency is \"weekly\": expected monthly or yearly with daysInMonth");
    EXPECT_EQ(complaint(repeated({{"frequency", "daily"}, {"weeksInMonth", NSArray{1}}})),
              "recurrence.frequency is \"daily\": expected monthly or yearly with weeksInMonth");
    EXPECT_EQ(complaint(repeated({{"frequency", "monthly"}, {"daysInYear", NSArray{1}}})),
              "recurrence.frequency is \"monthly\": expected yearly with daysInYear");
    EXPECT_EQ(complaint(repeated({{"frequency", "yearly"}, {"daysInYear", NSArray{1}}, {"monthsInYear", NSArray{1}}})),
              "recurrence.daysInYear stands beside other lists: expected it alone");
    EXPECT_EQ(
        complaint(repeated({{"frequency", "monthly"}, {"daysInMonth", NSArray{1}}, {"weeksInMonth", NSArray{1}}})),
        "recurrence.weeksInMonth stands beside recurrence.daysInMonth: expected one of them");
    EXPECT_EQ(complaint(repeated(
                  {{"frequency", "daily"}, {"daysInMonth", NSArray(std::vector<Value>())}, {"daysInYear", nullptr}})),
              "");
}

TEST(CalendarRecurrences, HaveNoEndlessLists)
{
    EXPECT_EQ(complaint(repeated(
                  {{"frequency", "daily"}, {"exceptionDates", NSArray(std::vector<Value>(367, "2027-03-27"))}})),
              "recurrence.exceptionDates has 367 entries: expected 366 at most");
    EXPECT_EQ(complaint(repeated({{"frequency", "daily"}, {"monthsInYear", NSArray(std::vector<Value>(367, 1))}})),
              "recurrence.monthsInYear has 367 entries: expected 366 at most");
}

// -------------------------------------------------------------------------------------------------------- random input

/// Generates random values of every kind, often close to a valid event's.
class Anything
{
public:
    Value value(int depth)
    {
        static const std::vector<Value> Near{"2027-03-24",
                                             "2027-03-24T09:00",
                                             "2027-03-24T09:00-08:00",
                                             "9998-12-31",
                                             "1900-01-01T00:00+14:00",
                                             "Europe/Berlin",
                                             "daily",
                                             "yearly",
                                             "opaque",
                                             "pending",
                                             "-3600000",
                                             "\xff\xfe",
                                             "",
                                             0,
                                             -1,
                                             7,
                                             1e300,
                                             -1e300,
                                             true,
                                             Value(),
                                             std::int64_t{1} << 62};
        const int kind = below(depth > 0 ? 6 : 4);
        if (kind < 3)
            return Near[static_cast<std::size_t>(below(static_cast<int>(Near.size())))];
        if (kind == 3)
            return text();
        if (kind == 5)
            return event(depth - 1);
        std::vector<Value> list;
        for (int n = below(4); n > 0; --n)
            list.push_back(value(depth - 1));
        return NSArray(std::move(list));
    }
    NSDictionary event(int depth)
    {
        static const std::vector<std::string> Names{
            "id",         "description",  "location",       "summary",    "start",        "end",         "status",
            "timezone",   "transparency", "recurrence",     "reminder",   "frequency",    "interval",    "expires",
            "daysInWeek", "daysInMonth",  "exceptionDates", "daysInYear", "weeksInMonth", "monthsInYear"};
        NSDictionary record = below(2) == 0 ? NSDictionary::dictionary() : concert();
        for (int n = below(12); n > 0; --n)
            record.setObject(value(depth), Names[static_cast<std::size_t>(below(static_cast<int>(Names.size())))]);
        return record;
    }

private:
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(numbers_); }
    std::string text()
    {
        static constexpr std::string_view Letters = "0123456789-:T.Z+ \n\r\x80/aä";
        std::string made;
        for (int n = below(30); n > 0; --n)
            made += Letters[static_cast<std::size_t>(below(static_cast<int>(Letters.size())))];
        return made;
    }

    std::mt19937 numbers_{20270324};
};

TEST(CalendarEvent, AnyInputIsAnEventOrRefusedInOneLine)
{
    Anything anything;
    int events = 0;
    for (int n = 0; n < 20'000; ++n) {
        const CalendarEventReading reading = read_calendar_event(anything.value(3));
        if (reading.error) {
            ASSERT_FALSE(reading.error.text().empty());
            ASSERT_LT(reading.error.length(), 300U);
            continue;
        }
        ++events;
        const CalendarEvent& event = reading.event;
        ASSERT_TRUE(event.title);
        ASSERT_FALSE(event.title.text().empty());
        ASSERT_GE(event.start, on(1899, 12, 31));
        ASSERT_LE(event.start, on(9999, 1, 1));
        if (event.end) {
            ASSERT_GT(*event.end, event.start);
            ASSERT_LE(*event.end, on(9999, 1, 2));
        }
        ASSERT_GE(event.reminder.value_or(0), 0);
        if (event.recurrence) {
            ASSERT_GE(event.recurrence->until.value_or(event.start), event.start);
        }
    }
    EXPECT_GT(events, 100) << "the events that came of it are too few to say anything";
}

} // namespace
} // namespace qoro
