#include "desktop/calendar/EventText.h"

#include <libical/ical.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace qoro
{

namespace
{

constexpr WallTime Minute = 60;
/// Earlier than any event.
constexpr const char* LongAgo = "19000101T000000";

struct FreeComponent {
    void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
using Component = std::unique_ptr<icalcomponent, FreeComponent>;

struct FreeText {
    void operator()(char* text) const { icalmemory_free_buffer(text); }
};
using Text = std::unique_ptr<char, FreeText>;

Component make_component(icalcomponent_kind kind)
{
    return Component(icalcomponent_new(kind));
}

void add(const Component& to, icalproperty* property)
{
    icalcomponent_add_property(to.get(), property);
}

void add(const Component& to, Component part)
{
    icalcomponent_add_component(to.get(), part.release());
}

// -------------------------------------------------------------------------------------------------------------- Clock

/// Name of a fixed UTC offset: "UTC-0800".
std::string name_of_offset(int minutes)
{
    const int ahead = std::abs(minutes);
    const auto two = [](int number) { return std::to_string(100 + number).substr(1); };
    return std::string(minutes < 0 ? "UTC-" : "UTC+") + two(ahead / 60) + two(ahead % 60);
}

/// A zone with the same UTC offset, in minutes, all year.
Component fixed_zone(const std::string& name, int minutes)
{
    Component standard = make_component(ICAL_XSTANDARD_COMPONENT);
    add(standard, icalproperty_new_dtstart(icaltime_from_string(LongAgo)));
    add(standard, icalproperty_new_tzname(name.c_str()));
    add(standard, icalproperty_new_tzoffsetfrom(minutes * 60));
    add(standard, icalproperty_new_tzoffsetto(minutes * 60));
    Component zone = make_component(ICAL_VTIMEZONE_COMPONENT);
    add(zone, icalproperty_new_tzid(name.c_str()));
    add(zone, std::move(standard));
    return zone;
}

/// A zone's rules under its standard name; the library's own identifier means nothing to other programs.
Component named_zone(icaltimezone* zone, const std::string& name)
{
    Component rules(icalcomponent_new_clone(icaltimezone_get_component(zone)));
    icalproperty_set_tzid(icalcomponent_get_first_property(rules.get(), ICAL_TZID_PROPERTY), name.c_str());
    return rules;
}

/// How an event's times are written.
struct WrittenClock {
    enum class Kind { Days, Floating, Utc, Zone };
    Kind kind = Kind::Floating;
    /// Minutes ahead of UTC, if that is constant.
    int offset = 0;
    /// The zone, if its offset varies; null otherwise.
    icaltimezone* zone = nullptr;
    /// Only for Kind::Zone.
    std::string name = {};

    icaltimetype as_shown(WallTime time) const
    {
        return icaltime_from_timet_with_zone(time, kind == Kind::Days, nullptr);
    }
    icaltimetype in_utc(WallTime time) const
    {
        icaltimezone* const utc = icaltimezone_get_utc_timezone();
        if (!zone)
            return icaltime_from_timet_with_zone(time - offset * Minute, 0, utc);
        icaltimetype shown = as_shown(time);
        icaltime_set_timezone(&shown, zone);
        return icaltime_convert_to_zone(shown, utc);
    }
    icaltimetype written(WallTime time) const { return kind == Kind::Utc ? in_utc(time) : as_shown(time); }
    /// The end of a recurrence is in UTC unless the start is a date or floating (RFC 5545, 3.3.10).
    icaltimetype written_end(WallTime time) const { return kind == Kind::Zone ? in_utc(time) : written(time); }

    icalproperty* dated(icalproperty* property) const
    {
        if (kind == Kind::Zone)
            icalproperty_add_parameter(property, icalparameter_new_tzid(name.c_str()));
        return property;
    }
};

/// @return absent if the event's zone is unknown
std::optional<WrittenClock> clock_of(const CalendarEvent& event)
{
    if (event.all_day)
        return WrittenClock{.kind = WrittenClock::Kind::Days};
    if (event.clock.zone) {
        icaltimezone* const zone = icaltimezone_get_builtin_timezone(event.clock.zone.text().c_str());
        if (!zone)
            return std::nullopt;
        if (zone == icaltimezone_get_utc_timezone())
            return WrittenClock{.kind = WrittenClock::Kind::Utc};
        return WrittenClock{.kind = WrittenClock::Kind::Zone, .zone = zone, .name = event.clock.zone.text()};
    }
    if (!event.clock.offset)
        return WrittenClock{.kind = WrittenClock::Kind::Floating};
    const int offset = *event.clock.offset;
    if (!event.recurrence || offset == 0)
        return WrittenClock{.kind = WrittenClock::Kind::Utc, .offset = offset};
    return WrittenClock{.kind = WrittenClock::Kind::Zone, .offset = offset, .name = name_of_offset(offset)};
}

Component zone_of(const WrittenClock& clock)
{
    return clock.zone ? named_zone(clock.zone, clock.name) : fixed_zone(clock.name, clock.offset);
}

// --------------------------------------------------------------------------------------------------------- Recurrence

void append_list(std::string& rule, std::string_view name, const std::vector<int>& numbers)
{
    std::string_view before = name;
    for (const int number : numbers) {
        rule.append(before).append(std::to_string(number));
        before = ",";
    }
}

void append_days(std::string& rule, const CalendarRecurrence& recurrence)
{
    static constexpr std::array<const char*, 7> Days{"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
    std::string_view before = ";BYDAY=";
    const auto append = [&](const std::string& week, int day) {
        rule.append(before).append(week).append(Days[static_cast<std::size_t>(day)]);
        before = ",";
    };
    for (const int day : recurrence.days_in_week) {
        if (recurrence.weeks_in_month.empty())
            append("", day);
        for (const int week : recurrence.weeks_in_month)
            append(std::to_string(week), day);
    }
}

icalproperty* rule_of(const CalendarRecurrence& recurrence, const WrittenClock& clock)
{
    static constexpr std::array<const char*, 4> Frequencies{"DAILY", "WEEKLY", "MONTHLY", "YEARLY"};
    std::string rule = "FREQ=";
    rule += Frequencies[static_cast<std::size_t>(recurrence.frequency)];
    if (recurrence.until)
        rule.append(";UNTIL=").append(Text(icaltime_as_ical_string_r(clock.written_end(*recurrence.until))).get());
    if (recurrence.interval > 1)
        rule += ";INTERVAL=" + std::to_string(recurrence.interval);
    append_list(rule, ";BYMONTH=", recurrence.months_in_year);
    append_list(rule, ";BYYEARDAY=", recurrence.days_in_year);
    append_list(rule, ";BYMONTHDAY=", recurrence.days_in_month);
    append_days(rule, recurrence);
    return icalproperty_new_rrule(icalrecurrencetype_from_string(rule.c_str()));
}

// -------------------------------------------------------------------------------------------------------------- Event

icalproperty_status status_of(CalendarStatus status)
{
    switch (status) {
    case CalendarStatus::Tentative:
        return ICAL_STATUS_TENTATIVE;
    case CalendarStatus::Confirmed:
        return ICAL_STATUS_CONFIRMED;
    case CalendarStatus::Cancelled:
        return ICAL_STATUS_CANCELLED;
    }
    return ICAL_STATUS_NONE;
}

Component alarm_of(const CalendarEvent& event)
{
    icaltriggertype trigger{};
    trigger.time = icaltime_null_time();
    trigger.duration = icaldurationtype_from_int(static_cast<int>(-*event.reminder));
    Component alarm = make_component(ICAL_VALARM_COMPONENT);
    add(alarm, icalproperty_new_action(ICAL_ACTION_DISPLAY));
    add(alarm, icalproperty_new_trigger(trigger));
    add(alarm, icalproperty_new_description(event.title.text().c_str()));
    return alarm;
}

Component component_of(const CalendarEvent& event, const WrittenClock& clock, const EventStamp& stamp)
{
    Component made = make_component(ICAL_VEVENT_COMPONENT);
    add(made, icalproperty_new_uid(stamp.uid.c_str()));
    add(made, icalproperty_new_dtstamp(icaltime_from_timet_with_zone(stamp.made, 0, icaltimezone_get_utc_timezone())));
    add(made, clock.dated(icalproperty_new_dtstart(clock.written(event.start))));
    if (event.end)
        add(made, clock.dated(icalproperty_new_dtend(clock.written(*event.end))));
    add(made, icalproperty_new_summary(event.title.text().c_str()));
    if (event.description)
        add(made, icalproperty_new_description(event.description.text().c_str()));
    if (event.location)
        add(made, icalproperty_new_location(event.location.text().c_str()));
    if (event.status)
        add(made, icalproperty_new_status(status_of(*event.status)));
    if (event.busy)
        add(made, icalproperty_new_transp(*event.busy ? ICAL_TRANSP_OPAQUE : ICAL_TRANSP_TRANSPARENT));
    if (event.recurrence) {
        add(made, rule_of(*event.recurrence, clock));
        for (const WallTime exception : event.recurrence->exceptions)
            add(made, clock.dated(icalproperty_new_exdate(clock.written(exception))));
    }
    if (event.reminder)
        add(made, alarm_of(event));
    return made;
}

} // namespace

NSString event_text(const CalendarEvent& event, const EventStamp& stamp)
{
    const auto clock = clock_of(event);
    if (!clock)
        return nullptr;
    const Component calendar = make_component(ICAL_VCALENDAR_COMPONENT);
    add(calendar, icalproperty_new_version("2.0"));
    add(calendar, icalproperty_new_prodid("-//Qoro//Qoro Video Ad//EN"));
    if (clock->kind == WrittenClock::Kind::Zone)
        add(calendar, zone_of(*clock));
    add(calendar, component_of(event, *clock, stamp));
    return Text(icalcomponent_as_ical_string_r(calendar.get())).get();
}

} // namespace qoro
