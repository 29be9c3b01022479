#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace qoro::test
{

/// Samples the resident memory of a program and its child processes while this object exists.
class MemoryWatch
{
public:
    /// @param family called repeatedly on a separate thread: returns the program's process first, then the others
    explicit MemoryWatch(std::function<std::vector<int>()> family);
    ~MemoryWatch();
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;

    /// Maximum growth of the program itself since the start of the watch, bytes.
    long program_growth() const { return program_ - quiet_; }
    /// Maximum of the total of all its other processes, bytes.
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
