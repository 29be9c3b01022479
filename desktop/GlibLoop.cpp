#include "desktop/GlibLoop.h"

#include "platform/HostCall.h"
#include "platform/Platform.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

namespace qoro
{

namespace
{
constexpr std::int64_t Never = std::numeric_limits<std::int64_t>::max();
/// Minimum microseconds between two firings of a repeating timer. A timer that is due again in each iteration of the
/// loop would starve sources of lower priority, such as GTK's drawing.
constexpr std::int64_t ShortestInterval = 1000;
/// Seconds; a century. Anything longer is practically never, and this does not overflow when added up.
constexpr double LongestInterval = 3.2e9;

std::int64_t interval_microseconds(double seconds)
{
    if (!std::isfinite(seconds))
        return Never;
    return std::max<std::int64_t>(std::llround(std::min(seconds, LongestInterval) * 1e6), 1);
}
} // namespace

struct GlibLoop::Source {
    GSource base;
    GlibLoop* loop;

    static gboolean prepare(GSource* source, gint* timeout)
    {
        *timeout = -1;
        return check(source);
    }
    static gboolean check(GSource* source)
    {
        GlibLoop& loop = *reinterpret_cast<Source*>(source)->loop;
        return loop.has_work() || loop.armed_for_ <= g_get_monotonic_time();
    }
    static gboolean dispatch(GSource* source, GSourceFunc, gpointer)
    {
        reinterpret_cast<Source*>(source)->loop->run_due();
        return G_SOURCE_CONTINUE;
    }
};

GlibLoop::GlibLoop(Platform* platform)
    : platform_(platform), context_(g_main_context_ref_thread_default()), loop_(g_main_loop_new(context_.get(), FALSE)),
      armed_for_(Never), start_(g_get_monotonic_time())
{
    static GSourceFuncs functions = {Source::prepare, Source::check, Source::dispatch, nullptr, nullptr, nullptr};
    timer_fd_ = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (timer_fd_ < 0)
        g_error("the system provides no timer: %s", g_strerror(errno));
    source_.reset(g_source_new(&functions, sizeof(Source)));
    GSource* source = source_.get();
    reinterpret_cast<Source*>(source)->loop = this;
    g_source_set_name(source, "qoro loop");
    // An event may run the loop recursively (a nested wait), which must still deliver events.
    g_source_set_can_recurse(source, TRUE);
    g_source_add_unix_fd(source, timer_fd_, G_IO_IN);
    g_source_attach(source, context_.get());
}

GlibLoop::~GlibLoop()
{
    source_.reset();
    close(timer_fd_);
}

std::int64_t GlibLoop::microseconds() const
{
    return g_get_monotonic_time() - start_;
}

double GlibLoop::now() const
{
    return static_cast<double>(microseconds()) / 1e6;
}

TimerId GlibLoop::start_timer(double interval, bool repeats, std::function<void()> fire)
{
    const std::int64_t length = interval_microseconds(interval);
    TimerId id;
    {
        std::scoped_lock lock(mutex_);
        id = next_serial_++;
    }
    timers_.emplace(
        id, Timer{length == Never ? Never : g_get_monotonic_time() + length, repeats ? length : 0, std::move(fire)});
    arm();
    return id;
}

void GlibLoop::stop_timer(TimerId timer)
{
    const auto found = timers_.find(timer);
    if (found == timers_.end())
        return;
    // Destroyed last, because its destructor may call this object.
    const std::function<void()> kept = std::move(found->second.fire);
    timers_.erase(found);
    arm();
}

double GlibLoop::due(TimerId timer) const
{
    const auto found = timers_.find(timer);
    if (found == timers_.end())
        return 0;
    if (found->second.due == Never)
        return std::numeric_limits<double>::infinity();
    return static_cast<double>(found->second.due - start_) / 1e6;
}

void GlibLoop::post(std::function<void()> work)
{
    {
        std::scoped_lock lock(mutex_);
        work_.push_back({g_get_monotonic_time(), next_serial_++, std::move(work)});
    }
    g_main_context_wakeup(context_.get());
}

void GlibLoop::restart_clock()
{
    start_ = g_get_monotonic_time();
}

void GlibLoop::clear()
{
    // Destroyed last, because their destructors may call this object, which must be consistent by then.
    std::deque<Work> work;
    {
        std::scoped_lock lock(mutex_);
        work.swap(work_);
    }
    const std::map<TimerId, Timer> timers = std::exchange(timers_, {});
    arm();
}

bool GlibLoop::has_work()
{
    std::scoped_lock lock(mutex_);
    return !work_.empty();
}

std::map<TimerId, GlibLoop::Timer>::iterator GlibLoop::next_timer()
{
    return std::min_element(timers_.begin(), timers_.end(),
                            [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
}

void GlibLoop::arm()
{
    const auto next = next_timer();
    const std::int64_t due = next == timers_.end() ? Never : next->second.due;
    if (due == armed_for_)
        return;
    armed_for_ = due;
    itimerspec when{};
    if (due != Never)
        when.it_value = {static_cast<time_t>(due / 1000000), static_cast<long>(due % 1000000 * 1000)};
    timerfd_settime(timer_fd_, TFD_TIMER_ABSTIME, &when, nullptr);
}

// Runs what became due before now. Whatever that adds waits for the next iteration of the loop, so that a chain of
// events cannot block the rest of the program.
void GlibLoop::run_due()
{
    const std::int64_t until = g_get_monotonic_time();
    std::uint64_t newest;
    {
        std::scoped_lock lock(mutex_);
        newest = next_serial_;
    }
    for (;;) {
        const auto timer = next_timer();
        const bool timer_due = timer != timers_.end() && timer->second.due <= until;
        std::function<void()> work;
        {
            std::scoped_lock lock(mutex_);
            const bool work_due = !work_.empty() && work_.front().serial < newest;
            const bool work_first = work_due && (!timer_due || std::pair(work_.front().posted, work_.front().serial) <
                                                                   std::pair(timer->second.due, timer->first));
            if (work_first) {
                work = std::move(work_.front().run);
                work_.pop_front();
            } else if (!timer_due) {
                break;
            }
        }
        if (work)
            run_event(work);
        else
            fire(timer);
    }
    arm();
}

void GlibLoop::fire(std::map<TimerId, Timer>::iterator timer)
{
    const std::int64_t interval = timer->second.interval;
    if (interval == 0) {
        const std::function<void()> once = std::move(timer->second.fire);
        timers_.erase(timer);
        run_event(once);
        return;
    }
    // Firings lie on a grid of start + n × interval; missed ones are skipped.
    const std::int64_t late = g_get_monotonic_time() - timer->second.due;
    const std::int64_t pause = interval < ShortestInterval ? ShortestInterval : 0;
    timer->second.due += ((late + pause) / interval + 1) * interval;
    const TimerId id = timer->first;
    std::function<void()> again = std::move(timer->second.fire); // it may stop its own timer
    run_event(again);
    if (const auto still = timers_.find(id); still != timers_.end())
        still->second.fire = std::move(again);
}

void GlibLoop::run_event(const std::function<void()>& event)
{
    // The caller is GLib's main loop.
    if (platform_)
        call_host("an event", platform_, [&] { platform_->dispatch(event); });
    else
        event();
}

void GlibLoop::run()
{
    g_main_loop_run(loop_.get());
}

void GlibLoop::quit()
{
    g_main_loop_quit(loop_.get());
}

void GlibLoop::run_alone(const std::function<bool()>& condition, double seconds)
{
    constexpr gulong Pause = 2000;
    const std::int64_t deadline = g_get_monotonic_time() + interval_microseconds(seconds);
    while (!condition() && g_get_monotonic_time() < deadline) {
        run_due();
        g_usleep(Pause);
    }
}

bool GlibLoop::run_until(const std::function<bool()>& condition, double seconds)
{
    bool over = condition();
    bool expired = false;
    const TimerId deadline = start_timer(seconds, false, [&expired] { expired = true; });
    while (!over && !expired) {
        g_main_context_iteration(context_.get(), TRUE);
        over = condition();
    }
    stop_timer(deadline);
    return over;
}

} // namespace qoro
