// Cost of the controller on the simulated platform: time and allocations of one pass of each layout, one tick, and one
// event to the script; addresses of trackers per second; and whole sessions per second, with and without their trace.

#include "formats/Trace.h"
#include "host/Session.h"
#include "simulator/SimulatedPlatform.h"
#include "tests/support/Allocations.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace
{

using namespace qoro;

std::shared_ptr<QoroVideoAd> ordinary_ad()
{
    auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = "http://ad/v.mp4";
    ad->strVideoTrackingUrl = "http://t/beat?at={CurrentTime}&of={TotalTime}";
    ad->fTrackingInterval = 1;
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitModeType = VIDEO_AND_WEBVIEW;
    ad->landscapeModeType = VIDEO_AND_WEBVIEW;
    ad->portraitVideoPos = TOP;
    ad->iCloseBtnCountdown = 5;
    ad->bIsAutoStart = true;
    return ad;
}

/// A playing ad, one second after its start.
struct Playing {
    SimulatedPlatform platform;
    PlatformScope scope{platform};
    Session session{platform, platform, {}, ordinary_ad()};

    Playing()
    {
        session.open(0);
        platform.run_until(1.35);
    }
    QoroVideoWebViewController& controller() { return *session.controller(); }
};

template <typename Operation>
void measure(benchmark::State& state, Operation&& operation, UIDeviceOrientation held = UIDeviceOrientationPortrait)
{
    Playing ad;
    DeviceChange turn;
    turn.orientation = held;
    ad.platform.change_device(turn);
    operation(ad.controller()); // warm-up; excludes one-time allocations
    const std::size_t before = test::allocations_so_far();
    for (auto _ : state)
        operation(ad.controller());
    state.counters["allocations"] =
        static_cast<double>(test::allocations_so_far() - before) / static_cast<double>(state.iterations());
}

void portrait_layout(benchmark::State& state)
{
    measure(state, [](QoroVideoWebViewController& ad) { ad.setPortraitModeScreen(); });
}
BENCHMARK(portrait_layout);

/// With the device held so: in an upright device each pass starts the timer that follows it up.
void landscape_layout(benchmark::State& state)
{
    measure(
        state, [](QoroVideoWebViewController& ad) { ad.setLandscapeFullScreenVideo(); },
        UIDeviceOrientationLandscapeLeft);
}
BENCHMARK(landscape_layout);

void tick(benchmark::State& state)
{
    measure(state, [](QoroVideoWebViewController& ad) { ad.updateRemainderTime(); });
}
BENCHMARK(tick);

void close_countdown_tick(benchmark::State& state)
{
    measure(state, [](QoroVideoWebViewController& ad) {
        ad.iCountdownCount = 5;
        ad.showCloseButton();
    });
}
BENCHMARK(close_countdown_tick);

void event_to_script(benchmark::State& state)
{
    measure(state, [](QoroVideoWebViewController& ad) { ad.sendOrientationEvent(); });
}
BENCHMARK(event_to_script);

/// The address of a tracker, its macros replaced.
void tracker_address(benchmark::State& state, const char* address)
{
    Playing ad;
    ad.controller().strCookieGuid = "47ed3bac-1768-4b9a-9d0e-0b92422ab066";
    ad.controller().dSessionId = 1'700'000'000;
    ad.controller().iSeqNo = 12;
    const NSString tracker = address;
    for (auto _ : state)
        benchmark::DoNotOptimize(ad.controller().getTrackingUniqueInfo(tracker));
    state.counters["addresses/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(tracker_address, plain, "https://t.example/event.gif?campaign=2342&event=firstQuartile");
BENCHMARK_CAPTURE(tracker_address, times, "https://t.example/beat?at={CurrentTime}&of={TotalTime}");
BENCHMARK_CAPTURE(tracker_address, ids, "https://t.example/start?g={Zulix-Guid}&s={Zulix-Sid}&n={Zulix-Seq}");
BENCHMARK_CAPTURE(tracker_address, digest, "https://t.example/start?app={Zulix-app}");

/// A session of 30 s with a heartbeat every second and ticks every tenth of a second.
void session_of_30_s(benchmark::State& state, bool traced, const HostSetup& host)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        SimulatedPlatform platform;
        const PlatformScope scope(platform);
        Trace trace(platform.loop(), TraceFormat::Json, [&](std::string_view line) { bytes += line.size(); });
        if (traced)
            platform.set_event_sink(&trace);
        auto description = ordinary_ad();
        description->arrayPrePauseLocations = NSArray(std::vector<Value>{});
        Session session(platform, platform, host, description);
        session.open(0);
        platform.run_until(31);
        session.release();
        platform.set_event_sink(nullptr);
    }
    state.counters["sessions/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    benchmark::DoNotOptimize(bytes);
}
BENCHMARK_CAPTURE(session_of_30_s, without_trace, false, {})->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(session_of_30_s, with_trace, true, {})->Unit(benchmark::kMicrosecond);
// As scenarios run, without the close guard.
BENCHMARK_CAPTURE(session_of_30_s, unguarded_without_trace, false, unguarded_host())->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(session_of_30_s, unguarded_with_trace, true, unguarded_host())->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
