#pragma once

#include "desktop/glib/Owned.h"

#include <functional>
#include <thread>

namespace qoro
{

/// A thread that runs its own GLib main context until the object is destroyed. Work posted before the destructor still
/// runs; work that it adds may not.
class ContextThread
{
public:
    /// @param name shown by debuggers, at most 15 characters
    explicit ContextThread(const char* name);
    ~ContextThread();
    ContextThread(const ContextThread&) = delete;
    ContextThread& operator=(const ContextThread&) = delete;

    GMainContext* context() const { return context_.get(); }
    /// Runs work on the thread, after everything posted before it.
    void post(std::function<void()> work);
    /// Like post(), but blocks until the work has run.
    void run(const std::function<void()>& work);
    /// Blocks while a condition holds. The condition is evaluated on the thread, whose events continue to run.
    void run_while(const std::function<bool()>& condition);

private:
    const ContextRef context_;
    bool over_ = false; // only touched on the thread
    std::thread thread_;
};

} // namespace qoro
