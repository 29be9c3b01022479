// How far and how fast sessions of 500 steps with a planted fault shrink: a JSON object a line for each fault. Seconds
// are processor time.

#include "workbench/Shrink.h"
#include "workbench/check/ShownFault.h"
#include "workbench/expression/Holds.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

using qoro::ScenarioText;

constexpr std::size_t Steps = 500;
constexpr double Between = 0.25;

using Planted = std::vector<std::pair<std::size_t, std::pair<const char*, const char*>>>;

struct Fault {
    const char* name;
    /// A rule or an expression.
    const char* condition;
    /// What is planted, by the step.
    Planted steps;
    const char* stalls = "[]";
};

const std::array Faults{
    Fault{"a tracker of one tap", "line request url=\"*/mute\"", {{321, {"tap", R"("btnMute")"}}}},
    Fault{"a tracker that two replays send",
          "line request url=\"*/replay\" at least 2 times",
          {{140, {"tap", R"("btnReplay")"}}, {260, {"tap", R"("btnReplay")"}}}},
    Fault{"a stall without a way out", "close-never", {}, "[[2, 600]]"},
    Fault{"a page that takes over closing",
          "(ad open and not close reachable) for 20",
          {{200, {"script", R"(["MRAIDUseCustomClose", true])"}}}},
};

/// Touches beside the controls, changes of the volume and commands of the page, and the planted steps among them.
ScenarioText long_session(const Fault& fault)
{
    ScenarioText scenario(R"({"device": {"outputVolume": 0.5}, "host": {"parent": true}, "video": {"duration": 20},
        "net": {"http://m/p.html": {"body": "<head></head>", "after": 0.2}, "http://m/i.png": {"fail": "404"}},
        "ad": {"strVideoUrl": "http://m/v.mp4", "strWebViewUrl": "http://m/p.html", "fVideoWidth": 16,
               "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "bIsAutoStart": true,
               "bIsEndedCloseBtn": true, "iBufferingSufferTime": -1, "strBrandIconUrl": "http://m/i.png",
               "arrayMuteTrackingUrls": ["http://t/mute", "http://t/other"],
               "arrayReplayTrackingUrls": ["http://t/replay"],
               "dicTrackingUrls": {"start": ["http://t/start"], "complete": ["http://t/complete"]}},
        "steps": [{"open": 0}]})");
    scenario.set("/video/stalls", fault.stalls);
    constexpr std::array<std::pair<const char*, const char*>, 4> Idle{{{"device", R"({"outputVolume": 0.5})"},
                                                                       {"touch", "[300, 700]"},
                                                                       {"script", R"(["getControlRects"])"},
                                                                       {"touch", "[180, 600]"}}};
    for (std::size_t i = 1; scenario.steps() < Steps; ++i) {
        bool planted = false;
        for (const auto& [step, what] : fault.steps)
            if (step == i) {
                scenario.add_step(static_cast<double>(i) * Between, what.first, what.second);
                planted = true;
            }
        if (!planted)
            scenario.add_step(static_cast<double>(i) * Between, Idle[i % Idle.size()].first,
                              Idle[i % Idle.size()].second);
    }
    return scenario;
}

std::function<bool(const ScenarioText&)> predicate_of(const Fault& fault, const ScenarioText& scenario)
{
    if (const qoro::Rule* rule = qoro::rule_named(fault.condition))
        return [shown = std::make_shared<qoro::ShownFault>(*rule, scenario, 15)](const ScenarioText& each) {
            return shown->is_in(each);
        };
    return [expression = std::make_shared<qoro::ExpressionNode>(qoro::parse_expression(fault.condition, fault.name))](
               const ScenarioText& each) { return qoro::holds(*expression, each.scenario()); };
}

} // namespace

int main()
{
    for (const Fault& fault : Faults) {
        const ScenarioText whole = long_session(fault);
        const auto shows = predicate_of(fault, whole);
        if (!shows(whole)) {
            std::printf("{\"fault\":\"%s\",\"shown\":false}\n", fault.name);
            continue;
        }
        std::size_t sessions = 0;
        const std::clock_t began = std::clock();
        const ScenarioText small = qoro::shrink(whole,
                                                [&](const ScenarioText& each) {
                                                    ++sessions;
                                                    return shows(each);
                                                },
                                                {.trials = 1'000'000});
        const double seconds = static_cast<double>(std::clock() - began) / CLOCKS_PER_SEC;
        std::printf("{\"fault\":\"%s\",\"steps\":%zu,\"left\":%zu,\"bytes\":%zu,\"leftBytes\":%zu,\"sessions\":%zu,"
                    "\"seconds\":%.3f}\n",
                    fault.name, whole.steps(), small.steps(), whole.text().size(), small.text().size(), sessions,
                    seconds);
    }
}
