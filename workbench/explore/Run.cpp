#include "workbench/explore/Run.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/Simulation.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <utility>

namespace qoro
{

namespace
{

/// Microseconds between two looks at a state that seems to be at rest. Periods of the controller's timers divide it.
constexpr std::int64_t RestPeriod = 1'000'000;
/// Microseconds after the close in which faults are looked for.
constexpr std::int64_t AfterClose = 1'000'000;

/// Listens for what may have changed the state, and for faults.
class ChangeListener final : public EventSink
{
public:
    explicit ChangeListener(SignCollector& signs) : signs_(signs) {}

    void receive(const Event& event) override
    {
        if (collects)
            signs_.note(event);
        if (const auto* script = std::get_if<event::ScriptEvent>(&event);
            script && script->event.view() == "video_timeupdate")
            return;
        changed = true;
        if (std::holds_alternative<event::AdClosed>(event))
            closed = true;
        if (std::holds_alternative<event::Faulted>(event))
            faulted = true;
    }

    bool changed = true;
    bool closed = false;
    bool faulted = false;
    bool collects = false;

private:
    SignCollector& signs_;
};

StateKey with(StateKey key, std::uint64_t word)
{
    key.first ^= word * 0x9E3779B97F4A7C15;
    key.second += word * 0xC2B2AE3D27D4EB4F;
    return key;
}

class Runner
{
public:
    Runner(const RunSetup& setup, std::size_t start, const std::function<bool(const StateKey&)>& known)
        : setup_(setup), start_(start), scenario_(setup.starts[start]), known_(known), simulation_(scenario_),
          signs_(simulation_, setup.position_trackers), listener_(signs_)
    {
        simulation_.platform().set_event_sink(&listener_);
        simulation_.platform().on_display_change([this] { listener_.changed = true; });
    }

    CourseRun run(const std::vector<TimedMove>& course)
    {
        listener_.collects = course.empty();
        simulation_.begin();
        for (const TimedMove& each : course) {
            perform_steps_until(each.at);
            // An earlier course has shown it.
            listener_.faulted = false;
            if (&each == &course.back()) {
                signs_.begin(each.move.name);
                listener_.collects = true;
            }
            for (const Step& step : each.move.steps(static_cast<double>(each.at) / 1e6))
                simulation_.perform(step, n_++);
            viewer_.note(each.move);
        }
        perform_steps_until(course.empty() ? 0 : course.back().at);
        if (look())
            pass_time();
        if (!run_.merged)
            run_.rest = signs_.rest();
        simulation_.platform().on_display_change({});
        return std::move(run_);
    }

private:
    VirtualLoop& loop() { return simulation_.platform().loop(); }

    /// Performs the beginning's steps up to a time, and everything due then.
    void perform_steps_until(std::int64_t at)
    {
        while (next_step_ < scenario_.steps.size() && to_microseconds(scenario_.steps[next_step_].at) <= at) {
            const Step& step = scenario_.steps[next_step_++];
            simulation_.run_until(to_microseconds(step.at));
            simulation_.perform(step, n_++);
        }
        simulation_.run_until(at);
    }

    std::optional<std::int64_t> next_time()
    {
        std::optional<std::int64_t> next = loop().next_due();
        if (next_step_ < scenario_.steps.size()) {
            const std::int64_t at = to_microseconds(scenario_.steps[next_step_].at);
            next = std::min(next.value_or(at), at);
        }
        return next;
    }

    void pass_time()
    {
        std::int64_t changed_at = loop().now_microseconds();
        std::optional<StateKey> before;
        std::int64_t looked_at = changed_at;
        while (const auto next = next_time()) {
            if (*next > changed_at + setup_.patience && next_step_ == scenario_.steps.size())
                return;
            if (next_step_ == scenario_.steps.size() && *next > looked_at + RestPeriod) {
                // Between two events nothing changes but the time to the next one.
                looked_at += RestPeriod;
                simulation_.run_until(looked_at);
                const auto now = key();
                if (now && now == before)
                    return;
                before = now;
                continue;
            }
            perform_steps_until(*next);
            if (!std::exchange(listener_.changed, false))
                continue;
            const auto shape = state_key(simulation_, StateDetail::Shape);
            if (shape && shape == shape_)
                continue;
            changed_at = looked_at = *next;
            before.reset();
            if (!look())
                return;
        }
    }

    std::optional<StateKey> key()
    {
        const auto state = state_key(simulation_, StateDetail::Whole, setup_.leave_out);
        if (!state)
            return std::nullopt;
        StateKey key = *state;
        // The steps that follow have times of their own.
        if (next_step_ < scenario_.steps.size())
            key = with(key, static_cast<std::uint64_t>(to_microseconds(scenario_.steps[next_step_].at) -
                                                       loop().now_microseconds()));
        return with(key, 1 + start_ * 64 + next_step_ * 4096 + (viewer_.away ? 1U : 0U) + (viewer_.in_call ? 2U : 0U));
    }

    /// Adds a moment.
    /// @return false if the run ends here
    bool look()
    {
        listener_.changed = false;
        shape_ = state_key(simulation_, StateDetail::Shape);
        Moment moment{.at = loop().now_microseconds(), .key = setup_.identify ? key() : std::nullopt};
        const auto ad = simulation_.living();
        moment.open = ad && ad->qoroVideoAdInfo;
        moment.closed = listener_.closed;
        // Also while the viewer is away, who does not wait for it then.
        moment.close = !moment.closed && close_is_reachable(simulation_);
        run_.merged = moment.key && known_ && known_(*moment.key);
        if (!moment.closed && !run_.merged)
            moment.moves = moves_at(simulation_, viewer_, setup_.page, scenario_.host.autorotates);
        moment.happened = signs_.take();
        if (std::exchange(listener_.faulted, false))
            moment.faults.push_back(Fault::PlatformFault);
        if (moment.closed && !run_.merged)
            look_after_close(moment.faults);
        run_.moments.push_back(std::move(moment));
        return !run_.merged && !listener_.closed && run_.moments.size() < MostMoments;
    }

    void look_after_close(std::vector<Fault>& faults)
    {
        simulation_.run_until(loop().now_microseconds() + AfterClose);
        const auto ad = simulation_.living();
        SimulatedPlatform& platform = simulation_.platform();
        if (ad && ad->qoroMoviePlayer.playbackState() == MPMoviePlaybackStatePlaying && platform.volume().value() > 0)
            faults.push_back(Fault::SoundAfterClose);
        const auto host = simulation_.host_window();
        const auto windows = platform.shared<WindowList>().visible_from_below();
        const bool window_left = std::ranges::any_of(windows, [&](const auto& window) { return window != host; });
        const PlatformScope scope(platform);
        const bool observes = ad && NSNotificationCenter::defaultCenter().count_of(ad.get()) > 0;
        if (window_left || observes)
            faults.push_back(Fault::LeftAfterClose);
    }

    const RunSetup& setup_;
    const std::size_t start_;
    const Scenario& scenario_;
    const std::function<bool(const StateKey&)>& known_;
    Simulation simulation_;
    SignCollector signs_;
    ChangeListener listener_;
    Viewer viewer_;
    std::size_t next_step_ = 0;
    std::size_t n_ = 0;
    std::optional<StateKey> shape_;
    CourseRun run_;
};

} // namespace

CourseRun run_course(const RunSetup& setup, std::size_t start, const std::vector<TimedMove>& course,
                     const std::function<bool(const StateKey&)>& known)
{
    return Runner(setup, start, known).run(course);
}

std::vector<Step> steps_of(const Scenario& start, const std::vector<TimedMove>& course)
{
    std::vector<Step> steps = start.steps;
    for (const TimedMove& each : course) {
        const double at = static_cast<double>(each.at) / 1e6;
        const auto place = std::ranges::upper_bound(steps, at, {}, &Step::at);
        const auto added = each.move.steps(at);
        steps.insert(place, added.begin(), added.end());
    }
    return steps;
}

} // namespace qoro
