#include "formats/Trace.h"

#include "formats/JsonText.h"
#include "formats/LogLines.h"
#include "platform/ShortText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>

namespace qoro
{

namespace
{

/// Whom an event concerns, for people.
struct Concern {
    std::string_view what;
    std::string_view whom;
};

constexpr std::array Concerns{
    Concern{"step", "STEP"},       Concern{"js", "script"},         Concern{"return", "script"},
    Concern{"request", "network"}, Concern{"fetch", "network"},     Concern{"page", "page"},
    Concern{"web", "page"},        Concern{"page.console", "page"}, Concern{"page.error", "page"},
    Concern{"log", "log"},         Concern{"console", "console"},   Concern{"notification", "host"},
    Concern{"player", "player"},   Concern{"volume", "sound"},      Concern{"device", "device"},
    Concern{"openURL", "system"},  Concern{"parent", "parent"},     Concern{"super", "superclass"},
    Concern{"kit", "kit"},         Concern{"mraid", "mraid"},       Concern{"fault", "FAULT"},
    Concern{"released", "memory"}, Concern{"snapshot", "SNAPSHOT"},
};

/// Events whose kind their fields alone don't say.
constexpr std::array<std::string_view, 5> SaidByName{"volume", "openURL", "fetch", "released", "return"};
/// Fields that hold an event's own words, in the order in which they are said: "tracking http://t/start".
constexpr std::array<std::string_view, 7> Words{"do", "event", "name", "message", "command", "for", "url"};

constexpr std::size_t TimeWidth = 10;
constexpr std::size_t WhomWidth = 12;
constexpr std::size_t LongestField = 160;

bool contains(std::span<const std::string_view> names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

/// Right-aligned, to the millisecond.
void append_time(std::string& line, std::int64_t microseconds)
{
    const std::int64_t milliseconds = (microseconds + 500) / 1000;
    std::string time;
    append_json(time, milliseconds / 1000);
    std::string fraction;
    append_json(fraction, 1000 + milliseconds % 1000);
    time += '.';
    time += fraction.substr(1);
    line.append(time.size() < TimeWidth ? TimeWidth - time.size() : 0, ' ');
    line += time;
}

/// Control characters become blanks: an event is one line.
void append_words(std::string& line, std::string_view text)
{
    for (const char c : text)
        line += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
}

/// A field with its name, cut where it is longer than a person reads in passing.
void append_field(std::string& line, const Field& field, std::size_t longest)
{
    line += field.key;
    line += ' ';
    const std::size_t begin = line.size();
    append_json(line, field.content);
    const std::size_t end = begin + whole_characters(std::string_view(line).substr(begin), longest);
    if (end == line.size())
        return;
    line.resize(end);
    line += "…";
}

/// The name of a log line's level; empty for any other field.
std::string_view log_level(std::string_view what, const Field& field)
{
    const auto* level = std::get_if<std::int64_t>(&field.content);
    return what == "log" && field.key == "level" && level ? log_level_name(*level) : "";
}

/// A snapshot is many lines: one a group, and one a view.
void append_snapshot(std::string& line, std::span<const Field> groups)
{
    const std::string indent = "\n" + std::string(TimeWidth + 2, ' ');
    for (const Field& group : groups) {
        const auto* value = std::get_if<const Value*>(&group.content);
        if (group.key != "views" || !value) {
            line += indent;
            append_field(line, group, std::string::npos);
            continue;
        }
        for (const NSDictionary::Entry& view : (*value)->dictionary()) {
            line += indent;
            append_field(line, {view.key, &view.value}, std::string::npos);
        }
    }
}

} // namespace

Trace::Trace(const MainLoop& loop, TraceFormat format, LineSink sink)
    : loop_(loop), format_(format), sink_(std::move(sink))
{
}

void Trace::receive(const Event& event)
{
    describe(event, [this](std::string_view what, std::span<const Field> fields) { write(what, fields); });
}

void Trace::write(std::string_view what, std::span<const Field> fields)
{
    const std::int64_t microseconds = std::llround(loop_.now() * 1e6);
    line_.clear();
    if (format_ == TraceFormat::Json)
        write_json(microseconds, what, fields);
    else
        write_text(microseconds, what, fields);
    line_ += '\n';
    sink_(line_);
}

void Trace::write_json(std::int64_t microseconds, std::string_view what, std::span<const Field> fields)
{
    line_ += R"({"t":)";
    append_seconds(line_, microseconds);
    line_ += R"(,"what":)";
    append_json_text(line_, what);
    for (const Field& field : fields) {
        line_ += ',';
        append_json_text(line_, field.key);
        line_ += ':';
        if (const auto* text = std::get_if<std::string_view>(&field.content))
            append_json_text(line_, *text);
        else
            append_json(line_, field.content);
    }
    line_ += '}';
}

void Trace::write_text(std::int64_t microseconds, std::string_view what, std::span<const Field> fields)
{
    append_time(line_, microseconds);
    line_ += "  ";
    const auto concern = std::ranges::find(Concerns, what, &Concern::what);
    const std::string_view whom = concern == Concerns.end() ? what : concern->whom;
    line_ += whom;
    if (what == "snapshot")
        return append_snapshot(line_, fields);
    line_.append(whom.size() < WhomWidth ? WhomWidth - whom.size() : 1, ' ');
    bool first = true;
    const auto separate = [&] {
        if (!std::exchange(first, false))
            line_ += "  ";
    };
    if (contains(SaidByName, what)) {
        separate();
        line_ += what;
    }
    // First the event's own words, then what they are about. What is null says nothing.
    for (const std::string_view word : Words) {
        const auto field = std::ranges::find(fields, word, &Field::key);
        const auto* text = field == fields.end() ? nullptr : std::get_if<std::string_view>(&field->content);
        if (!text)
            continue;
        separate();
        append_words(line_, *text);
    }
    for (const Field& field : fields) {
        const auto* value = std::get_if<const Value*>(&field.content);
        const bool is_word = std::holds_alternative<std::string_view>(field.content) && contains(Words, field.key);
        const bool is_null = std::holds_alternative<std::nullptr_t>(field.content) || (value && (*value)->is_null());
        if (is_word || is_null)
            continue;
        separate();
        const std::string_view level = log_level(what, field);
        if (level.empty())
            append_field(line_, field, LongestField);
        else
            line_.append("(").append(level).append(")");
    }
}

} // namespace qoro
