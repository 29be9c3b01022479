#pragma once

#include "formats/LogSink.h"
#include "platform/Events.h"
#include "platform/KitEnumerations.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qoro
{

/// "debug", "info", "warning", "error" or "note".
/// @param level a ZulixLogTag; any other number gives an empty text
std::string_view log_level_name(std::int64_t level);
/// The level of a name; absent for any other text.
std::optional<ZulixLogTag> log_level_named(std::string_view name);

/// Forwards an event to a sink if it is a line of the kit's log, of the console, whose lines have the level info, or of
/// the page: its own console has the level of its call (log counts as info, warn as warning), its errors are errors. An
/// empty sink receives nothing.
void pass_log_line(const LogSink& sink, const Event& event);

/// Forwards what happens to a VAST tag: an ad that begins (info), a part of a document that has no effect (note), an ad
/// that cannot be played (warning). An empty sink receives nothing.
void pass_tag_line(const LogSink& sink, const Event& event);

/// A sink that writes lines of a level and above, in the order debug, info, note, warning, error: "qoro-ad: warning:
/// …\n". Control characters become blanks.
/// @param origin where the lines come from, such as a file; empty for nowhere in particular
LogSink log_writer(ZulixLogTag from, const std::string& origin, std::function<void(std::string_view)> write);

/// Forwards every event to another event sink, and the log's lines to a log sink.
class LogFilter final : public EventSink
{
public:
    /// @param sink may be empty
    /// @param next outlives this
    LogFilter(LogSink sink, EventSink& next) : sink_(std::move(sink)), next_(next) {}
    void receive(const Event& event) override
    {
        pass_log_line(sink_, event);
        pass_tag_line(sink_, event);
        next_.receive(event);
    }

private:
    const LogSink sink_;
    EventSink& next_;
};

} // namespace qoro
