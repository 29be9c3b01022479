#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace qoro
{

/// Where any thread leaves news for an object of the main thread. The object closes it as it goes; nothing arrives
/// after that, whatever was posted before. Needs a loop whose post() any thread may call.
class Mailbox : public std::enable_shared_from_this<Mailbox>
{
public:
    explicit Mailbox(MainLoop& loop) : loop_(&loop) {}

    /// Any thread: runs work on the main loop, as an event of its own, unless the mailbox is closed by then.
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
    /// The main thread only.
    void close()
    {
        std::scoped_lock lock(mutex_);
        loop_ = nullptr;
    }
    /// The main thread only: no other thread changes the answer.
    bool is_open() const { return loop_ != nullptr; }

private:
    std::mutex mutex_;
    MainLoop* loop_;
};

} // namespace qoro
