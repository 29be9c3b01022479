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
