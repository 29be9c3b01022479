#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace qoro
{

/// Delivers messages from any thread to an object of the main thread. The object closes the mailbox when it is
/// destroyed; messages that are still queued then are dropped. Needs a loop whose post() any thread may call.
class Mailbox : public std::enable_shared_from_this<Mailbox>
{
public:
    explicit Mailbox(MainLoop& loop) : loop_(&loop) {}

    /// Runs work on the main loop, as an event of its own, unless the mailbox has been closed by then. Any thread may
    /// call this.
    void post(std::function<void()> work)
    {
        std::scoped_lock lock(mutex_);
        if (!loop_)
            return;
        loop_->post([box = shared_from_this(), work = std::move(work)] {
            if (box->is_open())
                work();
        });
    }
    /// Main thread only.
    void close()
    {
        std::scoped_lock lock(mutex_);
        loop_ = nullptr;
    }
    /// Main thread only, which is also the only one that changes the result.
    bool is_open() const { return loop_ != nullptr; }

private:
    std::mutex mutex_;
    MainLoop* loop_;
};

} // namespace qoro
