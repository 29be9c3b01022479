#pragma once

#include "formats/Trace.h"
#include "platform/Inbound.h"
#include "record/Redaction.h"
#include "record/Tape.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace qoro
{

/// Receives a recording piece by piece.
struct RecordSink {
    /// The beginning, up to the opened list of entries.
    std::function<void(std::string_view head)> begin;
    /// One entry, without a line break.
    std::function<void(std::string_view entry)> add;
};

/// A clock that shows the time of the event that is being traced.
class EventClock final : public MainLoop
{
public:
    double seconds = 0;

    double now() const override { return seconds; }
    TimerId start_timer(double, bool, std::function<void()>) override { return 0; }
    void stop_timer(TimerId) override {}
    double due(TimerId) const override { return 0; }
    void post(std::function<void()>) override {}
    void clear() override {}
};

/// The tape of a session that runs on a machine: writes each value that the session reads, what it opens, what arrives,
/// and the lines of its trace, in order.
class Recorder final : public Tape, public InboundWatch, public EventSink
{
public:
    /// @param platform the session's own; outlives this object
    Recorder(Platform& platform, RecordSink sink);
    ~Recorder() override;

    /// Starts the recording.
    /// @param head the scenario's keys, up to the opened list of entries
    /// @param redaction applied to everything that is written
    /// @param machine the clock; outlives the recording
    void begin(std::string_view head, Redaction redaction, const MainLoop& machine);
    /// Ends the recording; the session goes on.
    void end();
    /// Something that the host does.
    /// @param what its content
    void host(std::string_view what, const std::function<void()>& work, const Value& of = {});
    /// Work of the machine inside an event of the session.
    void outside(const std::function<void()>& work);
    /// The clock for a trace of the session, and the sink that receives the events of the session after this object.
    /// @{
    const EventClock& clock() const { return clock_; }
    void forward_to(EventSink* next) { next_ = next; }
    /// @}
    const Redaction& redaction() const { return redaction_; }

    bool inside() const override { return inside_; }
    bool replays() const override { return false; }
    Value read(std::string_view name, const Value& of, const std::function<Value()>& real) override;
    void call(std::string_view name, const std::function<void()>& real) override;
    SourceId open(std::string_view kind, const Value& of, bool repeats, Delivery deliver) override;
    void close(SourceId) override {}
    void arrive(std::string_view kind, SourceId source, const Value& what,
                const std::function<void()>& deliver) override;
    void come_in(std::string_view kind, const std::function<Value()>& describe,
                 const std::function<void()>& work) override;
    void receive(const Event& event) override;

private:
    void write(std::string_view entry);

    Platform& platform_;
    const MainLoop* machine_ = nullptr;
    const RecordSink sink_;
    Redaction redaction_;
    EventClock clock_;
    Trace trace_;
    EventSink* next_ = nullptr;
    bool records_ = false;
    bool inside_ = false;
    /// The call of the machine that is under way inside an event; empty for none.
    std::string_view during_;
    SourceId next_source_ = 1;
    std::string entry_; // kept for its capacity
};

} // namespace qoro
