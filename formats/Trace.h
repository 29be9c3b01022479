#pragma once

#include "platform/Events.h"
#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace qoro
{

/// Takes one line of a trace, its line break included. The text lives only as long as the call.
using LineSink = std::function<void(std::string_view line)>;

enum class TraceFormat {
    /// One JSON object a line: "t" (seconds), "what", and the fields of the event.
    Json,
    /// A readable timeline: time, whom it concerns, what happened.
    Text,
};

/// Writes the events of a platform as they happen, each as one line that its table describes.
class Trace final : public EventSink
{
public:
    /// @param loop whose time the lines carry; outlives the trace
    Trace(const MainLoop& loop, TraceFormat format, LineSink sink);

    void receive(const Event& event) override;

private:
    void write(std::string_view what, std::span<const Field> fields);
    void write_json(std::int64_t microseconds, std::string_view what, std::span<const Field> fields);
    void write_text(std::int64_t microseconds, std::string_view what, std::span<const Field> fields);

    const MainLoop& loop_;
    const TraceFormat format_;
    const LineSink sink_;
    std::string line_; // kept for its capacity
};

} // namespace qoro
