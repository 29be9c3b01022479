#pragma once

#include "platform/Ports.h"

#include <cstdint>
#include <vector>

namespace qoro
{

class Platform;

/// Seconds as whole microseconds, to the nearest; the outermost numbers for what does not fit, 0 for not-a-number.
std::int64_t to_microseconds(double seconds);

/// The main loop in virtual time: whole microseconds from 0, one queue for everything that is due. What is due at the
/// same moment runs in the order of its creation; a repeating timer keeps its place.
class VirtualLoop final : public MainLoop
{
public:
    explicit VirtualLoop(Platform& owner) : owner_(owner) {}

    double now() const override;
    /// The interval is rounded to whole microseconds, at least one. A timer that would fire only after thirty thousand
    /// years never fires.
    TimerId start_timer(double interval, bool repeats, std::function<void()> fire) override;
    void stop_timer(TimerId timer) override;
    /// Infinite for a running timer that never fires.
    double due(TimerId timer) const override;
    void post(std::function<void()> work) override;

    std::int64_t now_microseconds() const { return now_; }
    /// Runs work once, after a delay.
    TimerId after(std::int64_t microseconds, std::function<void()> work);
    /// Runs everything that is due at or before a moment, then stands at that moment.
    void run_until(std::int64_t microseconds);
    /// What is still to come, timers that never fire included.
    std::size_t pending() const { return slots_.size() - free_.size(); }
    /// Drops everything that is still to come.
    void clear();

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
    void release(std::size_t slot);

    Platform& owner_;
    std::int64_t now_ = 0;
    std::uint64_t next_serial_ = 1;
    std::vector<Slot> slots_;
    std::vector<std::size_t> free_;
    std::vector<Due> heap_; // entries of stopped timers stay until they come up
};

} // namespace qoro
