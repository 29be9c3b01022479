#pragma once

#include "formats/Trace.h"
#include "record/Recorder.h"
#include "record/Tape.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace qoro
{

struct RecordedEntries;

/// The tape of a session that is replayed: answers each read with the recorded value, delivers what arrived in the
/// recorded order, and compares what the session opens and traces. At the first difference it stops: from then on reads
/// give null, and nothing arrives.
class Replayer final : public Tape, public EventSink
{
public:
    /// @param entries outlive this object
    /// @param sink receives the events, at the times that the clock shows
    Replayer(Platform& platform, const RecordedEntries& entries, EventSink& sink, EventClock& clock);
    ~Replayer() override;

    /// What comes from the machine as a whole, by kind.
    void on(std::string kind, Delivery deliver) { kinds_[std::move(kind)] = std::move(deliver); }
    /// Replays every entry.
    void run();
    /// The first difference, one line; empty without one.
    const std::string& difference() const { return difference_; }
    /// Index of the entry with the difference.
    std::size_t place() const { return place_; }
    /// Number of lines that the trace has so far.
    std::size_t lines() const { return lines_; }

    bool inside() const override { return true; }
    bool replays() const override { return true; }
    Value read(std::string_view name, const Value& of, const std::function<Value()>& real) override;
    void call(std::string_view name, const std::function<void()>& real) override;
    SourceId open(std::string_view kind, const Value& of, bool repeats, Delivery deliver) override;
    void close(SourceId source) override;
    void arrive(std::string_view, SourceId, const Value&, const std::function<void()>& deliver) override { deliver(); }
    void receive(const Event& event) override;

private:
    struct Source {
        bool repeats = false;
        std::shared_ptr<const Delivery> deliver;
    };

    bool has_more() const;
    void pass(std::string_view during);
    void pass_machine_lines();
    void pass_machine_line(const Value& line);
    void deliver();
    void differ(const std::string& what);
    std::string here() const;

    Platform& platform_;
    const RecordedEntries& entries_;
    EventSink& sink_;
    EventClock& clock_;
    Trace trace_;
    std::string line_;
    std::map<std::string, Delivery, std::less<>> kinds_;
    std::map<SourceId, Source> sources_;
    /// While an event of the machine's own is passed on.
    bool machine_speaks_ = false;
    std::size_t next_ = 0;
    std::size_t lines_ = 0;
    std::size_t place_ = 0;
    std::string difference_;
};

} // namespace qoro
