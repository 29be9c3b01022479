#pragma once

#include "platform/Platform.h"
#include "platform/Value.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace qoro
{

/// What passes between a session and the machine: a session that runs on the machine is written to it, and one that is
/// replayed is served from it. Code of the session runs "inside"; the ports' own code, such as the display's, does not,
/// and what it does is of no concern to the tape.
///
/// The machine reaches the session through sources: a timer, a request, a player, a page. The session opens them.
class Tape
{
public:
    /// What a source delivers on a replay.
    /// @param what its content as written
    using Delivery = std::function<void(const Value& what)>;
    using SourceId = std::uint64_t;

    virtual ~Tape() = default;

    /// Whether code of the session runs.
    virtual bool inside() const = 0;
    /// Whether a recorded session is replayed, so that there is no machine.
    virtual bool replays() const = 0;
    /// A value that the platform gives.
    /// @param name of the value
    /// @param of which one, such as the text to be measured; null for the only one
    /// @param real asks the machine; not called on a replay
    virtual Value read(std::string_view name, const Value& of, const std::function<Value()>& real) = 0;
    /// A call of the machine without a result.
    /// @param real not called on a replay
    virtual void call(std::string_view name, const std::function<void()>& real) = 0;
    /// The session opens a source.
    /// @param kind in one word
    /// @param of what the session asks for
    /// @param repeats whether it delivers more than once
    /// @param deliver kept only for a replay
    virtual SourceId open(std::string_view kind, const Value& of, bool repeats, Delivery deliver) = 0;
    /// Nothing more comes from a source. No effect on one that has ended.
    virtual void close(SourceId source) = 0;
    /// Something comes from a source, or from the machine as a whole.
    /// @param source 0 for the machine as a whole
    /// @param deliver runs the session's code
    virtual void arrive(std::string_view kind, SourceId source, const Value& what,
                        const std::function<void()>& deliver) = 0;
};

} // namespace qoro
