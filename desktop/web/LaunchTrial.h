#pragma once

#include <chrono>
#include <future>
#include <string>

namespace qoro
{

/// Kinds of processes that the web engine starts: one for network requests, and one per page.
enum class WebProcess { Network, Page };

/// Tests in the background whether a process of the web engine can currently start on this machine. The process is run
/// as WebKit runs it, in the sandbox unless that is disabled, until it reports that it is running, and is then killed.
/// Without this test, WebKit would terminate the whole program if the process did not start.
///
/// Any thread may call this. Only one trial of a kind runs at a time; calls in the meantime share its result.
/// @param max_age seconds for which the result of an earlier successful trial is reused
/// @return one line that says what does not start, and why; empty if it starts, or if that cannot be determined. A
///         process that takes longer than ten seconds counts as started.
std::shared_future<std::string> try_launch(WebProcess process, double max_age);

/// The max_age of an ordinary launch, in seconds.
inline constexpr double LaunchCounts = 60;

/// Whether a trial's result is available without blocking.
inline bool is_known(const std::shared_future<std::string>& trial)
{
    return trial.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace qoro
