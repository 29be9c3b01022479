#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace qoro
{

/// Resource limits of pages.
struct PageLimits {
    /// Private memory of a page's process, and of the process that performs the pages' requests, in megabytes of 1024 ×
    /// 1024 bytes.
    double memory = 512;
    /// Megabytes by which this program may grow while a page floods it with messages.
    double flood = 48;
    /// Seconds for which a page's process may use more than one processor while a video drops frames; absent: no limit.
    std::optional<double> processor_seconds = {};
    /// Returns the number of frames that the videos have dropped so far; must accept calls from any thread. May be
    /// empty; then processor_seconds has no effect.
    std::function<std::uint64_t()> dropped_frames = {};
};

/// Checks the resource usage of page processes and the growth of this program ten times a second, and kills a process
/// that exceeds a limit. Runs on its own thread, so it works even if a page keeps the main loop busy; the thread sleeps
/// while there is no page. Any thread may call the functions.
class PageWatch
{
public:
    /// Identifies a registered page; 0 for none.
    using Page = std::uint64_t;

    explicit PageWatch(const PageLimits& limits);
    ~PageWatch();
    PageWatch(const PageWatch&) = delete;
    PageWatch& operator=(const PageWatch&) = delete;

    /// Registers a page's process as the page's guard reports it.
    /// @param space inode of the process's PID namespace
    /// @param number PID in that namespace; ignored if it is not a page process started by this program
    /// @return never 0
    Page begin(std::uint64_t space, int number);
    /// Unregisters a page; WebKit ends its process. No effect for 0.
    void leave(Page page);
    /// Why the watch has killed a page's process, in words; empty if it has not.
    std::string reason(Page page);

private:
    class Process;
    struct Host;

    void run();
    /// @param seconds since the last call
    void look(double seconds);
    void look_at_host(Host& host, double seconds);
    /// Kills the process that has used most processor time since the last check.
    void end_busiest(const std::string& why);

    const PageLimits limits_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ends_ = false;
    Page last_ = 0;
    std::map<Page, std::unique_ptr<Process>> processes_;
    std::unique_ptr<Process> requests_;
    std::unique_ptr<Host> host_;
    std::thread thread_;
};

} // namespace qoro
