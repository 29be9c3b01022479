#include "desktop/calendar/EventText.h"
#include "kit/CalendarEvent.h"

#include <gtest/gtest.h>
#include <libical/ical.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// Events as a page passes them: written by event_text() and parsed again with libical.

namespace qoro::test
{
namespace
{

using Texts = std::vector<std::string>;

constexpr std::int64_t Made = 1'800'000'000; // 2027-01-15T08:00:00Z

struct FreeComponent {
    void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
struct FreeText {
    void operator()(char* text) const { icalmemory_free_buffer(text); }
};

std::string text_of(icaltimetype time)
{
    return std::unique_ptr<char, FreeText>(icaltime_as_ical_string_r(time)).get();
}

/// A written event, parsed again.
class ReadBack
{
public:
    explicit ReadBack(const NSDictionary& given)
    {
        const CalendarEventReading reading = read_calendar_event(given);
        EXPECT_EQ(reading.error, NSString());
        text = event_text(reading.event, {.uid = "u-1", .made = Made}).text();
        calendar_.reset(icalparser_parse_string(text.c_str()));
        EXPECT_TRUE(calendar_);
        EXPECT_EQ(icalcomponent_count_errors(calendar_.get()), 0) << text;
        EXPECT_TRUE(icalrestriction_check(calendar_.get())) << text;
        event_ = icalcomponent_get_first_component(calendar_.get(), ICAL_VEVENT_COMPONENT);
    }

    icalcomponent* event() const { return event_; }
    icalcomponent* calendar() const { return calendar_.get(); }
    icalcomponent* alarm() const { return icalcomponent_get_first_component(event_, ICAL_VALARM_COMPONENT); }
    /// The property's content line, unfolded (RFC 5545, section 3.1); empty if the event has no such property.
    std::string property(icalproperty_kind kind) const { return property_of(event_, kind); }
    static std::string property_of(icalcomponent* component, icalproperty_kind kind)
    {
        icalproperty* const found = icalcomponent_get_first_property(component, kind);
        if (!found)
            return "";
        std::string line = std::unique_ptr<char, FreeText>(icalproperty_as_ical_string_r(found)).get();
        for (std::size_t fold = 0; (fold = line.find("\r\n ")) != std::string::npos;)
            line.erase(fold, 3);
        return line.substr(0, line.find('\r'));
    }
    /// The first occurrences, in UTC; dates for all-day events.
    /// @param most maximum number of occurrences
    Texts occurrences(std::size_t most) const
    {
        struct Found {
            Texts times;
            std::size_t most;
        } found{{}, most};
        icalcomponent_foreach_recurrence(
            event_, icaltime_from_string("19000101T000000Z"), icaltime_from_string("20400101T000000Z"),
            [](icalcomponent*, icaltime_span* span, void* data) {
                Found& to = *static_cast<Found*>(data);
                if (to.times.size() < to.most)
                    to.times.push_back(
                        text_of(icaltime_from_timet_with_zone(span->start, 0, icaltimezone_get_utc_timezone())));
            },
            &found);
        return found.times;
    }

    std::string text;

private:
    std::unique_ptr<icalcomponent, FreeComponent> calendar_;
    icalcomponent* event_ = nullptr;
};

NSDictionary at(const char* start)
{
    return {{"description", "Concert"}, {"start", start}};
}

NSDictionary with(NSDictionary event, const std::string& key, const Value& value)
{
    event.setObject(value, key);
    return event;
}

NSDictionary repeated(const char* start, const NSDictionary& recurrence)
{
    return with(at(start), "recurrence", recurrence);
}

// ------------------------------------------------------------------------------------------------------ single events

TEST(EventText, AnEventHasItsTimestampAndItsProducer)
{
    const ReadBack read(at("2027-03-24T09:00-08:00"));

    EXPECT_EQ(ReadBack::property_of(read.calendar(), ICAL_VERSION_PROPERTY), "VERSION:2.0");
    EXPECT_EQ(ReadBack::property_of(read.calendar(), ICAL_PRODID_PROPERTY), "PRODID:-//Qoro//Qoro Video Ad//EN");
    EXPECT_EQ(read.property(ICAL_UID_PROPERTY), "UID:u-1");
    EXPECT_EQ(read.property(ICAL_DTSTAMP_PROPERTY), "DTSTAMP:20270115T080000Z");
    EXPECT_EQ(read.property(ICAL_SUMMARY_PROPERTY), "SUMMARY:Concert");
    EXPECT_TRUE(read.text.ends_with("END:VCALENDAR\r\n"));
}

TEST(EventText, ASingleMomentIsInUtc)
{
    const ReadBack read(with(at("2027-03-24T22:00-08:00"), "end", "2027-03-24T23:30-08:00"));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART:20270325T060000Z");
    EXPECT_EQ(read.property(ICAL_DTEND_PROPERTY), "DTEND:20270325T073000Z");
}

TEST(EventText, ATimeOfDayWithoutAZoneStaysFloating)
{
    const ReadBack read(at("2027-03-24T22:00"));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART:20270324T220000");
    EXPECT_EQ(read.property(ICAL_DTEND_PROPERTY), "");
}

TEST(EventText, WholeDaysEndWithTheDayAfter)
{
    const ReadBack read(with(at("2027-02-27"), "end", "2027-02-28"));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART;VALUE=DATE:20270227");
    EXPECT_EQ(read.property(ICAL_DTEND_PROPERTY), "DTEND;VALUE=DATE:20270301");
}

TEST(EventText, AZoneIsWrittenWithItsRules)
{
    const ReadBack read(with(at("2027-07-01T20:00"), "timezone", "Europe/Berlin"));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART;TZID=Europe/Berlin:20270701T200000");
    icalcomponent* const zone = icalcomponent_get_first_component(read.calendar(), ICAL_VTIMEZONE_COMPONENT);
    ASSERT_TRUE(zone);
    EXPECT_EQ(ReadBack::property_of(zone, ICAL_TZID_PROPERTY), "TZID:Europe/Berlin");
    EXPECT_EQ(read.occurrences(9), Texts{"20270701T180000Z"});
}

TEST(EventText, AnAliasOfAZoneIsKnownAndUtcNeedsNoRules)
{
    EXPECT_EQ(ReadBack(with(at("2027-07-01T20:00"), "timezone", "US/Pacific")).occurrences(9),
              Texts{"20270702T030000Z"});
    const ReadBack utc(with(at("2027-07-01T20:00"), "timezone", "UTC"));
    EXPECT_EQ(utc.property(ICAL_DTSTART_PROPERTY), "DTSTART:20270701T200000Z");
}

TEST(EventText, AnUnknownZoneMakesNoText)
{
    const CalendarEventReading reading = read_calendar_event(with(at("2027-07-01T20:00"), "timezone", "Mars/Olympus"));

    EXPECT_FALSE(event_text(reading.event, {.uid = "u-1", .made = Made}));
}

TEST(EventText, AnEventContainsItsProperties)
{
    NSDictionary event = at("2027-03-24T09:00Z");
    event.setObject("Band X", "summary");
    event.setObject("Hall 3", "location");
    event.setObject("pending", "status");
    event.setObject("transparent", "transparency");
    event.setObject(-5400000, "reminder");
    const ReadBack read(event);

    EXPECT_EQ(read.property(ICAL_SUMMARY_PROPERTY), "SUMMARY:Band X");
    EXPECT_EQ(read.property(ICAL_DESCRIPTION_PROPERTY), "DESCRIPTION:Concert");
    EXPECT_EQ(read.property(ICAL_LOCATION_PROPERTY), "LOCATION:Hall 3");
    EXPECT_EQ(read.property(ICAL_STATUS_PROPERTY), "STATUS:TENTATIVE");
    EXPECT_EQ(read.property(ICAL_TRANSP_PROPERTY), "TRANSP:TRANSPARENT");
    ASSERT_TRUE(read.alarm());
    EXPECT_EQ(ReadBack::property_of(read.alarm(), ICAL_ACTION_PROPERTY), "ACTION:DISPLAY");
    EXPECT_EQ(ReadBack::property_of(read.alarm(), ICAL_TRIGGER_PROPERTY), "TRIGGER:-PT1H30M");
    EXPECT_EQ(ReadBack::property_of(read.alarm(), ICAL_DESCRIPTION_PROPERTY), "DESCRIPTION:Band X");
}

TEST(EventText, EachStatusHasItsWordAndNoStatusWritesNothing)
{
    const auto status = [](const char* given) {
        return ReadBack(with(at("2027-03-24"), "status", given)).property(ICAL_STATUS_PROPERTY);
    };
    EXPECT_EQ(status("tentative"), "STATUS:TENTATIVE");
    EXPECT_EQ(status("confirmed"), "STATUS:CONFIRMED");
    EXPECT_EQ(status("cancelled"), "STATUS:CANCELLED");
    const ReadBack bare(at("2027-03-24"));
    for (const icalproperty_kind kind : {ICAL_STATUS_PROPERTY, ICAL_TRANSP_PROPERTY, ICAL_LOCATION_PROPERTY,
                                         ICAL_DESCRIPTION_PROPERTY, ICAL_RRULE_PROPERTY, ICAL_EXDATE_PROPERTY})
        EXPECT_EQ(bare.property(kind), "");
    EXPECT_FALSE(bare.alarm());
    EXPECT_EQ(ReadBack(with(at("2027-03-24"), "transparency", "opaque")).property(ICAL_TRANSP_PROPERTY),
              "TRANSP:OPAQUE");
}

TEST(EventText, AReminderAtTheStartIsWritten)
{
    const ReadBack read(with(at("2027-03-24T09:00Z"), "reminder", 0));

    ASSERT_TRUE(read.alarm());
    EXPECT_EQ(ReadBack::property_of(read.alarm(), ICAL_TRIGGER_PROPERTY), "TRIGGER:PT0S");
}

TEST(EventText, TextsSurviveARoundTripAndBreakNoLine)
{
    const std::string odd = "a;b,c\\d\\n\"e\"\nEND:VEVENT\nBEGIN:VALARM\nACTION:AUDIO: ÄÖ€𝄞";
    const ReadBack read(with(with(at("2027-03-24"), "summary", "s"), "description", odd));

    EXPECT_EQ(std::string(icalcomponent_get_description(read.event())), odd);
    EXPECT_EQ(icalcomponent_count_components(read.calendar(), ICAL_VEVENT_COMPONENT), 1);
    EXPECT_FALSE(read.alarm());
}

TEST(EventText, NoLineIsLongerThan75BytesAndNoCharacterIsSplit)
{
    for (const std::string letter : {"x", "ä", "€", "𝄞"}) {
        std::string location;
        while (location.size() + letter.size() <= 1024)
            location += letter;
        const ReadBack read(with(at("2027-03-24"), "location", location));

        std::istringstream lines(read.text);
        for (std::string line; std::getline(lines, line);) {
            ASSERT_TRUE(line.ends_with('\r')) << line;
            EXPECT_LE(line.size() - 1, 75U) << line;
            EXPECT_TRUE(NSString::with_utf8(line)) << line;
        }
        EXPECT_EQ(std::string(icalcomponent_get_location(read.event())), location);
    }
}

// --------------------------------------------------------------------------------------------------------- recurrence

TEST(EventText, AMondayNightBehindUtcStaysAMondayNight)
{
    const ReadBack read(repeated("2027-03-22T22:00-08:00", {{"frequency", "weekly"}, {"daysInWeek", NSArray{1}}}));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART;TZID=UTC-0800:20270322T220000");
    EXPECT_EQ(read.property(ICAL_RRULE_PROPERTY), "RRULE:FREQ=WEEKLY;BYDAY=MO");
    EXPECT_EQ(read.occurrences(3), (Texts{"20270323T060000Z", "20270330T060000Z", "20270406T060000Z"}));
}

TEST(EventText, AMondayMorningAheadOfUtcStaysAMondayMorning)
{
    const ReadBack read(repeated("2027-03-22T03:00+05:45", {{"frequency", "weekly"}, {"daysInWeek", NSArray{1, 2}}}));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART;TZID=UTC+0545:20270322T030000");
    EXPECT_EQ(read.occurrences(3), (Texts{"20270321T211500Z", "20270322T211500Z", "20270328T211500Z"}));
}

TEST(EventText, AnEveningInAZoneFollowsItsSummerTime)
{
    // Daylight saving time begins on 28 March 2027 and ends on 31 October.
    const ReadBack spring(with(repeated("2027-03-27T20:00", {{"frequency", "daily"}}), "timezone", "Europe/Berlin"));
    EXPECT_EQ(spring.occurrences(3), (Texts{"20270327T190000Z", "20270328T180000Z", "20270329T180000Z"}));

    const ReadBack autumn(with(repeated("2027-10-24T20:00", {{"frequency", "weekly"}}), "timezone", "Europe/Berlin"));
    EXPECT_EQ(autumn.occurrences(3), (Texts{"20271024T180000Z", "20271031T190000Z", "20271107T190000Z"}));
}

TEST(EventText, ATimeInUtcNeedsNoZone)
{
    const ReadBack read(repeated("2027-03-22T22:00Z", {{"frequency", "weekly"}, {"daysInWeek", NSArray{1}}}));

    EXPECT_EQ(read.property(ICAL_DTSTART_PROPERTY), "DTSTART:20270322T220000Z");
    EXPECT_EQ(read.occurrences(2), (Texts{"20270322T220000Z", "20270329T220000Z"}));
}

TEST(EventText, TheLastOccurrenceIsOnTheDayOfExpiry)
{
    EXPECT_EQ(ReadBack(repeated("2027-03-22T22:00-08:00", {{"frequency", "daily"}, {"expires", "2027-03-24"}}))
                  .occurrences(9),
              (Texts{"20270323T060000Z", "20270324T060000Z", "20270325T060000Z"}));
    EXPECT_EQ(ReadBack(with(repeated("2027-03-26T23:30", {{"frequency", "daily"}, {"expires", "2027-03-28"}}),
                            "timezone", "Europe/Berlin"))
                  .occurrences(9),
              (Texts{"20270326T223000Z", "20270327T223000Z", "20270328T213000Z"}));
    EXPECT_EQ(ReadBack(repeated("2027-03-22", {{"frequency", "daily"}, {"expires", "2027-03-23"}}))
                  .property(ICAL_RRULE_PROPERTY),
              "RRULE:FREQ=DAILY;UNTIL=20270323");
    EXPECT_EQ(ReadBack(repeated("2027-03-22T22:00", {{"frequency", "daily"}, {"expires", "2027-03-23T22:00"}}))
                  .property(ICAL_RRULE_PROPERTY),
              "RRULE:FREQ=DAILY;UNTIL=20270323T220000");
}

TEST(EventText, TheEndOfARuleIsInUtcWhereTheZoneIsKnown)
{
    EXPECT_EQ(ReadBack(repeated("2027-03-22T22:00-08:00", {{"frequency", "daily"}, {"expires", "2027-03-24"}}))
                  .property(ICAL_RRULE_PROPERTY),
              "RRULE:FREQ=DAILY;UNTIL=20270325T075959Z");
    EXPECT_EQ(ReadBack(with(repeated("2027-03-26T23:30", {{"frequency", "daily"}, {"expires", "2027-03-28"}}),
                            "timezone", "Europe/Berlin"))
                  .property(ICAL_RRULE_PROPERTY),
              "RRULE:FREQ=DAILY;UNTIL=20270328T215959Z");
    EXPECT_EQ(ReadBack(repeated("2027-03-22T22:00Z", {{"frequency", "daily"}, {"expires", "2027-03-24"}}))
                  .property(ICAL_RRULE_PROPERTY),
              "RRULE:FREQ=DAILY;UNTIL=20270324T235959Z");
}

TEST(EventText, ExceptionsAreLeftOut)
{
    const ReadBack moments(
        repeated("2027-03-22T22:00-08:00",
                 {{"frequency", "daily"}, {"exceptionDates", NSArray{"2027-03-23", "2027-03-25T06:00Z"}}}));
    EXPECT_EQ(moments.occurrences(2), (Texts{"20270323T060000Z", "20270326T060000Z"}));
    EXPECT_EQ(moments.property(ICAL_EXDATE_PROPERTY), "EXDATE;TZID=UTC-0800:20270323T220000");

    const ReadBack days(repeated("2027-03-22", {{"frequency", "daily"}, {"exceptionDates", NSArray{"2027-03-23"}}}));
    EXPECT_EQ(days.property(ICAL_EXDATE_PROPERTY), "EXDATE;VALUE=DATE:20270323");
    EXPECT_EQ(days.occurrences(2), (Texts{"20270322T000000Z", "20270324T000000Z"}));
}

TEST(EventText, ListsOfDaysAndMonthsSetTheOccurrences)
{
    const auto times = [](const char* start, const NSDictionary& recurrence) {
        Texts days;
        for (const std::string& time : ReadBack(repeated(start, recurrence)).occurrences(4))
            days.push_back(time.substr(0, 8));
        return days;
    };
    EXPECT_EQ(times("2027-01-01", {{"frequency", "daily"}, {"interval", 10}}),
              (Texts{"20270101", "20270111", "20270121", "20270131"}));
    EXPECT_EQ(times("2027-01-31", {{"frequency", "monthly"}, {"daysInMonth", NSArray{0}}}),
              (Texts{"20270131", "20270228", "20270331", "20270430"}));
    EXPECT_EQ(times("2027-01-15", {{"frequency", "monthly"}, {"daysInMonth", NSArray{15, 28}}}),
              (Texts{"20270115", "20270128", "20270215", "20270228"}));
    EXPECT_EQ(times("2027-01-29", {{"frequency", "monthly"}, {"daysInWeek", NSArray{5}}, {"weeksInMonth", NSArray{0}}}),
              (Texts{"20270129", "20270226", "20270326", "20270430"}))
        << "the last Friday";
    EXPECT_EQ(times("2027-01-12", {{"frequency", "monthly"}, {"weeksInMonth", NSArray{2}}}),
              (Texts{"20270112", "20270209", "20270309", "20270413"}))
        << "the second Tuesday, as the start is one";
    EXPECT_EQ(times("2027-05-09", {{"frequency", "yearly"}, {"daysInWeek", NSArray{0}}, {"weeksInMonth", NSArray{2}}}),
              (Texts{"20270509", "20280514", "20290513", "20300512"}))
        << "the second Sunday in May";
    EXPECT_EQ(times("2027-12-31", {{"frequency", "yearly"}, {"daysInYear", NSArray{0}}}),
              (Texts{"20271231", "20281231", "20291231", "20301231"}));
    EXPECT_EQ(times("2027-01-10", {{"frequency", "yearly"}, {"monthsInYear", NSArray{1, 7}}}),
              (Texts{"20270110", "20270710", "20280110", "20280710"}));
    EXPECT_EQ(times("2027-08-13", {{"frequency", "monthly"}, {"daysInWeek", NSArray{5}}, {"daysInMonth", NSArray{13}}}),
              (Texts{"20270813", "20281013", "20290413", "20290713"}))
        << "Friday the thirteenth";
}

} // namespace
} // namespace qoro::test
