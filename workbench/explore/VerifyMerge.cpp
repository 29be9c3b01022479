#include "formats/Trace.h"
#include "simulator/Simulation.h"
#include "workbench/explore/Search.h"

#include <algorithm>

namespace qoro
{

namespace
{

/// Microseconds of the future that are compared.
constexpr std::int64_t Future = 40'000'000;

/// Microseconds between a move and the one that must follow it.
constexpr std::int64_t Absence = 1'000'000;

/// The steps of the move that ends another: the return from where the viewer went, and the end of a call.
std::vector<Step> end_of(const Move& move)
{
    switch (move.kind) {
    case Move::Kind::Leave:
        return Move{.kind = Move::Kind::Return}.steps(0);
    case Move::Kind::CallBegins:
        return Move{.kind = Move::Kind::CallEnds}.steps(0);
    default:
        return {};
    }
}

/// A line of a trace, with its time since the merge.
struct FutureLine {
    std::int64_t after = 0;
    std::string text;

    bool operator==(const FutureLine&) const = default;
};

/// What follows a moment of a course.
/// @param move performed at that moment; null for none
std::vector<FutureLine> future_of(const RunSetup& setup, const FoundCourse& course, std::int64_t at, const Move* move)
{
    Scenario scenario = setup.starts[course.start];
    scenario.steps = steps_of(scenario, course.moves);
    Simulation simulation(scenario);
    VirtualLoop& loop = simulation.platform().loop();
    std::vector<FutureLine> lines;
    bool listens = false;
    Trace trace(loop, TraceFormat::Json, [&](std::string_view line) {
        const std::size_t content = line.find(',');
        if (listens && content != std::string_view::npos && !line.substr(content).starts_with(",\"what\":\"step\""))
            lines.push_back({loop.now_microseconds() - at, std::string(line.substr(content))});
    });
    simulation.platform().set_event_sink(&trace);
    simulation.begin();
    std::size_t n = 0;
    for (const Step& step : scenario.steps) {
        if (to_microseconds(step.at) > at)
            break;
        simulation.run_until(to_microseconds(step.at));
        simulation.perform(step, n++);
    }
    simulation.run_until(at);
    listens = true;
    if (move) {
        for (const Step& step : move->steps(0))
            simulation.perform(step, n++);
        simulation.run_until(at + Absence);
        for (const Step& step : end_of(*move))
            simulation.perform(step, n++);
    }
    for (; n < scenario.steps.size() && !move; ++n) {
        simulation.run_until(to_microseconds(scenario.steps[n].at));
        simulation.perform(scenario.steps[n], n);
    }
    simulation.run_until(at + Future);
    simulation.platform().set_event_sink(nullptr);
    return lines;
}

std::optional<WrongMerge> difference(const std::vector<FutureLine>& first, const std::vector<FutureLine>& second)
{
    const auto [one, other] = std::ranges::mismatch(first, second);
    if (one == first.end() && other == second.end())
        return std::nullopt;
    const auto shown = [](const auto& line, const auto& lines) {
        return line == lines.end() ? std::string() : std::to_string(line->after) + " µs later" + line->text;
    };
    return WrongMerge{.first = {}, .second = {}, .first_line = shown(one, first), .second_line = shown(other, second)};
}

} // namespace

std::optional<WrongMerge> compare_futures(const RunSetup& setup, const FoundCourse& first, std::int64_t first_at,
                                          const FoundCourse& second, std::int64_t second_at,
                                          const std::vector<Move>& moves)
{
    for (std::size_t n = 0; n <= moves.size(); ++n) {
        const Move* move = n == 0 ? nullptr : &moves[n - 1];
        auto wrong = difference(future_of(setup, first, first_at, move), future_of(setup, second, second_at, move));
        if (!wrong)
            continue;
        wrong->first = first;
        wrong->second = second;
        if (move) {
            wrong->first.moves.push_back({first_at, *move});
            wrong->second.moves.push_back({second_at, *move});
        }
        return wrong;
    }
    return std::nullopt;
}

} // namespace qoro
