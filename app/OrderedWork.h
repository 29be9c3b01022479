#pragma once

#include "session/Trace.h"

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

/// Does pieces of work on several threads and writes what they give in the order in which they were added, as soon as
/// everything before it is written. Only so many wait or run at a time; whoever adds more waits for room.
class OrderedWork
{
public:
    /// Writes its output through the sink, and gives a complaint in one line; empty for none. Throws nothing.
    using Work = std::function<std::string(const LineSink& sink)>;

    /// @param threads 1 does each piece inside add(), and lets it write straight to the output
    /// @param write takes output, piece by piece
    /// @param finished takes each piece's complaint once its output is written
    OrderedWork(unsigned threads, LineSink write, std::function<void(const std::string& complaint)> finished);
    /// Waits until everything is done and written.
    ~OrderedWork();
    OrderedWork(const OrderedWork&) = delete;
    OrderedWork& operator=(const OrderedWork&) = delete;

    void add(Work work);

private:
    struct Task {
        Work work;
        std::string output;
        std::string complaint;
        bool done = false;
    };

    void serve();
    void write_what_is_done();

    const LineSink write_;
    const std::function<void(const std::string&)> finished_;
    const std::size_t most_tasks_;
    std::mutex mutex_;
    std::condition_variable room_;
    std::condition_variable work_;
    /// In order, from the oldest that is not yet written.
    std::deque<std::shared_ptr<Task>> tasks_;
    /// Those among them that nobody has begun.
    std::deque<std::shared_ptr<Task>> waiting_;
    bool closed_ = false;
    std::vector<std::thread> threads_;
};

} // namespace qoro
