#pragma once

#include "formats/Trace.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qoro
{

/// Runs tasks on several threads and writes their output in the order of add(), as soon as all earlier output is
/// written. The number of pending tasks is bounded. One thread adds them.
/// Output and errors are delivered on the worker threads, one call at a time.
class OrderedWork
{
public:
    /// Writes its output to the sink and returns a one-line error, empty for success. Must not throw.
    using Work = std::function<std::string(const LineSink& sink)>;

    /// @param threads 1 runs each task inside add() and writes its output directly
    /// @param write receives output in pieces
    /// @param finished receives each task's error after its output is written
    OrderedWork(unsigned threads, LineSink write, std::function<void(const std::string& complaint)> finished);
    /// Waits until every task is done and written.
    ~OrderedWork();
    OrderedWork(const OrderedWork&) = delete;
    OrderedWork& operator=(const OrderedWork&) = delete;

    /// Queues a task. If too many are pending, blocks until half of them are written.
    void add(Work work);

private:
    struct Task {
        Work work;
        std::string output;
        std::string complaint;
        bool done = false;
    };

    void serve();
    /// Unlocks while it writes: the other threads go on.
    void write_what_is_done(std::unique_lock<std::mutex>& lock);

    const LineSink write_;
    const std::function<void(const std::string&)> finished_;
    const std::size_t most_tasks_;
    std::mutex mutex_;
    std::condition_variable room_;
    std::condition_variable work_;
    /// In order of add(), from the oldest task not yet written.
    std::deque<std::shared_ptr<Task>> tasks_;
    /// Those of tasks_ that no thread has started.
    std::deque<std::shared_ptr<Task>> waiting_;
    bool closed_ = false;
    bool writing_ = false;
    std::vector<std::thread> threads_;
};

} // namespace qoro
