#include "kit/CalendarEvent.h"

#include "platform/ShortText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <string>
#include <string_view>

namespace qoro
{

namespace
{

using Frequency = CalendarRecurrence::Frequency;

constexpr WallTime Minute = 60;
constexpr WallTime Day = 86'400;
// Within these years a date retains four digits after adding a day or an offset.
constexpr int FirstYear = 1900;
constexpr int LastYear = 9998;
// Range of the UTC offsets in use, in minutes.
constexpr int FurthestWest = -12 * 60;
constexpr int FurthestEast = 14 * 60;
// Limits on a page's data, in bytes, entries and days.
constexpr std::size_t LongestLine = 1024;
constexpr std::size_t LongestDescription = 8192;
constexpr std::size_t LongestZone = 64;
constexpr std::size_t LongestShown = 60;
constexpr std::size_t LongestList = 366;
constexpr int LargestInterval = 999;
constexpr WallTime EarliestReminder = 366 * Day;

constexpr const char* ADate = "a date that there is, such as 2027-03-24 or 2027-03-24T09:00-08:00";
constexpr const char* AReminder = "milliseconds before the start, such as -3600000, or a date";

/// Thrown with the reason when an event is invalid; caught only by read_calendar_event.
struct Refusal {
    std::string text;
};

std::string shown(const Value& value)
{
    if (value.is_null())
        return "missing";
    if (value.is_bool())
        return value.boolValue() ? "true" : "false";
    if (value.is_array())
        return "a list";
    if (value.is_dictionary())
        return "a record";
    if (!value.is_string())
        return value.stringValue().text();
    std::string text = shortened(value.text(), LongestShown);
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' '); // keeps the message on one line
    return '"' + text + '"';
}

[[noreturn]] void refuse(const std::string& where, const Value& value, const std::string& expected)
{
    throw Refusal{where + " is " + shown(value) + ": expected " + expected};
}

// -------------------------------------------------------------------------------------------------------------- Dates

/// A date as the page wrote it.
struct Moment {
    WallTime wall = 0;
    /// A date without a time of day.
    bool is_day = false;
    /// Minutes ahead of UTC; absent when not given.
    std::optional<int> offset = {};
};

/// Consumes a text from the front.
class Reader
{
public:
    explicit Reader(std::string_view text) : text_(text) {}

    bool at_end() const { return text_.empty(); }
    /// Consumes a number of exactly this many digits; absent when it is malformed or out of bounds.
    std::optional<int> number(std::size_t digits, int lowest, int highest)
    {
        int read = 0;
        for (std::size_t n = 0; n < digits; ++n) {
            if (n >= text_.size() || text_[n] < '0' || text_[n] > '9')
                return std::nullopt;
            read = read * 10 + (text_[n] - '0');
        }
        text_.remove_prefix(digits);
        if (read < lowest || read > highest)
            return std::nullopt;
        return read;
    }
    /// Consumes one of the given characters and returns it; returns 0 when the next character is another.
    char one_of(std::string_view letters)
    {
        if (text_.empty() || letters.find(text_.front()) == std::string_view::npos)
            return 0;
        const char letter = text_.front();
        text_.remove_prefix(1);
        return letter;
    }
    void skip_digits()
    {
        while (!text_.empty() && text_.front() >= '0' && text_.front() <= '9')
            text_.remove_prefix(1);
    }

private:
    std::string_view text_;
};

/// Parses a UTC offset, "Z", "+01:00" or "-0800", to minutes ahead of UTC.
std::optional<int> read_offset(Reader& text)
{
    const char sign = text.one_of("Z+-");
    if (sign == 'Z')
        return 0;
    const auto hours = sign ? text.number(2, 0, 23) : std::nullopt;
    text.one_of(":");
    const auto minutes = hours ? text.number(2, 0, 59) : std::nullopt;
    if (!minutes)
        return std::nullopt;
    const int offset = (sign == '-' ? -1 : 1) * (*hours * 60 + *minutes);
    return offset < FurthestWest || offset > FurthestEast ? std::nullopt : std::optional(offset);
}

/// Parses a time of day, "09:00", "09:00:30" or "09:00:30.25", to seconds since midnight; drops the fraction.
std::optional<WallTime> read_time_of_day(Reader& text)
{
    const auto hour = text.number(2, 0, 23);
    const auto minute = hour && text.one_of(":") ? text.number(2, 0, 59) : std::nullopt;
    if (!minute)
        return std::nullopt;
    const bool has_second = text.one_of(":");
    const auto second = has_second ? text.number(2, 0, 59) : std::optional(0);
    if (!second)
        return std::nullopt;
    if (has_second && text.one_of(".")) {
        if (!text.number(1, 0, 9))
            return std::nullopt;
        text.skip_digits();
    }
    return (*hour * 60 + *minute) * Minute + *second;
}

std::optional<Moment> read_moment(std::string_view written)
{
    using namespace std::chrono;
    Reader text(written);
    const auto y = text.number(4, FirstYear, LastYear);
    const auto m = y && text.one_of("-") ? text.number(2, 1, 12) : std::nullopt;
    const auto d = m && text.one_of("-") ? text.number(2, 1, 31) : std::nullopt;
    if (!d)
        return std::nullopt;
    const year_month_day date(year(*y), month(static_cast<unsigned>(*m)), day(static_cast<unsigned>(*d)));
    if (!date.ok())
        return std::nullopt;
    Moment moment{.wall = sys_days(date).time_since_epoch().count() * Day, .is_day = true};
    if (text.at_end())
        return moment;
    if (!text.one_of("T"))
        return std::nullopt;
    const auto time = read_time_of_day(text);
    if (!time)
        return std::nullopt;
    moment.is_day = false;
    moment.wall += *time;
    if (text.at_end())
        return moment;
    moment.offset = read_offset(text);
    return moment.offset && text.at_end() ? std::optional(moment) : std::nullopt;
}

WallTime day_of(WallTime time)
{
    return time - ((time % Day) + Day) % Day;
}

std::chrono::sys_days date_of(WallTime time)
{
    return std::chrono::sys_days(std::chrono::days(day_of(time) / Day));
}

Moment moment_in(const std::string& where, const Value& value)
{
    const auto moment = read_moment(value.text());
    if (!moment)
        refuse(where, value, ADate);
    return *moment;
}

/// Converts a moment to the event's clock.
WallTime on_clock(const CalendarClock& clock, const Moment& moment, const std::string& where, const Value& value)
{
    if (!moment.offset)
        return moment.wall;
    if (!clock.offset)
        refuse(where, value, "a date without an offset, as start has none or the event has a timezone");
    return moment.wall + (*clock.offset - *moment.offset) * Minute;
}

// --------------------------------------------------------------------------------------------------- Texts and numbers

/// Replaces every kind of line break with a line feed and every other control character except tabs with a blank, so
/// that no consumer of the output mistakes a part of a text for a line of its own.
std::string without_controls(std::string_view text)
{
    struct Break {
        std::string_view bytes;
        char becomes;
    };
    // CR LF, CR, NEL, LINE SEPARATOR, PARAGRAPH SEPARATOR
    static constexpr std::array Breaks{Break{"\r\n", '\n'}, Break{"\r", '\n'}, Break{"\xC2\x85", '\n'},
                                       Break{"\xE2\x80\xA8", '\n'}, Break{"\xE2\x80\xA9", '\n'}};
    std::string clean;
    clean.reserve(text.size());
    while (!text.empty()) {
        const auto* const found =
            std::ranges::find_if(Breaks, [&](const Break& each) { return text.starts_with(each.bytes); });
        if (found != Breaks.end()) {
            clean += found->becomes;
            text.remove_prefix(found->bytes.size());
            continue;
        }
        const auto letter = static_cast<unsigned char>(text.front());
        const bool control = (letter < 0x20 && letter != '\n' && letter != '\t') || letter == 0x7F;
        clean += control ? ' ' : text.front();
        text.remove_prefix(1);
    }
    return clean;
}

/// Reads a text and trims blanks at both ends; null when it is missing or blank.
NSString text_in(const NSDictionary& record, const std::string& name, std::size_t longest)
{
    const Value& value = record[name];
    if (value.is_null())
        return nullptr;
    if (!value.is_string())
        refuse(name, value, "a text");
    if (value.text().size() > longest)
        throw Refusal{name + " is " + std::to_string(value.text().size()) + " bytes long: expected " +
                      std::to_string(longest) + " at most"};
    const std::string text = without_controls(value.text());
    const std::size_t first = text.find_first_not_of(" \t\n");
    if (first == std::string::npos)
        return nullptr;
    return text.substr(first, text.find_last_not_of(" \t\n") - first + 1);
}

/// A whole number within bounds; absent for anything else.
std::optional<int> whole_number(const Value& value, int lowest, int highest)
{
    double number = 0;
    if (value.is_integer())
        number = static_cast<double>(value.integer());
    else if (value.is_double())
        number = value.doubleValue();
    else
        return std::nullopt;
    if (!(number >= lowest && number <= highest) || number != std::floor(number))
        return std::nullopt;
    return static_cast<int>(number);
}

/// A keyword and its meaning.
template <typename T>
struct Word {
    std::string_view word;
    T means;
};

template <typename T, std::size_t N>
T word_in(const std::string& where, const Value& value, const std::array<Word<T>, N>& words)
{
    const auto found = std::ranges::find(words, value.is_string() ? std::string_view(value.text()) : std::string_view(),
                                         &Word<T>::word);
    if (found != words.end())
        return found->means;
    std::string expected;
    for (std::size_t n = 0; n < N; ++n) {
        if (n > 0)
            expected += n + 1 < N ? ", " : " or ";
        expected += words[n].word;
    }
    refuse(where, value, expected);
}

/// Reads a list of limited length; null when it is missing.
NSArray list_in(const NSDictionary& record, std::string_view name, const std::string& where)
{
    const Value& value = record[name];
    if (value.is_null())
        return nullptr;
    if (!value.is_array())
        refuse(where, value, "a list");
    if (value.array().count() > LongestList)
        throw Refusal{where + " has " + std::to_string(value.array().count()) + " entries: expected " +
                      std::to_string(LongestList) + " at most"};
    return value.array();
}

template <typename T>
void sort_without_doubles(std::vector<T>& list)
{
    std::ranges::sort(list);
    list.erase(std::unique(list.begin(), list.end()), list.end());
}

// --------------------------------------------------------------------------------------------------------- Recurrence

constexpr std::array Frequencies{
    Word<Frequency>{"daily", Frequency::Daily},
    Word<Frequency>{"weekly", Frequency::Weekly},
    Word<Frequency>{"monthly", Frequency::Monthly},
    Word<Frequency>{"yearly", Frequency::Yearly},
};

/// A list of numbers in a recurrence rule. In lists that count from the end of a month or year, 0 is the last day (or
/// week), -1 the one before it, and so on.
struct NumberList {
    const char* name;
    std::vector<int> CalendarRecurrence::*field;
    int lowest;
    int highest;
    bool counts_from_end;
    /// The shortest frequency that permits the list.
    Frequency from;
};

constexpr std::array NumberLists{
    NumberList{"daysInWeek", &CalendarRecurrence::days_in_week, 0, 6, false, Frequency::Daily},
    NumberList{"daysInMonth", &CalendarRecurrence::days_in_month, -30, 31, true, Frequency::Monthly},
    NumberList{"daysInYear", &CalendarRecurrence::days_in_year, -365, 366, true, Frequency::Yearly},
    NumberList{"weeksInMonth", &CalendarRecurrence::weeks_in_month, -4, 5, true, Frequency::Monthly},
    NumberList{"monthsInYear", &CalendarRecurrence::months_in_year, 1, 12, false, Frequency::Daily},
};

std::vector<int> numbers_in(const NSDictionary& record, const NumberList& list)
{
    const std::string where = std::string("recurrence.") + list.name;
    std::vector<int> numbers;
    const NSArray given = list_in(record, list.name, where);
    for (std::size_t n = 0; n < given.count(); ++n) {
        const auto number = whole_number(given[n], list.lowest, list.highest);
        if (!number)
            refuse(where + '[' + std::to_string(n) + ']', given[n],
                   "a whole number from " + std::to_string(list.lowest) + " to " + std::to_string(list.highest));
        numbers.push_back(list.counts_from_end && *number <= 0 ? *number - 1 : *number);
    }
    sort_without_doubles(numbers);
    return numbers;
}

/// Refuses lists that contradict each other; completes partial ones from the start of the event.
void complete(CalendarRecurrence& recurrence, const CalendarEvent& event)
{
    using namespace std::chrono;
    const bool by_month = !recurrence.days_in_month.empty() || !recurrence.weeks_in_month.empty();
    if (!recurrence.days_in_year.empty() &&
        (by_month || !recurrence.days_in_week.empty() || !recurrence.months_in_year.empty()))
        throw Refusal{"recurrence.daysInYear stands beside other lists: expected it alone"};
    if (!recurrence.days_in_month.empty() && !recurrence.weeks_in_month.empty())
        throw Refusal{"recurrence.weeksInMonth stands beside recurrence.daysInMonth: expected one of them"};
    const sys_days start = date_of(event.start);
    if (!recurrence.weeks_in_month.empty() && recurrence.days_in_week.empty())
        recurrence.days_in_week = {static_cast<int>(weekday(start).c_encoding())};
    if (by_month && recurrence.frequency == Frequency::Yearly && recurrence.months_in_year.empty())
        recurrence.months_in_year = {static_cast<int>(unsigned(year_month_day(start).month()))};
}

/// Reads the end of the recurrence. A date without a time includes the whole day.
std::optional<WallTime> until_in(const NSDictionary& record, const CalendarEvent& event)
{
    const std::string where = "recurrence.expires";
    const Value& value = record["expires"];
    if (value.is_null())
        return std::nullopt;
    const Moment moment = moment_in(where, value);
    WallTime until = on_clock(event.clock, moment, where, value);
    if (event.all_day)
        until = day_of(until);
    else if (moment.is_day)
        until += Day - 1;
    if (until < event.start)
        refuse(where, value, "a date that is not before start");
    return until;
}

/// Reads the exception dates. A date without a time excludes the recurrence on that day.
std::vector<WallTime> exceptions_in(const NSDictionary& record, const CalendarEvent& event)
{
    const std::string name = "recurrence.exceptionDates";
    std::vector<WallTime> exceptions;
    const NSArray given = list_in(record, "exceptionDates", name);
    for (std::size_t n = 0; n < given.count(); ++n) {
        const std::string where = name + '[' + std::to_string(n) + ']';
        const Moment moment = moment_in(where, given[n]);
        WallTime exception = on_clock(event.clock, moment, where, given[n]);
        if (event.all_day)
            exception = day_of(exception);
        else if (moment.is_day)
            exception += event.start - day_of(event.start);
        exceptions.push_back(exception);
    }
    sort_without_doubles(exceptions);
    return exceptions;
}

std::optional<CalendarRecurrence> recurrence_in(const Value& value, const CalendarEvent& event)
{
    if (value.is_null())
        return std::nullopt;
    if (!value.is_dictionary())
        refuse("recurrence", value, "a record");
    const NSDictionary record = value.dictionary();
    CalendarRecurrence recurrence;
    recurrence.frequency = word_in("recurrence.frequency", record["frequency"], Frequencies);
    if (const Value& given = record["interval"]) {
        const auto interval = whole_number(given, 1, LargestInterval);
        if (!interval)
            refuse("recurrence.interval", given, "a whole number from 1 to " + std::to_string(LargestInterval));
        recurrence.interval = *interval;
    }
    for (const NumberList& list : NumberLists) {
        recurrence.*list.field = numbers_in(record, list);
        if (!(recurrence.*list.field).empty() && recurrence.frequency < list.from)
            refuse("recurrence.frequency", record["frequency"],
                   std::string(list.from == Frequency::Yearly ? "yearly" : "monthly or yearly") + " with " + list.name);
    }
    complete(recurrence, event);
    recurrence.until = until_in(record, event);
    recurrence.exceptions = exceptions_in(record, event);
    return recurrence;
}

// -------------------------------------------------------------------------------------------------------------- Event

constexpr std::array Statuses{
    Word<CalendarStatus>{"pending", CalendarStatus::Tentative},
    Word<CalendarStatus>{"tentative", CalendarStatus::Tentative},
    Word<CalendarStatus>{"confirmed", CalendarStatus::Confirmed},
    Word<CalendarStatus>{"cancelled", CalendarStatus::Cancelled},
};
constexpr std::array Transparencies{Word<bool>{"opaque", true}, Word<bool>{"transparent", false}};

/// Whether this may be an IANA zone name, such as "Europe/Berlin". Every part begins with a letter, so that a name
/// cannot escape from the folder of zone files.
bool is_zone_name(std::string_view name)
{
    const auto is_letter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    if (name.size() > LongestZone)
        return false;
    char before = '/';
    for (const char c : name) {
        const bool inside = is_letter(c) || (c >= '0' && c <= '9') || c == '_' || c == '+' || c == '-' || c == '/';
        if (!inside || (before == '/' && !is_letter(c)))
            return false;
        before = c;
    }
    return before != '/';
}

void read_texts(const NSDictionary& record, CalendarEvent& event)
{
    text_in(record, "id", LongestLine); // validated only: the page does not choose the identifier
    event.description = text_in(record, "description", LongestDescription);
    event.location = text_in(record, "location", LongestLine);
    const NSString summary = text_in(record, "summary", LongestLine);
    if (!summary && !event.description)
        refuse("description", nullptr, "a text");
    std::string title = (summary ? summary : event.description).text();
    std::ranges::replace(title, '\n', ' ');
    event.title = title;
    if (event.description.isEqualToString(event.title))
        event.description = nullptr;
}

void read_times(const NSDictionary& record, CalendarEvent& event)
{
    const Value& zone = record["timezone"];
    if (zone && !(zone.is_string() && is_zone_name(zone.text())))
        refuse("timezone", zone, "a time zone's name, such as Europe/Berlin");
    const Moment start = moment_in("start", record["start"]);
    event.all_day = start.is_day;
    if (!event.all_day && zone)
        event.clock.zone = zone.string();
    else
        event.clock.offset = start.offset;
    event.start = on_clock(event.clock, start, "start", record["start"]);

    const Value& end = record["end"];
    if (event.all_day)
        event.end = event.start + Day;
    if (end.is_null())
        return;
    const Moment moment = moment_in("end", end);
    if (moment.is_day != event.all_day)
        refuse("end", end, event.all_day ? "a day without a time, as start is one" : "a day with a time, as start is");
    const WallTime at = on_clock(event.clock, moment, "end", end);
    if (at < event.start)
        refuse("end", end, "a date that is not before start");
    if (event.all_day)
        event.end = at + Day;
    else if (at > event.start)
        event.end = at;
}

/// Reads the reminder: a date, or a number (also as text) of milliseconds relative to the start.
std::optional<WallTime> reminder_in(const Value& value, const CalendarEvent& event)
{
    if (value.is_null())
        return std::nullopt;
    double milliseconds = value.is_integer() || value.is_double() ? value.doubleValue() : NAN;
    if (value.is_string()) {
        const std::string& text = value.text();
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), milliseconds);
        if (error != std::errc() || end != text.data() + text.size()) {
            const auto moment = read_moment(text);
            if (!moment)
                refuse("reminder", value, AReminder);
            milliseconds = 1000 * static_cast<double>(on_clock(event.clock, *moment, "reminder", value) - event.start);
        }
    }
    if (std::isnan(milliseconds))
        refuse("reminder", value, AReminder);
    if (milliseconds > 0)
        refuse("reminder", value, "a time that is not after start");
    if (milliseconds < -1000 * static_cast<double>(EarliestReminder))
        refuse("reminder", value, "a time within a year before start");
    return static_cast<WallTime>(-milliseconds / 1000);
}

CalendarEvent event_in(const Value& given)
{
    if (!given.is_dictionary())
        refuse("the event", given, "a record");
    const NSDictionary record = given.dictionary();
    CalendarEvent event;
    read_texts(record, event);
    read_times(record, event);
    if (const Value& status = record["status"])
        event.status = word_in("status", status, Statuses);
    if (const Value& transparency = record["transparency"])
        event.busy = word_in("transparency", transparency, Transparencies);
    event.recurrence = recurrence_in(record["recurrence"], event);
    event.reminder = reminder_in(record["reminder"], event);
    return event;
}

} // namespace

CalendarEventReading read_calendar_event(const Value& given)
{
    try {
        return {.event = event_in(given)};
    } catch (const Refusal& refusal) {
        return {.error = refusal.text};
    }
}

} // namespace qoro
