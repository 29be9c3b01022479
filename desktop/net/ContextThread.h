#pragma once

#include <functional>
#include <thread>

typedef struct _GMainContext GMainContext;

namespace qoro
{

/// A thread with a GLib main context of its own, that runs until it is destroyed. What is still posted then does not
/// run any more.
class ContextThread
{
public:
    /// @param name as debuggers show it, at most 15 characters
    explicit ContextThread(const char* name);
    ~ContextThread();
    ContextThread(const ContextThread&) = delete;
    ContextThread& operator=(const ContextThread&) = delete;

    GMainContext* context() const { return context_; }
    /// Runs work on the thread, after everything posted before it.
    void post(std::function<void()> work);
    /// The same, and waits for it.
    void run(const std::function<void()>& work);
    /// Waits, while the thread's events go on, until a condition, asked on the thread, no longer holds.
    void run_while(const std::function<bool()>& condition);

private:
    GMainContext* const context_;
    bool over_ = false; // touched on the thread alone
    std::thread thread_;
};

} // namespace qoro
