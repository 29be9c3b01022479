#include "workbench/SessionRecord.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/SessionWatch.h"
#include "simulator/Simulation.h"

#include <optional>
#include <utility>

namespace qoro
{

namespace
{

/// Looks at a session at the end of each moment at which something visible has changed.
class Looks
{
public:
    Looks(Simulation& simulation, std::vector<Sight>& sights, const std::function<void(Simulation&)>& at_change)
        : simulation_(simulation), sights_(sights), at_change_(at_change),
          watch_(simulation.platform(), [this] { look_later(); })
    {
    }

    /// For changes that are not visible, such as the sound's.
    void look_later()
    {
        if (std::exchange(will_look_, true))
            return;
        simulation_.platform().loop().post([this] {
            will_look_ = false;
            look();
        });
    }
    void look()
    {
        if (at_change_)
            at_change_(simulation_);
        Sight sight = look_at(simulation_);
        if (sights_.empty() || !sights_.back().alike(sight))
            sights_.push_back(std::move(sight));
    }

private:
    Simulation& simulation_;
    std::vector<Sight>& sights_;
    const std::function<void(Simulation&)>& at_change_;
    ViewWatch watch_;
    bool will_look_ = false;
};

/// Before the watch for the summary: notes each event, which may change what the viewer sees or hears.
class Listener final : public EventSink
{
public:
    Listener(EventSink& next, Looks& looks) : next_(next), looks_(looks) {}
    void receive(const Event& event) override
    {
        next_.receive(event);
        looks_.look_later();
    }

private:
    EventSink& next_;
    Looks& looks_;
};

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
    Looks looks(simulation, record.sights, at_change);
    Listener listener(watch, looks);
    simulation.platform().set_event_sink(&listener);
    simulation.run();
    looks.look();
    record.summary = watch.finish();
    record.end = loop.now_microseconds();
    simulation.platform().set_event_sink(nullptr);
    return record;
}

} // namespace qoro
