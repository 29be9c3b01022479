#include "desktop/web/LaunchTrial.h"

#include "desktop/glib/Owned.h"
#include "desktop/web/WebKitFunctions.h"

#include <gtk/gtk.h>

#include <chrono>
#include <csignal>
#include <dlfcn.h>
#include <map>
#include <mutex>
#include <string_view>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

using Clock = LaunchTrial::Clock;

/// For each program of a trial, two at most.
constexpr auto Patience = std::chrono::seconds(5);
/// Until the outcome of a trial is no longer awaited: creating a process and ending it take time, too.
constexpr auto LongestTrial = 2 * Patience + std::chrono::seconds(3);
/// Exit status of timeout(1) for a program that took longer.
constexpr int TimedOut = 124;

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

std::string last_line_of(std::string text)
{
    while (!text.empty() && g_ascii_isspace(text.back()))
        text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

struct Outcome {
    /// Whether the program ran to its end.
    bool ended = false;
    std::string output;
    /// Why the program failed; empty if it did not, or did not end.
    std::string complaint;
};

/// Runs a program of the PATH without input, for Patience at most. Any thread may call this.
Outcome run(const std::vector<std::string>& command)
{
    std::vector<std::string> words{"timeout", "--kill-after=1", std::to_string(Patience.count())};
    words.insert(words.end(), command.begin(), command.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    // Descriptors that stay open: GLib uses posix_spawn then, which copies no memory and cannot be caught by a lock
    // that another thread holds, as a fork can. The pipes are closed, or a process that WebKit starts meanwhile would
    // keep them open.
    char* written = nullptr;
    char* complained = nullptr;
    int status = 0;
    const bool ran = g_spawn_sync(
        nullptr, pointers.data(), nullptr,
        static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_LEAVE_DESCRIPTORS_OPEN | G_SPAWN_CLOEXEC_PIPES), nullptr,
        nullptr, &written, &complained, &status, nullptr);
    const std::string output = take_text(written);
    const std::string last_words = last_line_of(take_text(complained));
    const bool took_too_long = WIFEXITED(status) ? WEXITSTATUS(status) == TimedOut : WTERMSIG(status) == SIGKILL;
    if (!ran || took_too_long)
        return {};
    Error error;
    g_spawn_check_wait_status(status, error.out());
    if (!error)
        return {.ended = true, .output = output, .complaint = ""};
    return {.ended = true, .output = output, .complaint = last_words.empty() ? error.message() : last_words};
}

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
    const bool locked = process == WebProcess::Page && !g_getenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");
    if (locked)
        if (const Outcome proxy = run({"xdg-dbus-proxy", "--version"}); !proxy.complaint.empty())
            return "xdg-dbus-proxy does not start: " + proxy.complaint;
    const std::string program = process == WebProcess::Page ? "WebKitWebProcess" : "WebKitNetworkProcess";
    const std::vector<std::string> listing{"env", "LD_TRACE_LOADED_OBJECTS=1", folder + "/" + program};
    const Outcome outcome = run(locked ? locked_away(listing) : listing);
    if (!outcome.ended)
        return "";
    const std::string complaint = outcome.complaint.empty() ? webkit_lacks(outcome.output) : outcome.complaint;
    return complaint.empty() ? "" : program + " does not start: " + complaint;
}

} // namespace

std::string webkit_lacks(std::string_view listed)
{
    constexpr std::string_view found = " => ";
    constexpr std::string_view missing = " => not found";
    if (const std::size_t at = listed.find(missing); at != std::string_view::npos) {
        const std::size_t name = listed.find_last_of("\t\n", at) + 1;
        return "it lacks the library " + std::string(listed.substr(name, at - name));
    }
    const bool is_list = listed.find(found) != std::string_view::npos;
    return is_list && listed.find("libwebkitgtk") == std::string_view::npos ? "it is not a program of WebKit's" : "";
}

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
    return began_ + LongestTrial;
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
