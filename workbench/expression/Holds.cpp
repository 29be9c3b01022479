#include "workbench/expression/Holds.h"

#include "simulator/SessionWatch.h"
#include "simulator/Simulation.h"
#include "workbench/Looks.h"
#include "workbench/expression/Evaluation.h"

#include <optional>

namespace qoro
{

namespace
{

CGSize screen_of(const Scenario& scenario)
{
    return scenario.world.device.facts.screen.value_or(CGSize{});
}

/// Simulates one session and evaluates an expression.
class EvaluatedSession
{
public:
    EvaluatedSession(const ExpressionNode& expression, const Scenario& scenario)
        : scenario_(scenario), evaluation_(expression, screen_of(scenario)), simulation_(scenario),
          trace_(loop(), TraceFormat::Json, [this](std::string_view line) {
              evaluation_.add_line(loop().now_microseconds(), line.substr(0, line.size() - 1));
          })
    {
    }

    bool holds()
    {
        EventSink* sink = &trace_;
        std::optional<SessionWatch> watch;
        const QoroVideoAd without_trackers;
        if (evaluation_.needs_summary())
            sink = &watch.emplace(simulation_, scenario_.ad ? *scenario_.ad : without_trackers, trace_);
        std::optional<Looks> looks;
        if (evaluation_.needs_sights())
            sink = &looks.emplace(simulation_, *sink, [this] { evaluation_.add_sight(look_at(simulation_)); });
        simulation_.platform().set_event_sink(sink);
        run();
        if (!evaluation_.value()) {
            if (looks)
                looks->look();
            evaluation_.end(loop().now_microseconds(), watch ? watch->finish() : Summary{});
        }
        simulation_.platform().set_event_sink(nullptr);
        return evaluation_.value().value_or(false);
    }

private:
    VirtualLoop& loop() { return simulation_.platform().loop(); }

    /// Up to the end, or until the value is known.
    void run()
    {
        if (!scenario_.tag.empty())
            return simulation_.run();
        simulation_.begin();
        for (std::size_t n = 0; n < scenario_.steps.size(); ++n) {
            const std::int64_t at = to_microseconds(scenario_.steps[n].at);
            for (auto next = loop().next_due(); next && *next < at; next = loop().next_due()) {
                simulation_.run_until(*next);
                evaluation_.pass(*next);
                if (evaluation_.value())
                    return;
            }
            simulation_.run_until(at);
            evaluation_.pass(at);
            if (evaluation_.value())
                return;
            simulation_.perform(scenario_.steps[n], n);
        }
    }

    const Scenario& scenario_;
    Evaluation evaluation_;
    Simulation simulation_;
    Trace trace_;
};

} // namespace

bool holds(const ExpressionNode& expression, const Scenario& scenario)
{
    return EvaluatedSession(expression, scenario).holds();
}

bool holds(const ExpressionNode& expression, const Scenario& scenario, const SessionRecord& record)
{
    Evaluation evaluation(expression, screen_of(scenario));
    std::size_t next = 0;
    for (const Sight& sight : record.sights) {
        for (; next < record.lines.size() && record.lines[next].at <= sight.at; ++next)
            evaluation.add_line(record.lines[next].at, record.lines[next].json);
        evaluation.add_sight(sight);
    }
    for (; next < record.lines.size(); ++next)
        evaluation.add_line(record.lines[next].at, record.lines[next].json);
    evaluation.end(record.end, record.summary);
    return evaluation.value().value_or(false);
}

} // namespace qoro
