#pragma once

#include <chrono>
#include <future>
#include <string>

namespace qoro
{

/// A kind of process that the web engine starts: one for its requests, and one for each page.
enum class WebProcess { Network, Page };

/// Tries, in the background, whether a process of the web engine starts on this machine as it is now: it is run as
/// WebKit runs it, locked away where pages are, until it says that it is there, and is ended. WebKit ends the whole
/// program where it does not start.
///
/// Callable from any thread. One trial of a kind runs at a time, and serves everyone who asks meanwhile.
/// @param max_age  seconds for which an earlier trial that went well still counts
/// @return one line that says what does not start, and why; empty when it does, or when it cannot be found out. What
///         takes longer than ten seconds counts as starting.
std::shared_future<std::string> try_launch(WebProcess process, double max_age);

/// The max_age for a process that is wanted in an ordinary way.
inline constexpr double LaunchCounts = 60;

/// Whether a trial's result is there to be had without waiting.
inline bool is_known(const std::shared_future<std::string>& trial)
{
    return trial.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace qoro
