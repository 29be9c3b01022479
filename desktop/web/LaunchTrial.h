#pragma once

#include <chrono>
#include <future>
#include <string>
#include <utility>

namespace qoro
{

/// Kinds of processes that the web engine starts: one for network requests, and one per page.
enum class WebProcess { Network, Page };

/// A test, in the background, of whether a process of the web engine can start on this machine. Any thread may use it.
class LaunchTrial
{
public:
    using Clock = std::chrono::steady_clock;

    LaunchTrial() = default;
    LaunchTrial(std::shared_future<std::string> result, Clock::time_point began)
        : result_(std::move(result)), began_(began)
    {
    }

    bool began() const { return result_.valid(); }
    /// Whether outcome() does not block: the trial has ended, or its deadline has passed.
    bool is_over() const;
    /// Waits until the trial is over.
    /// @return one line that says what does not start, and why; empty if it starts, or if that cannot be determined. A
    ///         process that takes longer than ten seconds counts as started.
    std::string outcome() const;
    /// Whether the process started, at most max_age seconds ago.
    bool succeeded_within(double max_age) const;

private:
    Clock::time_point deadline() const;

    std::shared_future<std::string> result_;
    Clock::time_point began_;
};

/// Begins a trial: the dynamic linker loads the process's program and looks for its libraries, for a page in a sandbox
/// like WebKit's unless that is disabled. It does not link them, which takes as long as the page itself: they are those
/// of this program, which shows no page if it cannot link WebKit. Without this test, WebKit would terminate the whole
/// program if the process did not start.
///
/// Any thread may call this. Only one trial of a kind runs at a time; calls in the meantime share its result.
/// @param max_age seconds for which the result of an earlier successful trial is reused
LaunchTrial try_launch(WebProcess process, double max_age);

/// The max_age of an ordinary launch, in seconds.
inline constexpr double LaunchCounts = 60;

} // namespace qoro
