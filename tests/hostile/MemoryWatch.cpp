#include "tests/hostile/MemoryWatch.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <unistd.h>
#include <utility>

namespace qoro::test
{

namespace
{

/// Sampling interval.
constexpr std::chrono::milliseconds Glance{100};

/// Resident memory in bytes; 0 for a process that has ended.
long resident(int process)
{
    long pages = 0;
    std::ifstream statm("/proc/" + std::to_string(process) + "/statm");
    statm >> pages >> pages;
    return statm ? pages * sysconf(_SC_PAGESIZE) : 0;
}

} // namespace

MemoryWatch::MemoryWatch(std::function<std::vector<int>()> family) : family_(std::move(family))
{
    look();
    quiet_ = program_.load();
    thread_ = std::thread([this] {
        while (!closing_) {
            look();
            std::this_thread::sleep_for(Glance);
        }
    });
}

MemoryWatch::~MemoryWatch()
{
    closing_ = true;
    thread_.join();
}

void MemoryWatch::look()
{
    const std::vector<int> family = family_();
    long others = 0;
    for (std::size_t i = 1; i < family.size(); ++i)
        others += resident(family[i]);
    others_ = std::max(others_.load(), others);
    if (!family.empty())
        program_ = std::max(program_.load(), resident(family.front()));
}

} // namespace qoro::test
