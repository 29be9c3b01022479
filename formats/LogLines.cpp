#include "formats/LogLines.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qoro
{

namespace
{

struct Level {
    std::string_view name;
    int severity;
};
/// In the order of ZulixLogTag. A note is what the ad does as intended, and no reason to worry.
constexpr std::array<Level, 5> Levels{{{"debug", 0}, {"info", 1}, {"warning", 3}, {"error", 4}, {"note", 2}}};

/// Null for no level of the kit's.
const Level* level_of(std::int64_t number)
{
    return number >= 0 && static_cast<std::size_t>(number) < Levels.size() ? &Levels[static_cast<std::size_t>(number)]
                                                                           : nullptr;
}

ZulixLogTag level_of_console(std::string_view name)
{
    if (name == "debug")
        return ZulixLogTagOfDebug;
    if (name == "warn")
        return ZulixLogTagOfWarnning;
    return name == "error" ? ZulixLogTagOfError : ZulixLogTagOfInfo;
}

/// "http://ad.example/page.html:12: text"
std::string with_place(const EventText& file, const std::optional<std::int64_t>& line, std::string_view text)
{
    std::string words = file ? std::string(file.view()) : "page";
    if (line)
        words += ":" + std::to_string(*line);
    return words.append(": ").append(text);
}

/// The element's XPath, or that of the element it is in, and its name.
std::string place_of(const event::VastIgnored& ignored)
{
    const std::string_view path = ignored.path.view();
    const std::string_view last = path.substr(std::min(path.rfind('/') + 1, path.size()));
    const bool is_its_own = last.substr(0, last.find('[')) == ignored.element.view();
    return is_its_own ? std::string(path) : std::string(path).append(": ").append(ignored.element.view());
}

} // namespace

std::string_view log_level_name(std::int64_t level)
{
    const Level* known = level_of(level);
    return known ? known->name : "";
}

std::optional<ZulixLogTag> log_level_named(std::string_view name)
{
    const auto* const found = std::ranges::find(Levels, name, &Level::name);
    if (found == Levels.end())
        return std::nullopt;
    return static_cast<ZulixLogTag>(found - Levels.begin());
}

void pass_log_line(const LogSink& sink, const Event& event)
{
    if (!sink)
        return;
    if (const auto* logged = std::get_if<event::Logged>(&event))
        sink(static_cast<ZulixLogTag>(logged->level), logged->message.view());
    else if (const auto* console = std::get_if<event::ConsoleLogged>(&event))
        sink(ZulixLogTagOfInfo, console->message.view());
    else if (const auto* line = std::get_if<event::PageConsole>(&event))
        sink(level_of_console(line->level.view()), with_place(line->file, line->line, line->message.view()));
    else if (const auto* error = std::get_if<event::PageError>(&event))
        sink(ZulixLogTagOfError, with_place(error->file, error->line, error->message.view()));
}

void pass_tag_line(const LogSink& sink, const Event& event)
{
    if (!sink)
        return;
    if (const auto* ad = std::get_if<event::VastAdBegun>(&event))
        sink(ZulixLogTagOfInfo, "VAST ad " + std::string(ad->id.view()) + " with " + std::string(ad->video.view()));
    else if (const auto* ignored = std::get_if<event::VastIgnored>(&event))
        sink(ZulixLogTagOfNote, place_of(*ignored).append(": ").append(ignored->why.view()));
    else if (const auto* failed = std::get_if<event::VastFailed>(&event))
        sink(ZulixLogTagOfWarnning,
             std::string(failed->why.view()) + " (VAST error " + std::to_string(failed->error) + ")");
}

LogSink log_writer(ZulixLogTag from, const std::string& origin, std::function<void(std::string_view)> write)
{
    const std::string beginning = "qoro-ad: " + (origin.empty() ? "" : origin + ": ");
    return [from, beginning, write = std::move(write)](ZulixLogTag level, std::string_view message) {
        const Level* known = level_of(level);
        const Level* least = level_of(from);
        if (!known || !least || known->severity < least->severity)
            return;
        std::string line = beginning + std::string(known->name) + ": ";
        for (const char c : message)
            line += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        line += '\n';
        write(line);
    };
}

} // namespace qoro
