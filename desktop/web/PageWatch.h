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

/// What the pages may take of the machine.
struct PageLimits {
    /// Megabytes (of 1024 × 1024 bytes) of a page's process that are its own, and of the process that does the pages'
    /// requests.
    double memory = 512;
    /// Megabytes by which this program grows while a page floods it.
    double flood = 48;
    /// Seconds for which a page's process may work for more than one processor while a video drops frames; absent for
    /// as long as it likes.
    std::optional<double> processor_seconds = {};
    /// How many frames the videos have dropped so far; may be called by any thread. Without it no page starves a video.
    std::function<std::uint64_t()> dropped_frames = {};
};

/// Looks ten times a second at what the processes of pages take, and at this program's own growth, and ends a process
/// that takes too much. On a thread of its own, which sleeps while there is no page: a main loop that a page keeps busy
/// does not keep this from ending it.
class PageWatch
{
public:
    using Page = std::uint64_t;

    explicit PageWatch(const PageLimits& limits);
    ~PageWatch();
    PageWatch(const PageWatch&) = delete;
    PageWatch& operator=(const PageWatch&) = delete;

    /// A page's process says who it is.
    /// @param space  the inode of its namespace of process numbers
    /// @param number  its number therein. What turns out to be no process of a page of this program is left alone.
    /// @return never 0
    Page begin(std::uint64_t space, int number);
    /// The page has gone: its process is WebKit's to end. Nothing for 0.
    void leave(Page page);
    /// Why the watch has ended a page's process, in words; empty when it has not.
    std::string reason(Page page);

private:
    class Process;
    struct Host;

    void run();
    void look();
    void look_at_host(Host& host, double seconds);
    /// Ends the process that has worked most since the last look.
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
