#include "desktop/web/LaunchTrial.h"

#include "desktop/glib/Owned.h"
#include "desktop/web/WebKitFunctions.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

using Clock = LaunchTrial::Clock;

constexpr auto Patience = std::chrono::seconds(10);
/// For what Patience does not bound: creating the process, and its exit.
constexpr auto Grace = std::chrono::seconds(2);
/// The last WebKit (2.x) whose processes are known to expect their sockets as this file passes them. A process of a
/// later version that exits without a message may merely expect them differently.
constexpr unsigned LastKnownMinor = 52;

class Descriptor
{
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        reset(std::exchange(other.number_, -1));
        return *this;
    }
    void reset(int number = -1)
    {
        if (number_ >= 0)
            close(number_);
        number_ = number;
    }
    int get() const { return number_; }

private:
    int number_;
};

/// The folder of the library that contains an address.
std::string folder_of(const void* address)
{
    Dl_info library{};
    return dladdr(address, &library) == 0 ? "" : take_text(g_path_get_dirname(library.dli_fname));
}

/// The folder of WebKit's own programs; empty if they are not where expected. WebKit is loaded only if it is not
/// installed beside GTK: loading takes longer than a trial, and other threads wait for it.
std::string programs_folder()
{
    const auto is_folder = [](const std::string& path) { return g_file_test(path.c_str(), G_FILE_TEST_IS_DIR); };
    const std::string beside_gtk = folder_of(reinterpret_cast<const void*>(&gtk_init)) + "/webkitgtk-6.0";
    if (is_folder(beside_gtk))
        return beside_gtk;
    if (!load_webkit().empty())
        return "";
    for (const std::string& folder : {folder_of(webkit_function("webkit_get_major_version")) + "/webkitgtk-6.0",
                                      std::string("/usr/libexec/webkitgtk-6.0")})
        if (is_folder(folder))
            return folder;
    return "";
}

std::string last_line_of(int descriptor)
{
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
    std::string text;
    std::array<char, 4096> bytes;
    for (ssize_t count; text.size() < 65536 && (count = read(descriptor, bytes.data(), bytes.size())) > 0;)
        text.append(bytes.data(), static_cast<std::size_t>(count));
    while (!text.empty() && g_ascii_isspace(text.back()))
        text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

/// A trial of one of WebKit's processes, or of a program that it requires.
class Launch
{
public:
    /// @param speaks true for a process of WebKit's, which reports that it is running; false for a program that signals
    ///        success by its exit status
    Launch(std::string name, std::vector<std::string> command, bool speaks) : name_(std::move(name)), speaks_(speaks)
    {
        // The process closes its end when it is done or exits.
        std::array<int, 2> connection{-1, -1};
        std::array<int, 2> presence{-1, -1};
        std::array<int, 2> complaints{-1, -1};
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, connection.data()) != 0 ||
            socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, presence.data()) != 0 ||
            pipe2(complaints.data(), O_CLOEXEC) != 0)
            reason_ = g_strerror(errno);
        connection_ = Descriptor(connection[0]);
        presence_ = Descriptor(presence[0]);
        complaints_ = Descriptor(complaints[0]);
        const Descriptor theirs[] = {Descriptor(connection[1]), Descriptor(presence[1]), Descriptor(complaints[1])};
        if (!reason_.empty())
            return;
        std::vector<char*> words;
        words.reserve(command.size() + 1);
        for (std::string& word : command)
            words.push_back(word.data());
        words.push_back(nullptr);
        const std::array<int, 2> sources{theirs[0].get(), theirs[1].get()};
        const std::array<int, 2> targets{3, 4};
        // Descriptors that stay open: GLib uses posix_spawn then, which copies no memory and cannot be caught by a
        // lock that another thread holds, as a fork can.
        Error error;
        g_spawn_async_with_pipes_and_fds(nullptr, words.data(), nullptr,
                                         static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD |
                                                                  G_SPAWN_STDOUT_TO_DEV_NULL |
                                                                  G_SPAWN_LEAVE_DESCRIPTORS_OPEN),
                                         nullptr, nullptr, -1, -1, theirs[2].get(), sources.data(), targets.data(),
                                         sources.size(), &process_, nullptr, nullptr, nullptr, error.out());
        if (error)
            reason_ = error.message();
    }
    ~Launch()
    {
        if (process_ <= 0)
            return;
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    Launch(const Launch&) = delete;
    Launch& operator=(const Launch&) = delete;

    /// @return what went wrong; empty on success
    std::string wait(Clock::time_point until)
    {
        if (reason_.empty())
            reason_ = outcome(until);
        return reason_.empty() ? "" : name_ + " does not start: " + reason_;
    }

private:
    std::string outcome(Clock::time_point until)
    {
        pollfd presence{presence_.get(), POLLIN, 0};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
        int came = 0;
        do
            came = poll(&presence, 1, static_cast<int>(std::max<long>(left, 0)));
        while (came < 0 && errno == EINTR);
        char byte = 0;
        if (came <= 0 || (speaks_ && recv(presence_.get(), &byte, 1, MSG_DONTWAIT) == 1))
            return "";
        int status = 0;
        waitpid(std::exchange(process_, 0), &status, 0);
        const std::string words = last_line_of(complaints_.get());
        if (!speaks_ && status == 0)
            return "";
        if (speaks_ && words.empty() && WIFEXITED(status) && WEXITSTATUS(status) == 1 && load_webkit().empty() &&
            webkit_get_minor_version() > LastKnownMinor)
            return "";
        if (!words.empty())
            return words;
        return WIFSIGNALED(status) ? "it was ended by signal " + std::to_string(WTERMSIG(status))
                                   : "it ended at once, with exit status " + std::to_string(WEXITSTATUS(status));
    }

    const std::string name_;
    const bool speaks_;
    std::string reason_;
    Descriptor connection_;
    Descriptor presence_;
    Descriptor complaints_;
    GPid process_ = 0;
};

std::vector<std::string> locked_away(std::vector<std::string> command)
{
    std::vector<std::string> all{"bwrap",
                                 "--die-with-parent",
                                 "--unshare-pid",
                                 "--unshare-ipc",
                                 "--unshare-uts",
                                 "--ro-bind",
                                 "/",
                                 "/",
                                 "--proc",
                                 "/proc",
                                 "--dev",
                                 "/dev"};
    all.insert(all.end(), command.begin(), command.end());
    return all;
}

std::string run_trial(WebProcess process)
{
    const std::string folder = programs_folder();
    if (folder.empty())
        return "";
    const bool locked = !g_getenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");
    const char* program = process == WebProcess::Page ? "WebKitWebProcess" : "WebKitNetworkProcess";
    const std::vector<std::string> command{folder + "/" + program, "1", "3", "4"};
    const Clock::time_point until = Clock::now() + Patience;
    Launch itself(program, locked ? locked_away(command) : command, true);
    std::string reason;
    if (locked)
        reason = Launch("xdg-dbus-proxy", {"xdg-dbus-proxy", "--version"}, false).wait(until);
    return reason.empty() ? itself.wait(until) : reason;
}

} // namespace

bool LaunchTrial::is_over() const
{
    return result_.wait_for(std::chrono::seconds(0)) == std::future_status::ready || Clock::now() >= deadline();
}

std::string LaunchTrial::outcome() const
{
    return result_.wait_until(deadline()) == std::future_status::ready ? result_.get() : "";
}

bool LaunchTrial::succeeded_within(double max_age) const
{
    return outcome().empty() && Clock::now() - began_ <= std::chrono::duration<double>(max_age);
}

LaunchTrial::Clock::time_point LaunchTrial::deadline() const
{
    return began_ + Patience + Grace;
}

LaunchTrial try_launch(WebProcess process, double max_age)
{
    static std::mutex mutex;
    static std::map<WebProcess, LaunchTrial> trials;
    const std::scoped_lock lock(mutex);
    LaunchTrial& latest = trials[process];
    if (latest.began() && (!latest.is_over() || latest.succeeded_within(max_age)))
        return latest;
    // Detached: a trial that never ends must not keep the program from ending.
    std::packaged_task<std::string()> trial([process] { return run_trial(process); });
    latest = {trial.get_future().share(), LaunchTrial::Clock::now()};
    try {
        std::thread(std::move(trial)).detach();
    } catch (const std::system_error& no_thread) {
        std::promise<std::string> refused;
        refused.set_value(no_thread.what());
        latest = {refused.get_future().share(), LaunchTrial::Clock::now()};
    }
    return latest;
}

} // namespace qoro
