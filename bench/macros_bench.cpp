// Cost of the expansion of VAST macros, in addresses a second on one core:
//
//   macros_bench ADDRESSES [--show] [options of Google Benchmark]
//
// ADDRESSES is a file with one address a line (bench/vast/addresses.txt). With --show, prints the expanded addresses
// instead. bench/vast/compare_macros.py compares both with a peer.

#include "tests/support/Allocations.h"
#include "vast/Macros.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace qoro::vast;

/// As bench/vast/macros.mjs gives them to the peer.
MacroValues typical_values()
{
    MacroValues values;
    values.request.time = 1'700'000'000.25;
    values.request.random = [state = std::uint32_t{1}]() mutable { return state = state * 1'664'525 + 1'013'904'223; };
    values.player.ad_time = 11.25;
    values.player.asset = "https://cdn.example/creatives/2342/720p/main.mp4";
    values.player.pod_sequence = 2;
    values.player.ad_serving_id = "ads.example-47ed3bac-1768-4b9a-9d0e-0b92422ab066";
    values.ad_break.ad_type = "video";
    values.ad_break.universal_ad_ids = {{.registry = "ad-id.example", .value = "CNPA0484000H"}};
    return values;
}

std::vector<std::string> read_lines(const char* file)
{
    std::vector<std::string> lines;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    if (lines.empty()) {
        std::cerr << "macros_bench: " << file << " has no addresses; expected one a line\n";
        std::exit(2);
    }
    return lines;
}

template <typename Expand>
void measure(benchmark::State& state, const std::vector<std::string>& addresses, Expand expand_one)
{
    const MacroValues values = typical_values();
    for (const std::string& address : addresses)
        expand_one(address, values); // warm-up; excludes one-time allocations
    const std::size_t before = qoro::test::allocations_so_far();
    std::int64_t done = 0;
    for (auto _ : state) {
        for (const std::string& address : addresses)
            expand_one(address, values);
        done += static_cast<std::int64_t>(addresses.size());
    }
    state.SetItemsProcessed(done);
    state.counters["allocations"] =
        static_cast<double>(qoro::test::allocations_so_far() - before) / static_cast<double>(done);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc < 2) {
        std::cerr << "usage: macros_bench ADDRESSES [--show] [options of Google Benchmark]\n";
        return 2;
    }
    const std::vector<std::string> addresses = read_lines(argv[1]);
    if (argc > 2 && argv[2] == std::string_view("--show")) {
        for (const std::string& address : addresses)
            std::cout << expand(address, typical_values()) << '\n';
        return 0;
    }
    benchmark::RegisterBenchmark("new_string", [&](benchmark::State& state) {
        measure(state, addresses, [](std::string_view address, const MacroValues& values) {
            std::string out = expand(address, values);
            benchmark::DoNotOptimize(out.data());
        });
    });
    benchmark::RegisterBenchmark("reused_string", [&](benchmark::State& state) {
        std::string out;
        measure(state, addresses, [&](std::string_view address, const MacroValues& values) {
            out.clear();
            expand(address, values, out);
            benchmark::DoNotOptimize(out.data());
        });
    });
    benchmark::RunSpecifiedBenchmarks();
}
