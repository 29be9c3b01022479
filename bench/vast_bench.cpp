// Cost of parsing and resolving VAST tags, in documents a second on one core:
//
//   vast_bench FOLDER [--show] [options of Google Benchmark]
//
// FOLDER (bench/vast/documents) has the tags small.xml, inline.xml, pod.xml and chain.xml, and what they lead to. A
// document NAME is served from memory as http://ads.example/NAME, in virtual time. With --show, prints instead what the
// tags lead to, one line each. bench/vast/compare_resolving.py compares both with a peer.

#include "simulator/SimulatedPlatform.h"
#include "tests/support/Allocations.h"
#include "vast/Resolver.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace qoro;

constexpr const char* Tags[] = {"small", "inline", "pod", "chain"};
const std::string Site = "http://ads.example/";

World read_documents(const char* folder)
{
    World world;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        std::ifstream in(entry.path(), std::ios::binary);
        world.net[Site + entry.path().filename().string()].body.assign(std::istreambuf_iterator<char>(in), {});
    }
    for (const char* tag : Tags)
        if (!world.net.contains(Site + tag + ".xml")) {
            std::cerr << "vast_bench: " << folder << " has no " << tag << ".xml; expected bench/vast/documents\n";
            std::exit(2);
        }
    return world;
}

class Bench
{
public:
    explicit Bench(const World& world) : platform_(world)
    {
        options_.requests = [this](const std::string&) { ++documents; };
        resolver_.emplace(platform_.fetcher(), platform_.loop(), support_, options_);
    }

    /// Advances the clock past the time-outs, so that ended timers leave the loop's queue.
    vast::Resolution resolve(const std::string& address)
    {
        std::optional<vast::Resolution> result;
        resolver_->resolve(address, [&](vast::Resolution resolution) { result = std::move(resolution); });
        platform_.run_until(platform_.loop().now() + 2 * options_.whole_time_out);
        if (!result || result->ads.empty()) {
            std::cerr << "vast_bench: " << address << " leads to no ad: " << (result ? result->why : "no answer")
                      << '\n';
            std::exit(1);
        }
        return std::move(*result);
    }

    /// Documents that were requested so far.
    std::int64_t documents = 0;

private:
    SimulatedPlatform platform_;
    vast::CommonMediaSupport support_;
    vast::ResolverOptions options_;
    std::optional<vast::Resolver> resolver_;
};

void measure(benchmark::State& state, const World& world, const std::string& address)
{
    Bench bench(world);
    bench.resolve(address); // warm-up; excludes one-time allocations
    bench.documents = 0;
    const std::size_t before = test::allocations_so_far();
    for (auto _ : state) {
        vast::Resolution found = bench.resolve(address);
        benchmark::DoNotOptimize(found.ads.data());
    }
    state.SetItemsProcessed(bench.documents);
    state.counters["allocations"] =
        static_cast<double>(test::allocations_so_far() - before) / static_cast<double>(bench.documents);
}

class Shown
{
public:
    Shown(std::string tag, const vast::ResolvedAd& ad) : prefix_(std::move(tag) + " " + ad.ad.id + " ") { show(ad.ad); }

private:
    void line(const std::string& what, const std::string& value) const
    {
        std::cout << prefix_ << what << ' ' << value << '\n';
    }
    void all(const std::string& what, const std::vector<std::string>& values) const
    {
        for (const std::string& value : values)
            line(what, value);
    }
    void show(const vast::Ad& ad) const
    {
        line("sequence", ad.sequence ? std::to_string(*ad.sequence) : "-");
        line("title", ad.title);
        all("impression", ad.impressions);
        all("error", ad.errors);
        all("viewable", ad.viewable.viewable);
        all("notViewable", ad.viewable.not_viewable);
        all("viewUndetermined", ad.viewable.undetermined);
        for (const auto& verification : ad.verifications)
            all("verificationNotExecuted", verification.not_executed);
        for (const vast::Tracker& tracker : ad.linear->trackers)
            line("tracker", tracker.event + " " + tracker.address);
        for (const vast::MediaFile& file : ad.linear->media_files)
            line("file", std::to_string(file.width.value_or(0)) + "x" + std::to_string(file.height.value_or(0)) + " " +
                             file.type + " " + file.address);
        line("clickThrough", ad.linear->click_through);
        all("clickTracking", ad.linear->click_tracking);
        all("customClick", ad.linear->custom_click);
        for (const vast::Icon& icon : ad.linear->icons) {
            line("icon", icon.program + " " + icon.resources.front().text);
            all("iconClickTracking", icon.click_tracking);
            all("iconView", icon.view_tracking);
        }
        for (const vast::Companion& companion : ad.companions) {
            line("companion", companion.id + " " + companion.resources.front().text);
            all("companionClickTracking", companion.click_tracking);
            all("companionView", companion.creative_view);
        }
    }

    const std::string prefix_;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc < 2) {
        std::cerr << "usage: vast_bench FOLDER [--show] [options of Google Benchmark]\n";
        return 2;
    }
    const World world = read_documents(argv[1]);
    if (argc > 2 && argv[2] == std::string_view("--show")) {
        for (const char* tag : Tags)
            for (const vast::ResolvedAd& ad : Bench(world).resolve(Site + tag + ".xml").ads)
                Shown(tag, ad);
        return 0;
    }
    for (const char* tag : Tags)
        benchmark::RegisterBenchmark(
            tag, [&world, tag](benchmark::State& state) { measure(state, world, Site + tag + ".xml"); });
    benchmark::RunSpecifiedBenchmarks();
}
