// Opens an ad in a running program, and measures how soon its first picture is there:
//
//   preload_bench VIDEO with|without [RUNS]
//
// VIDEO is served from its folder, as by ServedAd. "with" preloads each ad, and opens it once the preload is ready and
// the program is idle. Prints a line for each run (default 10): when the ad was opened (seconds of the monotonic clock,
// for frame_reader, which watches the screen), the milliseconds until OpenedAd's constructor has returned, and those
// until the first picture was announced; then the medians of both.

#include "desktop/DesktopPlatform.h"
#include "desktop/screen/Toolkit.h"
#include "host/AdObserver.h"
#include "host/OpenedAd.h"
#include "host/desktop/Preload.h"
#include "host/desktop/ServedAd.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace qoro;

namespace
{

constexpr double Patience = 60;
/// Seconds that the program is idle before an ad opens, and that each ad plays.
constexpr double Rest = 0.7;

double monotonic()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct FirstFrame final : EventSink {
    void receive(const Event& event) override
    {
        if (std::holds_alternative<event::FirstPictureShown>(event) && at == 0)
            at = monotonic();
    }
    double at = 0;
};

std::shared_ptr<QoroVideoAd> ad_of(const std::string& video)
{
    auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = video;
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitVideoPos = TOP;
    ad->portraitModeType = VIDEO_AND_WEBVIEW;
    ad->landscapeModeType = VIDEO_AND_WEBVIEW;
    ad->bIsAutoStart = true;
    ad->strBackgroundColor = "4278190080";
    return ad;
}

double median(std::vector<double> of)
{
    std::ranges::sort(of);
    return of[of.size() / 2];
}

void rest(DesktopPlatform& platform)
{
    platform.loop().run_until([] { return false; }, Rest);
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 3) {
        std::fputs("usage: preload_bench VIDEO with|without [RUNS]\n", stderr);
        return 2;
    }
    const std::filesystem::path video = std::filesystem::absolute(arguments[1]);
    const bool preloads = std::strcmp(arguments[2], "with") == 0;
    const int runs = count > 3 ? std::atoi(arguments[3]) : 10;
    prepare_program();
    if (!start_toolkit()) {
        std::fputs("preload_bench: there is no display\n", stderr);
        return 1;
    }
    DesktopPlatform::Options options;
    options.silent = true;
    DesktopPlatform platform(options);
    platform.show();
    std::vector<double> constructed;
    std::vector<double> pictures;
    for (int run = 0; run < runs; ++run) {
        const ServedAd served(ad_of(video.filename().string()), video.parent_path().string());
        FirstFrame first;
        platform.set_event_sink(&first);
        std::unique_ptr<Preload> ahead;
        if (preloads) {
            ahead = std::make_unique<Preload>(platform, *served.ad(), nullptr);
            if (!platform.loop().run_until([&] { return ahead->is_ready(); }, Patience)) {
                std::fputs("preload_bench: the video cannot be preloaded\n", stderr);
                return 1;
            }
        }
        rest(platform);
        const double opened = monotonic();
        OpenedAd ad(platform, served.ad(), nullptr);
        const double returned = monotonic();
        platform.loop().run_until([&] { return first.at > 0; }, Patience);
        constructed.push_back((returned - opened) * 1000);
        pictures.push_back((first.at - opened) * 1000);
        std::printf("%.6f %.2f %.2f\n", opened, constructed.back(), pictures.back());
        std::fflush(stdout);
        rest(platform);
        ad.close();
        rest(platform);
        platform.set_event_sink(nullptr);
    }
    std::printf("median %.2f %.2f\n", median(constructed), median(pictures));
    return 0;
}
