#include "tests/support/ScenarioRun.h"

#include "formats/InputError.h"
#include "simulator/Simulation.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qoro::test
{

std::vector<std::string> trace_of(std::string_view scenario)
{
    std::vector<std::string> lines;
    simulate(read_scenario(scenario, "scenario.json"), TraceFormat::Json,
             [&lines](std::string_view line) { lines.emplace_back(line.substr(0, line.size() - 1)); });
    return lines;
}

std::vector<std::string> of_kind(const std::vector<std::string>& trace, std::string_view what)
{
    const std::string mark = ",\"what\":\"" + std::string(what) + "\"";
    std::vector<std::string> found;
    std::ranges::copy_if(trace, std::back_inserter(found),
                         [&](const std::string& line) { return line.find(mark) != std::string::npos; });
    return found;
}

std::vector<std::string> manual_run(std::string_view steps, std::string_view ad, std::string_view further)
{
    return trace_of("{" + std::string(further) + R"("video": {"mode": "manual"}, "ad": {)" + std::string(ad) +
                    R"("strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 1280, "fVideoHeight": 720,
                       "portraitModeType": 2, "portraitVideoPos": "TOP", "iCloseBtnCountdown": 5,
                       "iBufferingSufferTime": -1}, "steps": [)" +
                    std::string(steps) + "]}");
}

std::string in_snapshot(const std::vector<std::string>& trace, const std::string& path)
{
    const std::vector<std::string> snapshots = of_kind(trace, "snapshot");
    if (snapshots.empty())
        return "absent";
    const auto json = nlohmann::ordered_json::parse(snapshots.back());
    const nlohmann::ordered_json::json_pointer pointer(path);
    return json.contains(pointer) ? json[pointer].dump() : "absent";
}

std::string complaint_about(std::string_view scenario)
{
    try {
        read_scenario(scenario, "scenario.json");
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

} // namespace qoro::test
