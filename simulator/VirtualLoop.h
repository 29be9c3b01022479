#pragma once

#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace qoro
{

class Platform;

/// Seconds as microseconds, rounded to the nearest; saturates out of range, 0 for NaN.
std::int64_t to_microseconds(double seconds);

/// The main loop in virtual time: whole microseconds from 0 and one queue. Events due at the same time run in order of
/// creation; a repeating timer retains its position.
class VirtualLoop final : public MainLoop
{
public:
    explicit VirtualLoop(Platform& owner) : owner_(owner) {}

    double now() const override;
    /// The interval is rounded to whole microseconds, at least one. An interval beyond 1e12 s, about 30,000 years,
    /// never fires.
    TimerId start_timer(double interval, bool repeats, std::function<void()> fire) override;
    void stop_timer(TimerId timer) override;
    /// Infinity for a running timer that never fires.
    double due(TimerId timer) const override;
    void post(std::function<void()> work) override;
    void clear() override;

    std::int64_t now_microseconds() const { return now_; }
    /// Runs work once, after a delay.
    TimerId after(std::int64_t microseconds, std::function<void()> work);
    /// Runs everything due at or before a time, then sets the clock to it.
    void run_until(std::int64_t microseconds);
    /// An event in the queue.
    struct Queued {
        TimerId id = 0;
        /// Virtual time, in microseconds; the largest number for a timer that never fires.
        std::int64_t due = 0;
        /// Microseconds; 0 for an event that runs once.
        std::int64_t interval = 0;
        /// Valid until the loop runs or changes.
        const std::function<void()>* work = nullptr;
    };
    /// The queued events in the order in which they will run; timers that never fire are last.
    std::vector<Queued> queue() const;
    /// When the next event is due, in microseconds; absent without one.
    std::optional<std::int64_t> next_due() const;
    /// Number of queued events, including timers that never fire.
    std::size_t pending() const { return slots_.size() - free_.size(); }

private:
    struct Slot {
        TimerId id = 0; // 0: free
        std::int64_t due = 0;
        std::int64_t interval = 0; // 0: once
        std::function<void()> fire;
    };
    struct Due {
        std::int64_t time;
        TimerId id;
    };
    struct Later {
        bool operator()(const Due& a, const Due& b) const { return a.time != b.time ? a.time > b.time : a.id > b.id; }
    };

    TimerId start(std::int64_t due, std::int64_t interval, std::function<void()> fire);
    const Slot* find(TimerId timer) const;
    void run(TimerId timer);
    void push(std::int64_t time, TimerId timer);
    /// Takes the event that runs next, sets the clock to it, and queues a repeating timer again. 0 when nothing is due
    /// at or before a time.
    TimerId take_next(std::int64_t microseconds);
    /// Replaces the entry at the front of the heap, in one pass instead of a removal and an insertion.
    void replace_first(const Due& due);
    void release(std::size_t slot);

    Platform& owner_;
    std::int64_t now_ = 0;
    std::uint64_t next_serial_ = 1;
    std::vector<Slot> slots_;
    std::vector<std::size_t> free_;
    // Entries of stopped timers remain in both until due.
    std::vector<Due> heap_;
    /// What is due at the time at which it was queued, such as posted work: in the order in which it runs. The first
    /// entries have run already; they are removed together.
    std::vector<Due> at_once_;
    std::size_t at_once_run_ = 0;
};

} // namespace qoro
