#include "workbench/check/Output.h"

#include "workbench/check/CheckedSession.h"
#include "workbench/check/Rules.h"
#include "workbench/detail/Json.h"

#include <cstdio>
#include <string_view>
#include <utility>

namespace qoro
{

using detail::Json;

namespace
{

constexpr const char* SarifSchema = "https://json.schemastore.org/sarif-2.1.0.json";

std::string_view colour_of(Severity severity)
{
    switch (severity) {
    case Severity::Error:
        return "\x1b[1;31m";
    case Severity::Warning:
        return "\x1b[1;33m";
    case Severity::Note:
        break;
    }
    return "\x1b[1;36m";
}

std::string counted(std::size_t number, const std::string& what)
{
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

std::string dumped(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// "why" as a sentence.
std::string sentence(std::string_view text)
{
    return std::string(text) + '.';
}

/// For the end of a shell's line.
std::string moment_comment(const Finding& finding)
{
    return finding.at ? "  # at second " + seconds_text(in_seconds(*finding.at)) : std::string();
}

void append(std::string& out, const ReportedFinding& reported)
{
    const Finding& finding = reported.finding;
    const std::string line = finding.place ? ":" + std::to_string(finding.place->line) : "";
    out +=
        "  " + finding.file + line + ": " + (finding.path.empty() ? "" : finding.path + ": ") + finding.sentence + '\n';
    out += "    cure: " + finding.cure + '\n';
    if (!reported.counterexample_file.empty())
        out += "    see:  qoro-ad simulate " + reported.counterexample_file + moment_comment(finding) + '\n';
}

/// RFC 3986, section 3.3: characters of a path segment, and the slash.
std::string uri_of(std::string_view file)
{
    constexpr std::string_view Allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/?%#[]";
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string uri;
    for (const char c : file)
        if (Allowed.find(c) != std::string_view::npos) {
            uri += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            uri += '%';
            uri += Digits[byte >> 4U];
            uri += Digits[byte & 15U];
        }
    return uri;
}

Json rule_json(const Rule& rule)
{
    return {{"id", rule.id},
            {"shortDescription", {{"text", rule.title}}},
            {"fullDescription", {{"text", sentence(rule.why)}}},
            {"help", {{"text", sentence(rule.cure)}}},
            {"defaultConfiguration", {{"level", name_of(rule.severity)}}}};
}

Json result_json(const ReportedFinding& reported)
{
    const Finding& finding = reported.finding;
    Json location{{"physicalLocation", {{"artifactLocation", {{"uri", uri_of(finding.file)}}}}}};
    if (finding.place)
        location["physicalLocation"]["region"] = {{"startLine", finding.place->line},
                                                  {"startColumn", finding.place->column}};
    if (!finding.path.empty())
        location["logicalLocations"] = Json::array({{{"fullyQualifiedName", finding.path}, {"kind", "member"}}});
    Json result{{"ruleId", finding.rule},
                {"ruleIndex", rule_named(finding.rule) - rules().data()},
                {"level", name_of(finding.severity)},
                {"message", {{"text", sentence(finding.sentence) + " Cure: " + sentence(finding.cure)}}},
                {"locations", Json::array({std::move(location)})}};
    if (finding.at)
        result["properties"] = {{"at", in_seconds(*finding.at)}};
    if (!reported.counterexample_file.empty())
        result["attachments"] =
            Json::array({{{"description", {{"text", "A session that shows it, for qoro-ad simulate"}}},
                          {"artifactLocation", {{"uri", uri_of(reported.counterexample_file)}}}}});
    return result;
}

} // namespace

std::string text_of(const AdReport& report, bool colours)
{
    if (report.findings.empty())
        return report.file + ": no findings" +
               (report.severity == Severity::Note ? "" : " from " + std::string(name_of(report.severity)) + " on") +
               " in " + counted(report.sessions, "session") + '\n';
    std::string out = report.file + ": " + counted(report.findings.size(), "finding") + " in " +
                      counted(report.sessions, "session") + '\n';
    std::string_view last;
    bool written = true;
    for (const ReportedFinding& each : report.findings) {
        const Finding& finding = each.finding;
        if (finding.rule != last) {
            const Rule& rule = *rule_named(finding.rule);
            out += '\n';
            out += colours ? colour_of(finding.severity) : "";
            out += name_of(finding.severity);
            out += colours ? "\x1b[0m" : "";
            out += "  " + std::string(rule.title) + "  [" + std::string(rule.id) + "]\n";
            out += "  " + sentence(rule.why) + '\n';
            last = finding.rule;
        }
        append(out, each);
        written = written && (finding.counterexample.empty() || !each.counterexample_file.empty());
    }
    if (!written)
        out += "\nqoro-ad check --out DIR writes a session for each finding, which qoro-ad simulate shows.\n";
    return out;
}

std::string json_of(std::span<const AdReport> reports)
{
    Json ads = Json::array();
    for (const AdReport& report : reports) {
        Json findings = Json::array();
        for (const ReportedFinding& each : report.findings) {
            const Finding& finding = each.finding;
            Json json{{"rule", finding.rule},         {"severity", name_of(finding.severity)},
                      {"sentence", finding.sentence}, {"file", finding.file},
                      {"path", finding.path},         {"cure", finding.cure}};
            json["line"] = finding.place ? Json(finding.place->line) : Json();
            json["column"] = finding.place ? Json(finding.place->column) : Json();
            json["at"] = finding.at ? Json(in_seconds(*finding.at)) : Json();
            json["counterexample"] =
                finding.counterexample.empty() ? Json() : Json::parse(finding.counterexample, nullptr, false);
            if (!each.counterexample_file.empty())
                json["counterexampleFile"] = each.counterexample_file;
            findings.push_back(std::move(json));
        }
        ads.push_back({{"file", report.file},
                       {"sessions", report.sessions},
                       {"severity", name_of(report.severity)},
                       {"findings", std::move(findings)}});
    }
    return dumped({{"ads", std::move(ads)}});
}

std::string sarif_of(std::span<const AdReport> reports, const std::string& version)
{
    Json all = Json::array();
    for (const Rule& rule : rules())
        all.push_back(rule_json(rule));
    Json results = Json::array();
    for (const AdReport& report : reports)
        for (const ReportedFinding& each : report.findings)
            results.push_back(result_json(each));
    const Json driver{{"name", "qoro-ad"}, {"version", version}, {"rules", std::move(all)}};
    Json run{{"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", std::move(results)}};
    return dumped({{"$schema", SarifSchema}, {"version", "2.1.0"}, {"runs", Json::array({std::move(run)})}});
}

} // namespace qoro
