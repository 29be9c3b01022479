#include "app/OrderedWork.h"

#include "app/SignalMask.h"

#include <utility>

namespace qoro
{

namespace
{
/// Pending tasks per thread: a long task must not leave the other threads idle.
constexpr std::size_t TasksPerThread = 8;
} // namespace

OrderedWork::OrderedWork(unsigned threads, LineSink write, std::function<void(const std::string&)> finished)
    : write_(std::move(write)), finished_(std::move(finished)), most_tasks_(threads * TasksPerThread)
{
    if (threads < 2)
        return;
    const SignalMask of_the_threads;
    for (unsigned i = 0; i < threads; ++i)
        threads_.emplace_back([this] { serve(); });
}

OrderedWork::~OrderedWork()
{
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
    }
    work_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void OrderedWork::add(Work work)
{
    if (threads_.empty()) {
        finished_(work(write_));
        return;
    }
    auto task = std::make_shared<Task>();
    task->work = std::move(work);
    std::unique_lock lock(mutex_);
    // One wake-up for half of the room: a wake-up costs as much as a short task.
    if (tasks_.size() >= most_tasks_)
        room_.wait(lock, [this] { return tasks_.size() <= most_tasks_ / 2; });
    tasks_.push_back(task);
    waiting_.push_back(std::move(task));
    work_.notify_one();
}

void OrderedWork::serve()
{
    std::unique_lock lock(mutex_);
    while (true) {
        work_.wait(lock, [this] { return closed_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        const std::shared_ptr<Task> task = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        task->complaint = task->work([&task](std::string_view line) { task->output += line; });
        task->work = nullptr;
        lock.lock();
        task->done = true;
        write_what_is_done(lock);
    }
}

void OrderedWork::write_what_is_done(std::unique_lock<std::mutex>& lock)
{
    // The thread that writes also writes what the others finish meanwhile.
    if (std::exchange(writing_, true))
        return;
    while (!tasks_.empty() && tasks_.front()->done) {
        const std::shared_ptr<Task> task = tasks_.front();
        lock.unlock();
        write_(task->output);
        finished_(task->complaint);
        lock.lock();
        tasks_.pop_front();
        if (tasks_.size() <= most_tasks_ / 2)
            room_.notify_one();
    }
    writing_ = false;
}

} // namespace qoro
