// Ten thousand trackers to a local server: whether each arrives exactly once, and how long the main loop is blocked
// meanwhile:
//
//   tracker_bench [TRACKERS]
//
// TRACKERS: default 10000. They are requested in lists of ten, one list per loop iteration, without pauses. Compared
// with libsoup alone on the main loop, 64 requests at a time, and with `curl --parallel`, 64 at a time, which has no
// loop to block. The idle loop gives the machine's baseline. Prints for each: trackers sent, answered with success, and
// received by the server; the longest time that the loop was blocked; the most processor time that the loop's own
// thread used in such an interval (the rest is other threads and programs); and the time to the last answer; then the
// ratios to the other two. Exits with 1 if one of this program's trackers was lost or arrived twice.

#include "desktop/GlibLoop.h"
#include "desktop/net/AdServer.h"
#include "desktop/net/SoupFetcher.h"

#include <glib/gstdio.h>
#include <libsoup/soup.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>

namespace
{

constexpr int ListLength = 10;
/// Seconds: sampling interval of the loop; time limit of a run.
constexpr double Look = 0.0005;
constexpr double Patience = 120;
constexpr double RestSeconds = 3;
/// Connections of each of the three programs.
constexpr int AtATime = 64;

struct Figures {
    const char* name;
    int sent = 0;
    int succeeded = 0;
    /// Negative when a tracker arrived twice.
    int received = 0;
    /// Seconds; negative without a loop.
    double longest_stall = -1;
    /// Most processor time of the loop's own thread in one interval, seconds.
    double longest_work = -1;
    double seconds = 0;
};

std::string path_of(const std::string& run, int number)
{
    return "/t?" + run + "=" + std::to_string(number);
}

/// A temporary folder with an empty file "t"; removed by the destructor.
struct Folder {
    const std::string path = [] {
        char* made = g_dir_make_tmp("trackers-XXXXXX", nullptr);
        const std::string text = made ? made : "";
        g_free(made);
        const std::ofstream file(text + "/t");
        return text;
    }();
    Folder() = default;
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
};

/// Number of trackers of a run that the server received; negated if any arrived twice.
int received(const qoro::AdServer& server, const std::string& run)
{
    int count = 0;
    std::set<std::string> targets;
    for (const qoro::AdServerHit& hit : server.hits())
        if (hit.target.starts_with("/t?" + run + "=")) {
            ++count;
            targets.insert(hit.target);
        }
    return targets.size() == static_cast<std::size_t>(count) ? count : -count;
}

/// Records the longest time that a loop is blocked, while this object exists.
class Watch
{
public:
    explicit Watch(qoro::GlibLoop& loop) : loop_(loop), last_(loop.now()), last_work_(thread_seconds())
    {
        timer_ = loop_.start_timer(Look, true, [this] {
            longest_ = std::max(longest_, loop_.now() - last_);
            longest_work_ = std::max(longest_work_, thread_seconds() - last_work_);
            last_ = loop_.now();
            last_work_ = thread_seconds();
        });
    }
    ~Watch() { loop_.stop_timer(timer_); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    void add_to(Figures& figures) const
    {
        figures.longest_stall = longest_;
        figures.longest_work = longest_work_;
    }

private:
    /// Processor time of the calling thread, seconds.
    static double thread_seconds()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    }

    qoro::GlibLoop& loop_;
    qoro::TimerId timer_;
    double last_;
    double last_work_;
    double longest_ = 0;
    double longest_work_ = 0;
};

Figures run_at_rest(qoro::GlibLoop& loop)
{
    Figures figures{.name = "at rest"};
    const Watch watch(loop);
    loop.run_until([] { return false; }, RestSeconds);
    watch.add_to(figures);
    figures.seconds = RestSeconds;
    return figures;
}

Figures run_ours(qoro::GlibLoop& loop, const qoro::AdServer& server, int trackers)
{
    Figures figures{.name = "this program's"};
    qoro::SoupFetcher fetcher(loop);
    const Watch watch(loop);
    int answered = 0;
    const std::function<void()> send_list = [&] {
        for (int i = 0; i < ListLength && figures.sent < trackers; ++i)
            fetcher.fetch(server.base() + path_of("ours", figures.sent++), qoro::FetchKind::Tracker,
                          [&](const qoro::FetchAnswer& answer) {
                              ++answered;
                              figures.succeeded += answer.ok;
                          });
        if (figures.sent < trackers)
            loop.post(send_list);
    };
    const double begun = loop.now();
    loop.post(send_list);
    loop.run_until([&] { return answered == trackers; }, Patience);
    figures.seconds = loop.now() - begun;
    watch.add_to(figures);
    figures.received = received(server, "ours");
    return figures;
}

/// libsoup on the main loop: each answer triggers the next request.
struct Libsoup {
    const qoro::AdServer& server;
    const int trackers;
    SoupSession* session = soup_session_new_with_options("max-conns", AtATime, "max-conns-per-host", AtATime, nullptr);
    Figures figures{.name = "libsoup's"};
    int answered = 0;

    void send_one()
    {
        if (figures.sent == trackers)
            return;
        SoupMessage* message =
            soup_message_new(SOUP_METHOD_GET, (server.base() + path_of("libsoup", figures.sent++)).c_str());
        soup_session_send_and_read_async(session, message, G_PRIORITY_DEFAULT, nullptr, was_answered, this);
        g_object_unref(message);
    }

    static void was_answered(GObject*, GAsyncResult* result, gpointer data)
    {
        auto& self = *static_cast<Libsoup*>(data);
        GBytes* body = soup_session_send_and_read_finish(self.session, result, nullptr);
        self.figures.succeeded += body != nullptr;
        g_clear_pointer(&body, g_bytes_unref);
        ++self.answered;
        self.send_one();
    }
};

Figures run_libsoup(qoro::GlibLoop& loop, const qoro::AdServer& server, int trackers)
{
    Libsoup libsoup{.server = server, .trackers = trackers};
    const Watch watch(loop);
    const double begun = loop.now();
    for (int i = 0; i < AtATime; ++i)
        libsoup.send_one();
    loop.run_until([&] { return libsoup.answered == trackers; }, Patience);
    libsoup.figures.seconds = loop.now() - begun;
    watch.add_to(libsoup.figures);
    libsoup.figures.received = received(server, "libsoup");
    g_object_unref(libsoup.session);
    return libsoup.figures;
}

Figures run_curl(qoro::GlibLoop& loop, const qoro::AdServer& server, int trackers)
{
    Figures figures{.name = "curl's"};
    char* list = nullptr;
    g_close(g_file_open_tmp("trackers-XXXXXX", &list, nullptr), nullptr);
    {
        std::ofstream file(list);
        for (; figures.sent < trackers; ++figures.sent)
            file << "url = " << server.base() << path_of("curl", figures.sent) << "\noutput = /dev/null\n";
    }
    const double begun = loop.now();
    const std::string command = "curl --no-progress-meter --parallel --parallel-max " + std::to_string(AtATime) +
                                " --config " + std::string(list);
    const bool ended_well = std::system(command.c_str()) == 0;
    figures.seconds = loop.now() - begun;
    g_remove(list);
    g_free(list);
    figures.received = received(server, "curl");
    figures.succeeded = ended_well ? figures.received : 0;
    return figures;
}

void print(const Figures& figures)
{
    std::printf("%-16s %7d %10d %9d ", figures.name, figures.sent, figures.succeeded, figures.received);
    if (figures.longest_stall < 0)
        std::printf("%14s %13s", "-", "-");
    else
        std::printf("%14.2f %13.2f", figures.longest_stall * 1000, figures.longest_work * 1000);
    std::printf(" %9.3f\n", figures.seconds);
}

} // namespace

int main(int argc, char** argv)
{
    const int trackers = argc > 1 ? std::atoi(argv[1]) : 10000;
    // A file, since the server keeps the connection open after an answer with a Content-Length.
    const Folder folder;
    const qoro::AdServer server({.folder = folder.path, .script = ""});
    if (!server.listens())
        return 1;
    qoro::GlibLoop loop;
    const Figures rest = run_at_rest(loop);
    const Figures ours = run_ours(loop, server, trackers);
    const Figures libsoup = run_libsoup(loop, server, trackers);
    const Figures curl = run_curl(loop, server, trackers);

    std::printf("%-16s %7s %10s %9s %14s %13s %9s\n", "", "sent", "succeeded", "received", "longest stall",
                "longest work", "time");
    std::printf("%-16s %7s %10s %9s %14s %13s %9s\n", "", "", "", "", "ms", "ms", "s");
    print(rest);
    print(ours);
    print(libsoup);
    print(curl);
    std::printf("time to libsoup's: %.2f, to curl's: %.2f; work to libsoup's: %.2f\n", ours.seconds / libsoup.seconds,
                ours.seconds / curl.seconds, ours.longest_work / libsoup.longest_work);
    return ours.received == trackers && ours.succeeded == trackers ? 0 : 1;
}
