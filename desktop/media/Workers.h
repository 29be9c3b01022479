#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace qoro
{

/// The worker threads of all pipelines, including destroyed ones.
class Workers
{
public:
    static Workers& all()
    {
        static Workers& workers = *new Workers; // never destroyed: a thread may outlive static destruction
        return workers;
    }
    /// Runs work on a new thread.
    void start(std::function<void()> work)
    {
        std::scoped_lock lock(mutex_);
        ++count_;
        std::thread([this, work = std::move(work)]() mutable {
            work();
            work = nullptr;
            std::scoped_lock inner(mutex_);
            --count_;
            changed_.notify_all();
        }).detach();
    }
    /// Blocks until no thread is working.
    /// @param seconds maximum time to wait
    void wait(double seconds)
    {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return count_ == 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

} // namespace qoro
