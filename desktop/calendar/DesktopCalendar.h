#pragma once

#include "platform/Ports.h"

#include <functional>
#include <string>
#include <utility>

namespace qoro
{

/// Passes events to the machine's calendar program as iCalendar files. The program may read a file at any time, so
/// files stay; those older than a day are removed when the next event is written.
class DesktopCalendar final : public Calendar
{
public:
    struct Options {
        /// Where the files are written; created with the first event.
        std::string folder = default_folder();
        /// Whether the host permits calendar events at all.
        bool allowed = true;
        /// Receives events as iCalendar text instead of the machine's program. Empty: the program receives them.
        std::function<void(const std::string& event)> stand_in = {};
    };

    /// "qoro-ad/calendar" in the user's cache directory.
    static std::string default_folder();

    explicit DesktopCalendar(Options options) : options_(std::move(options)) {}

    /// Whether events are permitted, and the machine has a program for text/calendar or there is a stand-in.
    bool available() override;
    /// Also refuses an event whose time zone this machine does not know.
    NSString add(const CalendarEvent& event) override;

private:
    const Options options_;
};

} // namespace qoro
