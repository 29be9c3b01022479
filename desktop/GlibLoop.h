#pragma once

#include "desktop/glib/Owned.h"
#include "platform/Ports.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace qoro
{

/// Main loop over GLib. Timers and posted work share one queue, ordered by due time, then by age, so that the order of
/// events matches the simulator's. Timers use a kernel timer with microsecond resolution: GLib's own time-outs wake on
/// whole milliseconds and repeat relative to their last, late firing. A repeating timer fires at most a thousand times
/// a second.
class GlibLoop : public MainLoop
{
public:
    /// @param platform dispatches every event; null runs events directly
    explicit GlibLoop(Platform* platform = nullptr);
    ~GlibLoop() override;

    double now() const override;
    TimerId start_timer(double interval, bool repeats, std::function<void()> fire) override;
    void stop_timer(TimerId timer) override;
    double due(TimerId timer) const override;
    /// Any thread may call this, unlike all other functions of the class. The work runs and is destroyed on the loop's
    /// thread.
    void post(std::function<void()> work) override;
    void clear() override;

    /// Runs until quit() is called.
    void run();
    /// Ends run() after the current event.
    void quit();
    /// Runs until a condition holds. The condition is evaluated after each iteration of the loop.
    /// @param seconds maximum time to wait
    /// @return whether the condition holds
    bool run_until(const std::function<bool()>& condition, double seconds);
    /// Like run_until(), but runs only timers and posted work, not the other sources of the thread such as GTK's. For a
    /// program that has lost its display.
    /// @param seconds maximum time to wait
    void run_alone(const std::function<bool()>& condition, double seconds);

    /// Resets now() to 0. To be called before any timer is started.
    void restart_clock();
    /// Origin of now(), in microseconds of the machine's monotonic clock.
    std::int64_t start_microseconds() const { return start_; }

private:
    struct Timer {
        std::int64_t due;
        /// Microseconds; 0 for a one-shot timer.
        std::int64_t interval;
        std::function<void()> fire;
    };
    struct Work {
        std::int64_t posted;
        std::uint64_t serial;
        std::function<void()> run;
    };
    struct Source;

    std::int64_t microseconds() const;
    std::map<TimerId, Timer>::iterator next_timer();
    void arm();
    void run_due();
    void fire(std::map<TimerId, Timer>::iterator timer);
    void run_event(const std::function<void()>& event);
    bool has_work();

    Platform* const platform_;
    const ContextRef context_;
    const LoopRef loop_;
    OwnedSource source_;
    int timer_fd_ = -1;
    std::int64_t armed_for_ = 0;
    std::int64_t start_;
    std::map<TimerId, Timer> timers_;

    std::mutex mutex_;
    // Guarded by mutex_.
    std::uint64_t next_serial_ = 1;
    std::deque<Work> work_;
};

} // namespace qoro
