#include "tests/support/TagRun.h"

#include "simulator/Simulation.h"

#include <sstream>

namespace qoro::test
{

using nlohmann::json;

std::vector<std::string> all_events()
{
    return {"loaded",        "creativeView", "start",          "firstQuartile",  "midpoint",
            "thirdQuartile", "complete",     "mute",           "unmute",         "pause",
            "resume",        "rewind",       "skip",           "closeLinear",    "close",
            "playerExpand",  "fullscreen",   "playerCollapse", "exitFullscreen", "acceptInvitation"};
}

std::string ad_element(const TagAd& ad)
{
    std::string tracking;
    for (const std::string& event : ad.events) {
        tracking += "<Tracking event=\"" + event;
        tracking += "\">http://t/" + ad.prefix + event + "</Tracking>";
    }
    return "<Ad " + ad.attributes + "><InLine><AdSystem>own</AdSystem><AdTitle>Tea</AdTitle><Impression>" +
           (ad.impression.empty() ? "http://t/" + ad.prefix + "impression" : ad.impression) + "</Impression>" +
           ad.in_line + "<Creatives><Creative><Linear " + ad.linear + "><Duration>00:00:10</Duration><TrackingEvents>" +
           tracking + ad.tracking + "</TrackingEvents><MediaFiles>" + ad.media + "</MediaFiles>" + ad.in_linear +
           "</Linear></Creative>" + ad.creatives + "</Creatives></InLine></Ad>";
}

std::string wrapper_element(const std::string& leads_to, const std::string& content, const std::string& attributes)
{
    return "<Ad><Wrapper " + attributes + "><AdSystem>own</AdSystem><VASTAdTagURI>" + leads_to + "</VASTAdTagURI>" +
           content + "</Wrapper></Ad>";
}

std::string vast_document(const std::string& ads)
{
    return "<VAST version=\"4.3\">" + ads + "</VAST>";
}

json scenario_of(const TagScenario& scenario)
{
    json whole{{"ad", {{"vast", TagAddress}}}, {"video", {{"duration", 10}}}};
    for (const auto& [address, document] : scenario.documents)
        whole["net"][address] = {{"body", document}};
    whole.update(scenario.further, true);
    std::string steps = R"([{"open": 0})" + (scenario.steps.empty() ? "" : ", " + scenario.steps) + "]";
    whole["steps"] = json::parse(steps);
    whole["steps"].push_back({{"at", scenario.until}, {"snapshot", true}});
    return whole;
}

std::vector<json> trace_of(const TagScenario& scenario)
{
    std::istringstream lines(simulate(read_scenario(scenario_of(scenario).dump(), "scenario.json")));
    std::vector<json> trace;
    for (std::string line; std::getline(lines, line);)
        trace.push_back(json::parse(line));
    return trace;
}

std::vector<json> trace_of(const TagAd& ad, const std::string& steps, const json& further, double until)
{
    return trace_of({{{TagAddress, vast_document(ad_element(ad))}}, steps, until, further});
}

std::vector<std::string> timed_trackers(const std::vector<json>& trace)
{
    std::vector<std::string> sent;
    for (const json& line : trace)
        if (line["what"] == "request" && line.contains("event"))
            sent.push_back(line["event"].get<std::string>() + " " + line["t"].dump());
    return sent;
}

std::vector<std::string> trackers(const std::vector<json>& trace)
{
    std::vector<std::string> sent;
    for (const json& line : trace)
        if (line["what"] == "request" && line.contains("event"))
            sent.push_back(line["event"]);
    return sent;
}

std::vector<std::string> addresses_of(const std::vector<json>& trace, const std::string& event)
{
    std::vector<std::string> addresses;
    for (const json& line : trace)
        if (line["what"] == "request" && line.value("event", "") == event)
            addresses.push_back(line["url"]);
    return addresses;
}

std::vector<json> lines_of(const std::vector<json>& trace, const std::string& what, const std::string& action)
{
    std::vector<json> found;
    for (const json& line : trace)
        if (line["what"] == what && (action.empty() || line.value("do", "") == action))
            found.push_back(line);
    return found;
}

} // namespace qoro::test
