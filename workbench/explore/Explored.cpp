#include "workbench/explore/Explored.h"

#include "workbench/detail/Json.h"

#include <array>
#include <cstdio>

namespace qoro
{

using detail::Json;

namespace
{

std::string count_of(std::size_t count, const std::string& one)
{
    return std::to_string(count) + ' ' + one + (count == 1 ? "" : "s");
}

std::string seconds_text(std::int64_t microseconds)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.6g", static_cast<double>(microseconds) / 1e6);
    return text.data();
}

/// "ad 2 on iPad Pro 11-inch"; empty for the only one.
std::string place_of(const Explored& explored)
{
    std::string place = explored.ad > 0 ? "ad " + std::to_string(explored.ad) : "";
    if (!explored.device.empty())
        place += (place.empty() ? "on " : " on ") + explored.device;
    return place;
}

std::string text_of_findings(const Explored& explored, const std::string& place)
{
    std::string text;
    for (std::size_t n = 0; n < explored.result.findings.size(); ++n) {
        const SearchFinding& finding = explored.result.findings[n];
        text += "\n" + finding.rule + (place.empty() ? "" : " (" + place + ")") + ": " + finding.text;
        text += "\n  " + in_words(explored.setup.run, finding.course);
        if (finding.others > 0)
            text += "; and " + count_of(finding.others, "other course");
        if (!finding.cure.empty())
            text += "\n  cure: " + finding.cure;
        if (n < explored.files.size())
            text += "\n  " + explored.files[n];
    }
    return text;
}

std::string text_of_wrong_merges(const Explored& explored)
{
    std::string text;
    if (explored.result.verified > 0)
        text += "\n" + std::to_string(explored.result.verified) + " merged states explored again, " +
                std::to_string(explored.result.wrong_merges.size()) + " wrong";
    for (const WrongMerge& wrong : explored.result.wrong_merges)
        text += "\nwrong-merge: Two courses reach the same state, but go on differently.\n  " +
                in_words(explored.setup.run, wrong.first) + ": " + wrong.first_line + "\n  " +
                in_words(explored.setup.run, wrong.second) + ": " + wrong.second_line;
    return text;
}

Json json_of_search(const Explored& explored)
{
    const SearchResult& result = explored.result;
    Json findings = Json::array();
    for (std::size_t n = 0; n < result.findings.size(); ++n) {
        const SearchFinding& finding = result.findings[n];
        Json json{{"rule", finding.rule},
                  {"text", finding.text},
                  {"device", explored.device},
                  {"course", in_words(explored.setup.run, finding.course)},
                  {"others", finding.others}};
        if (!finding.cure.empty())
            json["cure"] = finding.cure;
        if (n < explored.files.size())
            json["file"] = explored.files[n];
        json["scenario"] = Json::parse(scenario_of_course(explored.setup, finding.course, finding.until).text());
        findings.push_back(std::move(json));
    }
    Json json;
    if (explored.ad > 0)
        json["ad"] = explored.ad;
    json["device"] = explored.device;
    json["sessions"] = result.sessions;
    json["states"] = result.states;
    json["merged"] = result.merged;
    json["unnamed"] = result.unnamed;
    json["completeMoves"] = result.complete_depth;
    json["worstClose"] = nullptr;
    if (result.worst_close)
        json["worstClose"] = {{"seconds", static_cast<double>(*result.worst_close) / 1e6},
                              {"course", in_words(explored.setup.run, result.worst_course)}};
    json["findings"] = std::move(findings);
    if (result.verified > 0) {
        json["verified"] = result.verified;
        json["wrongMerges"] = result.wrong_merges.size();
    }
    json["notCovered"] = result.not_covered;
    return json;
}

std::string line_of(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

std::string text_of(const Explored& explored, bool of_several)
{
    const SearchResult& result = explored.result;
    const std::string place = of_several ? place_of(explored) : "";
    std::string text = place.empty() ? "" : place + ": ";
    text += count_of(result.sessions, "session") + ", " + std::to_string(result.states) + " distinct states, " +
            std::to_string(result.merged) + " courses led to known ones; all courses of up to " +
            count_of(result.complete_depth, "move");
    if (result.unnamed > 0)
        text += "\n" + std::to_string(result.unnamed) + " states could not be compared with others";
    if (result.worst_close)
        text += "\na close is reachable after " + seconds_text(*result.worst_close) +
                " s at worst: " + in_words(explored.setup.run, result.worst_course);
    else
        text += "\nno course leads to a close by itself";
    text += text_of_findings(explored, place) + text_of_wrong_merges(explored) + "\nnot covered:";
    for (const std::string& line : result.not_covered)
        text += "\n  " + line;
    return text;
}

std::string json_of(const std::string& id, std::span<const Explored> searches)
{
    std::size_t findings = 0;
    Json all = Json::array();
    for (const Explored& each : searches) {
        findings += each.result.findings.size();
        all.push_back(json_of_search(each));
    }
    return line_of({{"id", id}, {"findings", findings}, {"searches", std::move(all)}});
}

std::string json_of_failure(const std::string& id, const std::string& why)
{
    return line_of({{"id", id}, {"error", why}});
}

bool has_findings(const Explored& explored)
{
    return !explored.result.findings.empty() || !explored.result.wrong_merges.empty();
}

} // namespace qoro
