#include "record/StandIns.h"

#include "kit/StandIn.h"
#include "record/Values.h"

namespace qoro
{

namespace
{
// Kinds of entries.
constexpr const char* CalendarShown = "calendarShown";
constexpr const char* AddressShown = "addressShown";
} // namespace

void show_calendar_stand_in(Recorder& recorder, const std::string& event)
{
    recorder.arrive(CalendarShown, 0, event, [&] { show_calendar_stand_in(Platform::current(), event); });
}

void show_address_stand_in(Recorder& recorder, const NSURL& address, const std::function<void()>& closed)
{
    recorder.arrive(AddressShown, 0, address.absoluteString(), [&] {
        show_address_stand_in(Platform::current(), address, [&recorder, closed] {
            if (closed)
                recorder.outside(closed);
        });
    });
}

void replay_stand_ins(Replayer& replayer, Platform& platform)
{
    replayer.on(CalendarShown, [&platform](const Value& what) { show_calendar_stand_in(platform, what.text()); });
    // The viewer's return is an entry of its own.
    replayer.on(AddressShown,
                [&platform](const Value& what) { show_address_stand_in(platform, detail::url_of(what), nullptr); });
}

} // namespace qoro
