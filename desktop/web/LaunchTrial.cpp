#include "desktop/web/LaunchTrial.h"

#include "desktop/glib/Owned.h"
#include "desktop/web/WebKitFunctions.h"

#include <gtk/gtk.h>

#include <chrono>
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

constexpr auto Patience = std::chrono::seconds(10);
/// For what Patience does not bound: creating the process, and its exit.
constexpr auto Grace = std::chrono::seconds(2);
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
    std::string output;
    /// Why the program failed; empty if it did not, or if it took too long.
    std::string complaint;
    bool took_too_long = false;
};

Outcome run(const std::vector<std::string>& command)
{
    std::vector<std::string> words{"timeout", std::to_string(Patience.count())};
    words.insert(words.end(), command.begin(), command.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    // Descriptors that stay open: GLib uses posix_spawn then, which copies no memory and cannot be caught by a lock
    // that another thread holds, as a fork can.
    char* written = nullptr;
    char* complained = nullptr;
    int status = 0;
    Error error;
    if (g_spawn_sync(nullptr, pointers.data(), nullptr,
                     static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_LEAVE_DESCRIPTORS_OPEN), nullptr, nullptr,
                     &written, &complained, &status, error.out()))
        g_spawn_check_wait_status(status, error.out());
    const std::string output = take_text(written);
    const std::string last_words = last_line_of(take_text(complained));
    if (WIFEXITED(status) && WEXITSTATUS(status) == TimedOut)
        return {.output = output, .complaint = "", .took_too_long = true};
    if (!error)
        return {.output = output, .complaint = ""};
    return {.output = output, .complaint = last_words.empty() ? error.message() : last_words};
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

/// @param libraries what the dynamic linker would link a program to
/// @return what is wrong with them for a program of WebKit's; empty if nothing is
std::string complaint_of_libraries(const std::string& libraries)
{
    constexpr std::string_view missing = " => not found";
    if (const std::size_t at = libraries.find(missing); at != std::string::npos) {
        const std::size_t name = libraries.find_last_of("\t\n", at) + 1;
        return "it lacks the library " + libraries.substr(name, at - name);
    }
    return libraries.find("libwebkitgtk") == std::string::npos ? "it is not a program of WebKit's" : "";
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
    if (outcome.took_too_long)
        return "";
    const std::string complaint =
        outcome.complaint.empty() ? complaint_of_libraries(outcome.output) : outcome.complaint;
    return complaint.empty() ? "" : program + " does not start: " + complaint;
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
