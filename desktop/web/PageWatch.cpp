#include "desktop/web/PageWatch.h"

#include "desktop/web/ProcessFacts.h"
#include "desktop/web/ProcessorUse.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

extern "C" { // missing in the header of glibc 2.36
#include <sys/pidfd.h>
}

namespace qoro
{

namespace
{

constexpr auto Interval = std::chrono::milliseconds(100);
/// During a flood, memory can grow by hundreds of megabytes a second.
constexpr auto FloodInterval = std::chrono::milliseconds(20);
constexpr std::uint64_t Megabyte = std::uint64_t{1024} * 1024;
/// Process names, truncated by the system to 15 bytes.
constexpr const char* PageProcess = "WebKitWebProces";
constexpr const char* RequestProcess = "WebKitNetworkPr";
/// WebKit's threads that receive messages from its processes.
constexpr const char* Receiver = "ReceiveQueue";
/// Fraction of one processor that the receiving threads use while a page floods the program.
constexpr double Flood = 0.12;
/// Seconds of less traffic after which a flood has ended.
constexpr double FloodLasts = 0.5;
/// Seconds of flood after which the page is ended, even if memory does not grow: it delays the viewer's taps.
constexpr double LongestFlood = 3;
/// Seconds between two scans of the threads.
constexpr double NewThreads = 1;

std::string in_megabytes(double limit)
{
    return "(limit " + std::to_string(static_cast<long>(limit)) + " MB)";
}

} // namespace

/// A process, identified by a pidfd, so that its PID cannot be reused by another.
class PageWatch::Process
{
public:
    Process(std::uint64_t space, int number) : space_(space), number_(number) {}
    ~Process()
    {
        if (handle_ >= 0)
            close(handle_);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool is_resolved() const { return resolved_; }
    /// Searches this program's descendants for the process.
    /// @param name of the process; if the number is 0, the first process of that name is used
    void resolve(const char* name)
    {
        resolved_ = true;
        int found = 0;
        for_each_descendant(getpid(), [&](int descendant, const std::string& its_name) {
            if (found == 0 && its_name == name &&
                (number_ == 0 || (innermost_number(descendant) == number_ && number_space(descendant) == space_)))
                found = descendant;
        });
        if (found == 0)
            return;
        handle_ = pidfd_open(found, 0);
        process_ = handle_ >= 0 ? found : 0;
        worked_ = worked_seconds(process_).value_or(0);
    }
    bool is_there() const { return process_ != 0; }

    /// @param seconds since the last check
    /// @param dropped_frames of all videos so far
    void look(double seconds, std::uint64_t dropped_frames = 0)
    {
        if (process_ == 0)
            return;
        const std::optional<std::uint64_t> memory = own_memory(process_);
        const std::optional<double> worked = worked_seconds(process_);
        // Otherwise the process has ended, and its PID may belong to another.
        if (!memory || !worked || pidfd_send_signal(handle_, 0, nullptr, 0) != 0) {
            process_ = 0;
            memory_ = 0;
            return;
        }
        memory_ = *memory;
        load_ = seconds > 0 ? (*worked - worked_) / seconds : 0;
        processor_use_.look(load_, dropped_frames, seconds);
        worked_ = *worked;
    }
    double megabytes() const { return static_cast<double>(memory_) / Megabyte; }
    /// Processor usage; 1 is one processor.
    double load() const { return load_; }
    double starves_video_for() const { return processor_use_.starves_for(); }

    void end(const std::string& why)
    {
        if (process_ == 0)
            return;
        if (reason.empty())
            reason = why;
        pidfd_send_signal(handle_, SIGKILL, nullptr, 0);
    }

    std::string reason;

private:
    const std::uint64_t space_;
    const int number_;
    bool resolved_ = false;
    int handle_ = -1;
    /// PID; 0 if the process does not exist.
    int process_ = 0;
    std::uint64_t memory_ = 0;
    double worked_ = 0;
    double load_ = 0;
    ProcessorUse processor_use_;
};

/// State of flood detection for this program.
struct PageWatch::Host {
    std::vector<std::pair<int, double>> receivers; // thread ID and processor seconds used
    double since_new_threads = NewThreads;
    double since_flood = FloodLasts;
    /// Seconds since the present flood began; 0 if there is none.
    double flooded_for = 0;
    /// Bytes of memory when there was last no flood.
    std::uint64_t quiet = 0;
};

PageWatch::PageWatch(const PageLimits& limits) : limits_(limits)
{
}

PageWatch::~PageWatch()
{
    {
        const std::scoped_lock lock(mutex_);
        ends_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

PageWatch::Page PageWatch::begin(std::uint64_t space, int number)
{
    const std::scoped_lock lock(mutex_);
    processes_.emplace(++last_, std::make_unique<Process>(space, number));
    if (!thread_.joinable())
        thread_ = std::thread([this] { run(); });
    changed_.notify_one();
    return last_;
}

void PageWatch::leave(Page page)
{
    const std::scoped_lock lock(mutex_);
    processes_.erase(page);
}

std::string PageWatch::reason(Page page)
{
    const std::scoped_lock lock(mutex_);
    const auto found = processes_.find(page);
    return found == processes_.end() ? "" : found->second->reason;
}

void PageWatch::run()
{
    prctl(PR_SET_NAME, "qoro-pages");
    std::unique_lock lock(mutex_);
    auto before = std::chrono::steady_clock::now();
    while (!ends_) {
        if (processes_.empty()) {
            requests_.reset();
            host_.reset();
            changed_.wait(lock, [this] { return ends_ || !processes_.empty(); });
            before = std::chrono::steady_clock::now();
        }
        const auto now = std::chrono::steady_clock::now();
        look(std::chrono::duration<double>(now - std::exchange(before, now)).count());
        const bool floods = host_->since_flood < FloodLasts;
        changed_.wait_for(lock, floods ? FloodInterval : Interval, [this] { return ends_; });
    }
}

void PageWatch::look(double seconds)
{
    const std::uint64_t dropped = limits_.dropped_frames ? limits_.dropped_frames() : 0;
    for (const auto& [page, process] : processes_) {
        if (!process->is_resolved())
            process->resolve(PageProcess);
        process->look(seconds, dropped);
        if (process->megabytes() > limits_.memory)
            process->end("the page's process used too much memory " + in_megabytes(limits_.memory));
        if (limits_.processor_seconds && process->starves_video_for() > *limits_.processor_seconds)
            process->end("the page's process took more than one processor for " +
                         std::to_string(static_cast<long>(*limits_.processor_seconds)) +
                         " s while the video dropped frames");
    }
    // WebKit starts a new process when the previous one has ended.
    if (!requests_ || !requests_->is_there()) {
        requests_ = std::make_unique<Process>(0, 0);
        requests_->resolve(RequestProcess);
    }
    requests_->look(seconds);
    if (requests_->megabytes() > limits_.memory) {
        const std::string why = "the page stored too much outside its process " + in_megabytes(limits_.memory);
        end_busiest(why);
        requests_->end(why);
    }
    if (!host_)
        host_ = std::make_unique<Host>();
    look_at_host(*host_, seconds);
}

void PageWatch::look_at_host(Host& host, double seconds)
{
    if ((host.since_new_threads += seconds) >= NewThreads) {
        host.since_new_threads = 0;
        std::vector<std::pair<int, double>> receivers;
        for_each_thread(getpid(), [&](int thread, const std::string& name) {
            if (name == Receiver)
                receivers.emplace_back(thread, worked_seconds(getpid(), thread).value_or(0));
        });
        host.receivers = std::move(receivers);
    }
    double worked = 0;
    for (auto& [thread, before] : host.receivers) {
        const double now = worked_seconds(getpid(), thread).value_or(before);
        worked += now - std::exchange(before, now);
    }
    host.since_flood = worked > Flood * seconds ? 0 : host.since_flood + seconds;
    host.flooded_for = host.since_flood < FloodLasts ? host.flooded_for + seconds : 0;
    if (host.flooded_for > LongestFlood) {
        host.flooded_for = 0;
        end_busiest("the page flooded the program for " + shortest_text(LongestFlood) + " s");
    }
    const std::uint64_t memory = own_memory(getpid()).value_or(0);
    if (host.since_flood >= FloodLasts || host.quiet == 0)
        host.quiet = memory;
    const double growth = (static_cast<double>(memory) - static_cast<double>(host.quiet)) / Megabyte;
    if (growth > limits_.flood)
        end_busiest("the page flooded the program " + in_megabytes(limits_.flood));
}

void PageWatch::end_busiest(const std::string& why)
{
    Process* busiest = nullptr;
    for (const auto& [page, process] : processes_)
        if (process->is_there() && process->reason.empty() && (!busiest || process->load() > busiest->load()))
            busiest = process.get();
    if (busiest)
        busiest->end(why);
}

} // namespace qoro
