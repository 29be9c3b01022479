#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace qoro::test
{

/// Watches how much memory is resident in a program and in the processes that it has started, for as long as it lives.
class MemoryWatch
{
public:
    /// @param family asked now and then, on a thread of its own: the program's process, then the others
    explicit MemoryWatch(std::function<std::vector<int>()> family);
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;

    /// Bytes by which the program itself has been above its state at the beginning of the watch, at most.
    long program_growth() const { return program_ - quiet_; }
    /// Bytes that all its other processes have had together, at most.
    long others() const { return others_; }

private:
    void look();

    const std::function<std::vector<int>()> family_;
    std::atomic<long> quiet_ = 0;
    std::atomic<long> program_ = 0;
    std::atomic<long> others_ = 0;
    std::atomic<bool> closing_ = false;
    std::thread thread_;
};

} // namespace qoro::test
