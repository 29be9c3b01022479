#include "desktop/net/TransferWatch.h"

#include "platform/Numbers.h"

#include <gio/gio.h>

#include <algorithm>
#include <chrono>

namespace qoro
{

namespace
{
/// Seconds between two looks at a transfer.
constexpr double Glance = 0.1;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
} // namespace

std::string LeastSpeed::reason() const
{
    return "the server sends less than " + fixed_text(speed_, 0) + " bytes a second";
}

TransferWatch::TransferWatch(GCancellable* request, const LeastSpeed& speed, double seconds)
    : request_(request), speed_(speed), seconds_(seconds), thread_([this] { watch(); })
{
}

TransferWatch::~TransferWatch()
{
    {
        const std::scoped_lock lock(mutex_);
        over_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

std::string TransferWatch::reason()
{
    const std::scoped_lock lock(mutex_);
    return reason_;
}

void TransferWatch::watch()
{
    const double deadline = now() + seconds_;
    speed_.is_undercut(now(), 0);
    std::unique_lock lock(mutex_);
    while (!over_ && reason_.empty()) {
        const std::chrono::duration<double> pause(std::clamp(deadline - now(), 0.0, Glance));
        if (changed_.wait_for(lock, pause, [this] { return over_; }))
            return;
        if (now() >= deadline)
            reason_ = "not whole within " + shortest_text(seconds_) + " seconds";
        else if (speed_.is_undercut(now(), bytes_))
            reason_ = speed_.reason();
    }
    if (over_)
        return;
    lock.unlock();
    g_cancellable_cancel(request_);
}

} // namespace qoro
