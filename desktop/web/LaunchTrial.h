#pragma once

#include <chrono>
#include <future>
#include <string>
#include <string_view>
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
    ///         program that takes longer than five seconds counts as started.
    std::string outcome() const;
    /// Whether the process started, at most max_age seconds ago.
    bool succeeded_within(double max_age) const;

private:
    Clock::time_point deadline() const;

    std::shared_future<std::string> result_;
    Clock::time_point began_;
};

/// Begins a trial: the dynamic linker lists the libraries of the process's program, for a page in a sandbox like
/// WebKit's unless that is disabled. It does not link them, because that takes as long as the page itself. This program
/// links the same libraries when it loads WebKit, and shows no page if that fails. Without this test, WebKit would
/// terminate the whole program if the process did not start.
///
/// Any thread may call this. Only one trial of a kind runs at a time; calls in the meantime share its result.
/// @param max_age seconds for which the result of an earlier successful trial is reused
LaunchTrial try_launch(WebProcess process, double max_age);

/// @param listed what the dynamic linker prints for a program with LD_TRACE_LOADED_OBJECTS
/// @return what keeps it from being a program of WebKit's that starts; empty if nothing does, or if this is no such
/// list
std::string webkit_lacks(std::string_view listed);

/// The max_age of an ordinary launch, in seconds.
inline constexpr double LaunchCounts = 60;

} // namespace qoro
