#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace qoro::detail
{

/// Calls a function with 0, 1, … count - 1, in any order and on several threads. Returns after the last call.
/// @param threads the caller's among them; 0 counts as 1
/// @param work must not throw
inline void in_parallel(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work)
{
    std::atomic<std::size_t> next = 0;
    const auto take = [&] {
        for (std::size_t n = next++; n < count; n = next++)
            work(n);
    };
    std::vector<std::jthread> others;
    for (std::size_t thread = 1; thread < std::min(threads, count); ++thread)
        others.emplace_back(take);
    take();
}

} // namespace qoro::detail
