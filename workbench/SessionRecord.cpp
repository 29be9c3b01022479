#include "workbench/SessionRecord.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/SessionWatch.h"
#include "simulator/Simulation.h"
#include "workbench/Looks.h"

#include <optional>
#include <utility>

namespace qoro
{

namespace
{

std::optional<double> position_in(const Simulation& simulation)
{
    const auto ad = simulation.living();
    if (!ad || !ad->qoroMoviePlayer)
        return std::nullopt;
    return ad->qoroMoviePlayer.currentPlaybackTime();
}

} // namespace

SessionRecord record_session(const Scenario& scenario, const std::function<void(Simulation&)>& at_change)
{
    SessionRecord record;
    Simulation simulation(scenario);
    VirtualLoop& loop = simulation.platform().loop();
    Trace trace(loop, TraceFormat::Json, [&](std::string_view line) {
        record.lines.push_back({.at = loop.now_microseconds(),
                                .position = position_in(simulation),
                                .json = std::string(line.substr(0, line.size() - 1))});
    });
    const QoroVideoAd without_trackers;
    SessionWatch watch(simulation, scenario.ad ? *scenario.ad : without_trackers, trace);
    // Before the watch for the summary: notes each event, which may change what the viewer sees or hears.
    Looks looks(simulation, watch, [&] {
        if (at_change)
            at_change(simulation);
        Sight sight = look_at(simulation);
        if (record.sights.empty() || !record.sights.back().alike(sight))
            record.sights.push_back(std::move(sight));
    });
    simulation.platform().set_event_sink(&looks);
    simulation.run();
    looks.look();
    record.summary = watch.finish();
    record.end = loop.now_microseconds();
    simulation.platform().set_event_sink(nullptr);
    return record;
}

} // namespace qoro
