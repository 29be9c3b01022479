#pragma once

#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace qoro
{

/// Takes one line of a trace, its line break included. The text lives only as long as the call.
using LineSink = std::function<void(std::string_view line)>;

enum class TraceFormat {
    /// One JSON object a line: "t" (seconds), "what", and the fields of what was told.
    Json,
    /// A readable timeline: time, whom it concerns, what happened.
    Text,
};

/// Writes down what a platform tells, one line for each event, as it happens.
class Trace final : public Witness
{
public:
    /// @param loop whose time the lines carry; outlives the trace
    Trace(const MainLoop& loop, TraceFormat format, LineSink sink);

    void tell(std::string_view what, std::initializer_list<Field> fields) override;

private:
    void write_json(std::int64_t microseconds, std::string_view what, std::initializer_list<Field> fields);
    void write_text(std::int64_t microseconds, std::string_view what, std::initializer_list<Field> fields);

    const MainLoop& loop_;
    const TraceFormat format_;
    const LineSink sink_;
    std::string line_; // kept for its capacity
};

} // namespace qoro
