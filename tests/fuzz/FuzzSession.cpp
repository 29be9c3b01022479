#include "tests/fuzz/FuzzSession.h"

#include "formats/AdFile.h"
#include "formats/Trace.h"
#include "simulator/Simulation.h"
#include "simulator/Summary.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>

namespace qoro::fuzz
{

namespace
{

constexpr std::size_t MostSteps = 40;
constexpr std::size_t MostStalls = 20;
/// Seconds.
constexpr double LongestSession = 20;
/// Seconds. Shorter periods of repeats (a self-replaying video, a tracker's heartbeat) only cost time.
constexpr double ShortestPeriod = 0.1;

template <typename Number>
Number at_least_a_period(Number seconds)
{
    const auto shortest = static_cast<Number>(ShortestPeriod);
    return seconds > 0 && seconds < shortest ? shortest : seconds;
}

void shorten_step(Step& step)
{
    step.at = std::min(step.at, LongestSession);
    if (const auto* script = std::get_if<ScriptStep>(&step.what))
        shorten(script->message.arguments);
    if (auto* player = std::get_if<PlayerStep>(&step.what); player && player->news.duration)
        player->news.duration = at_least_a_period(*player->news.duration);
}

void shorten_scenario(Scenario& scenario)
{
    scenario.steps.resize(std::min(scenario.steps.size(), MostSteps));
    for (Step& step : scenario.steps)
        shorten_step(step);
    VideoSetup& video = scenario.world.video;
    video.duration = at_least_a_period(video.duration);
    video.stalls.resize(std::min(video.stalls.size(), MostStalls));
    const auto ad = copy_of(*scenario.ad);
    ad->fTrackingInterval = at_least_a_period(ad->fTrackingInterval);
    scenario.ad = ad;
}

} // namespace

void run_session(Scenario scenario)
{
    shorten_scenario(scenario);
    simulate(scenario, TraceFormat::Json, [](std::string_view line) {
        require(line.find('\n') == line.size() - 1, "a trace line is one line");
        require_json(line);
    });
    const Summary summary = simulate_and_sum_up(scenario, TraceFormat::Text, [](std::string_view) {});
    std::string figures;
    append_json(figures, summary);
    require_json(figures);
    append_table(figures, summary);
}

void shorten(const NSArray& arguments)
{
    constexpr const char* Key = "tracking_interval";
    NSDictionary record = arguments[0].dictionary();
    if (record.contains(Key))
        record.setObject(static_cast<double>(at_least_a_period(record[Key].floatValue())), Key);
}

NSArray values_of(std::string_view json)
{
    // An ad's buttons are not checked when the ad is read.
    const std::string ad = "{\"arrayButtonsInfo\":" + std::string(json) + "}";
    try {
        return read_ad(ad, "values", AdTypes::Lenient)->arrayButtonsInfo;
    } catch (const InputError&) {
        return nullptr;
    }
}

void require_one_line(const InputError& error)
{
    require(std::string_view(error.what()).find('\n') == std::string_view::npos, "a complaint is one line");
}

void require_json(std::string_view text)
{
    require(nlohmann::json::accept(text), "what is written as JSON is JSON");
}

} // namespace qoro::fuzz
