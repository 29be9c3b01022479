#pragma once

#include "platform/Ports.h"

#include <string>
#include <utility>

namespace qoro
{

/// Hands events to this machine's program for calendars, as files of iCalendar. A file stays for the program to read,
/// and is removed with the first event that comes a day later.
class DesktopCalendar final : public Calendar
{
public:
    struct Options {
        /// Where the files are written; made when the first event comes.
        std::string folder = default_folder();
        /// Whether the host lets events through at all.
        bool allowed = true;
    };

    /// "qoro-ad/calendar" in the user's cache directory.
    static std::string default_folder();

    explicit DesktopCalendar(Options options) : options_(std::move(options)) {}

    /// Whether this machine has a program for text/calendar.
    bool available() override;
    /// Also says no to a zone that this machine does not know.
    NSString add(const CalendarEvent& event) override;

private:
    const Options options_;
};

} // namespace qoro
