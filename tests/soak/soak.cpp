// Opens and closes ads, one after the other, in one process on the desktop's platform, and reports what has grown since
// the first ten ads: memory, files, threads, processes, files in the temporary folder.
//
//   soak ADS VIDEO [KILOBYTES]
//
// Every other ad has a page. Each ad is closed once its video plays and its page's script runs. Fails when memory has
// grown by more than KILOBYTES (default 5120), or any other count has grown. With AddressSanitizer, memory means
// allocated bytes, since its quarantine retains freed memory; otherwise, resident memory.

#include "desktop/DesktopPlatform.h"
#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"
#include "host/OpenedAd.h"
#include "host/desktop/ServedAd.h"

#include <array>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
/// The sanitizer's own counter; GCC installs no header that declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace qoro;

namespace
{

namespace fs = std::filesystem;

/// Time limit of one ad, seconds; only a hang exceeds it.
constexpr double Patience = 120;
/// Ads after which all one-time allocations are done.
constexpr int Warm = 10;
/// Tolerance for threads and processes that libraries pool, and for their files.
constexpr int Pools = 6;

const char* const Page = R"(<!DOCTYPE html><html><head><script src="mraid.js"></script></head><body><script>
qoroPlayer.addEventListener("video_timeupdate", () => {});
</script></body></html>)";

// --------------------------------------------------------------------------------------------------------- resources

std::ptrdiff_t entries_of(const fs::path& folder)
{
    std::error_code failed;
    return std::distance(fs::directory_iterator(folder, failed), fs::directory_iterator());
}

long kilobytes()
{
#ifdef __SANITIZE_ADDRESS__
    return static_cast<long>(__sanitizer_get_current_allocated_bytes() / 1024);
#else
    long pages = 0;
    std::ifstream statm("/proc/self/statm");
    statm >> pages >> pages;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
#endif
}

/// Number of this process and its descendants.
int processes()
{
    int count = 0;
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (int child = 0; children >> child;)
            ++count;
    }
    return count;
}

/// The resources that may leak.
struct Holdings {
    long kilobytes = 0;
    std::ptrdiff_t files = 0;
    std::ptrdiff_t threads = 0;
    int processes = 0;
    std::ptrdiff_t temporary = 0;
};

Holdings holdings(const fs::path& temporary)
{
    return {kilobytes(), entries_of("/proc/self/fd"), entries_of("/proc/self/task"), processes(),
            entries_of(temporary)};
}

std::ostream& operator<<(std::ostream& out, const Holdings& held)
{
    return out << held.kilobytes << " kB, " << held.files << " files, " << held.threads << " threads, "
               << held.processes << " processes, " << held.temporary << " temporary files";
}

// ------------------------------------------------------------------------------------------------------------ one ad

/// Whether an ad has reached the state in which it is closed.
struct Progress final : EventSink {
    void receive(const Event& event) override
    {
        const auto* call = std::get_if<event::ScriptEvent>(&event);
        plays |= call && call->event.view() == "video_play";
        scripts |= std::holds_alternative<event::MraidLoaded>(event);
    }
    bool plays = false;
    bool scripts = false;
};

/// @return false for an ad that did not get that far, or did not end
bool open_and_close(DesktopPlatform& platform, const std::string& file, bool has_page)
{
    Progress progress;
    platform.set_event_sink(&progress);
    bool ended = false;
    {
        const ServedAd served(file);
        OpenedAd ad(platform, served.ad(), [&](const AdOutcome&) { ended = true; });
        const bool ready =
            platform.loop().run_until([&] { return progress.plays && (progress.scripts || !has_page); }, Patience);
        if (!ready)
            std::cerr << "soak: the video or the page did not start\n";
        ad.close();
        ended = platform.loop().run_until([&] { return ended; }, Patience) && ready;
    }
    platform.set_event_sink(nullptr);
    // Ads must not overlap: the processes of a closed page end before the next ad opens.
    return ended && platform.loop().run_until([&] { return processes() <= Pools; }, Patience);
}

/// Waits for the processes of closed pages to end, and for the platform to release unused resources.
void settle(DesktopPlatform& platform)
{
    constexpr double quiet = 12;
    double since = platform.loop().now();
    int before = processes();
    platform.loop().run_until(
        [&] {
            if (const int now = processes(); now != before) {
                before = now;
                since = platform.loop().now();
            }
            return platform.loop().now() - since > quiet;
        },
        Patience);
}

int grown(const char* what, std::ptrdiff_t now, std::ptrdiff_t before, std::ptrdiff_t most)
{
    if (now - before <= most)
        return 0;
    std::cerr << "soak: " << what << ": " << now - before << " more than after the first " << Warm
              << ", expected at most " << most << '\n';
    return 1;
}

int soak(int ads, const fs::path& folder, long most)
{
    const fs::path temporary = fs::temp_directory_path();
    // On the heap: GCC 12 takes a member of a local variable for uninitialized (-Wmaybe-uninitialized).
    const auto options = std::make_unique<DesktopPlatform::Options>();
    options->silent = true;
    DesktopPlatform platform(*options);
    platform.display().show();
    Holdings warm;
    for (int n = 1; n <= ads; ++n) {
        if (!open_and_close(platform, (folder / (n % 2 ? "page.json" : "bare.json")).string(), n % 2))
            return 1;
        if (n == Warm) {
            settle(platform);
            warm = holdings(temporary);
        }
        if (n % Warm == 0)
            std::cout << n << " ads: " << holdings(temporary) << std::endl;
    }
    settle(platform);
    const Holdings end = holdings(temporary);
    std::cout << "then: " << end << std::endl;
    return grown("kilobytes", end.kilobytes, warm.kilobytes, most) | grown("files", end.files, warm.files, Pools) |
           grown("threads", end.threads, warm.threads, Pools) |
           grown("processes", end.processes, warm.processes, Pools) |
           grown("temporary files", end.temporary, warm.temporary, 0);
}

/// A folder for the ads and for temporary files; removed by the destructor.
class Folder
{
public:
    explicit Folder(const std::string& video)
    {
        std::string name = (fs::temp_directory_path() / "soak-XXXXXX").string();
        path = mkdtemp(name.data());
        fs::create_directory(path / "tmp");
        setenv("TMPDIR", (path / "tmp").c_str(), 1);
        fs::copy_file(video, path / "clip.mp4");
        std::ofstream(path / "page.html") << Page;
        const std::string ad = R"({"strVideoUrl": "clip.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
            "portraitModeType": 2, "landscapeModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true,
            "strBackgroundColor": "4279704105", "iCloseBtnCountdown": 5, "iShowProgressWheel": 1,
            "arrayButtonsInfo": [{"btn_text": "Go", "launch_type": "browser", "data": {"u": "https://lumo.example/"}}])";
        std::ofstream(path / "bare.json") << ad << "}";
        std::ofstream(path / "page.json") << ad << R"(, "strWebViewUrl": "page.html"})";
    }
    ~Folder() { fs::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    fs::path path;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3 || std::atoi(argv[1]) <= Warm || !fs::is_regular_file(argv[2])) {
        std::cerr << "usage: soak ADS VIDEO [KILOBYTES], with more than " << Warm << " ADS and the file of a VIDEO\n";
        return 2;
    }
    const Folder folder(argv[2]);
    if (!sandbox_works())
        give_up_sandbox();
    prepare_program();
    if (!start_toolkit()) {
        std::cerr << "soak: there is no display\n";
        return 1;
    }
    return soak(std::atoi(argv[1]), folder.path, argc > 3 ? std::atol(argv[3]) : 5120);
}
