// A calendar event from a page, as JSON.

#include "desktop/calendar/EventText.h"
#include "kit/CalendarEvent.h"
#include "tests/fuzz/FuzzSession.h"
#include "tests/fuzz/FuzzTarget.h"

#include <libical/ical.h>

#include <string>

namespace qoro
{

void fuzz::run_input(std::string_view input)
{
    const NSArray given = values_of("[" + std::string(input) + "]");
    const CalendarEventReading reading = read_calendar_event(given[0]);
    if (reading.error) {
        require(reading.error.text().find('\n') == std::string::npos, "a complaint is one line");
        return;
    }
    const NSString text = event_text(reading.event, {.uid = "fuzz@qoro", .made = 1'700'000'000});
    require(text || reading.event.clock.zone, "only a zone can be unknown");
    if (!text)
        return;
    icalcomponent* read_again = icalparser_parse_string(text.text().c_str());
    require(read_again && icalcomponent_count_components(read_again, ICAL_VEVENT_COMPONENT) == 1,
            "what is written is a calendar with one event");
    icalcomponent_free(read_again);
}

} // namespace qoro
