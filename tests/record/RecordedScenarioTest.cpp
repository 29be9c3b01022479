#include "record/RecordedScenario.h"
#include "record/Recording.h"
#include "simulator/Simulation.h"
#include "tests/record/RecordedSession.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// A recording as a scenario, which can be changed.

namespace qoro::test
{

namespace
{

std::vector<std::string> simulated_trackers(const std::string& recording)
{
    return trackers_of(simulate(read_scenario(scenario_of_recording(recording, "recording.json"), "scenario")));
}

} // namespace

TEST(RecordedScenario, SendsTheSameTrackersWithoutTheRecordedEntries)
{
    const Recorded made = record(first_session());
    const std::string scenario = scenario_of_recording(made.text, "recording.json");
    EXPECT_FALSE(is_recording(scenario));
    EXPECT_FALSE(trackers_of(made.trace).empty());
    EXPECT_EQ(trackers_of(simulate(read_scenario(scenario, "scenario"))), trackers_of(made.trace)) << scenario;
}

TEST(RecordedScenario, AMachineThatIsSlowToOpenAnAdSendsNoTrackerMore)
{
    // The viewer closes the ad before the controller notices its middle, at 5 s.
    nlohmann::json session = nlohmann::json::parse(first_session());
    session["video"] = {{"duration", 8}};
    session["steps"] = {{{"open", 0}}, {{"at", 4.6}, {"touch", {25, 69}}}, {{"at", 6}, {"release", true}}};
    const Recorded made = record(session.dump());
    ASSERT_EQ(trackers_of(made.trace).size(), 2U) << "start and close: " << made.trace;

    // The machine takes 0.8 s over the opening, so everything from its first line on is as much later.
    nlohmann::ordered_json recording = nlohmann::ordered_json::parse(made.text);
    constexpr double Delay = 0.8;
    const auto delay = [](nlohmann::ordered_json& timed, const char* key) {
        if (timed.contains(key) && timed[key] > 0)
            timed[key] = timed[key].get<double>() + Delay;
    };
    for (auto& step : recording["steps"])
        delay(step, "at");
    bool later = false;
    for (auto& entry : recording["replay"]) {
        later = later || entry.contains("line");
        if (!later)
            continue;
        if (entry.contains("t"))
            entry["t"] = entry["t"].get<double>() + Delay;
        if (entry.contains("line"))
            entry["line"]["t"] = entry["line"]["t"].get<double>() + Delay;
    }
    ASSERT_TRUE(later);
    EXPECT_EQ(simulated_trackers(recording.dump()).size(), 2U) << scenario_of_recording(recording.dump(), "recording");
}

} // namespace qoro::test
