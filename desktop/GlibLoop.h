#pragma once

#include "platform/Ports.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GSource GSource;

namespace qoro
{

/// GLib's main loop. Timers and posted work stand in one queue, ordered by the moment at which they are due, then by
/// age; so the order is the simulator's. Timers wait on the kernel's timer, to the microsecond: GLib's own time-outs
/// wake on whole milliseconds, and repeat relative to their last, late firing. A timer that repeats fires a thousand
/// times a second at most.
class GlibLoop : public MainLoop
{
public:
    /// @param platform every event runs through its dispatcher; null to run events as they are
    explicit GlibLoop(Platform* platform = nullptr);
    ~GlibLoop() override;

    double now() const override;
    TimerId start_timer(double interval, bool repeats, std::function<void()> fire) override;
    void stop_timer(TimerId timer) override;
    double due(TimerId timer) const override;
    /// May be called by any thread, unlike everything else here. What is posted runs, and is let go, on this one.
    void post(std::function<void()> work) override;

    /// Runs until quit().
    void run();
    void quit();
    /// Runs until a condition holds. The condition is asked after each turn of the loop.
    /// @param seconds how long to wait for it at most
    /// @return whether it holds
    bool run_until(const std::function<bool()>& condition, double seconds);
    /// The same without the thread's other events, such as GTK's; only timers and what is posted run. For a program
    /// whose display is gone.
    void run_alone(const std::function<bool()>& condition, double seconds);

    /// Lets now() begin at 0 again; before any timer is started.
    void restart_clock();
    /// Where now() is 0, in microseconds of the machine's monotonic clock.
    std::int64_t start_microseconds() const { return start_; }
    /// Drops every timer and all posted work, with what they keep.
    void clear();

private:
    struct Timer {
        std::int64_t due;
        /// 0 for a one-shot timer.
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
    GMainContext* const context_;
    GMainLoop* const loop_;
    GSource* source_ = nullptr;
    int timer_fd_ = -1;
    std::int64_t armed_for_ = 0;
    std::int64_t start_;
    std::map<TimerId, Timer> timers_;

    std::mutex mutex_;
    // Under the mutex.
    std::uint64_t next_serial_ = 1;
    std::deque<Work> work_;
};

} // namespace qoro
