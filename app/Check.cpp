#include "app/Check.h"

#include "app/WorkbenchInput.h"
#include "formats/InputError.h"
#include "workbench/check/Output.h"
#include "workbench/report/MeasuredTexts.h"

#include <CLI/CLI.hpp>

#include <qoro/Version.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace qoro
{

namespace
{

constexpr int Findings = 1;
constexpr int UnusableInput = 2;

constexpr const char* Description = "Find what is wrong with an ad before a viewer does";

constexpr const char* Advice =
    "The ad is put through many sessions in virtual time: watched, closed early, on every device, with a stalled or\n"
    "failing video and slow or failing servers. docs/check.md lists the rules. Each finding names its place in the\n"
    "file and a cure; --out writes the shortest session that shows it.\n\n"
    "Examples:\n"
    "  qoro-ad check ad.json                            what is wrong with an ad; one line if nothing is\n"
    "  qoro-ad check campaign/ other/ --severity error  several ads' folders, only the worst\n"
    "  qoro-ad check ad.json --out faults               a session for each finding, for qoro-ad simulate\n"
    "  qoro-ad check tag.xml --format sarif >ad.sarif   for a code host\n\n"
    "Exit status: 0 no finding of the chosen severity; 1 findings; 2 an ad or an option is not usable (one line on\n"
    "standard error says which, where and what was expected; the other ads are checked all the same).\n";

void write_file(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file)
        throw InputError(path.string(), "", std::strerror(errno));
}

/// Writes the counterexamples of findings into a folder.
class Counterexamples
{
public:
    /// @param folder empty: nothing is written
    explicit Counterexamples(const std::string& folder) : folder_(folder)
    {
        std::error_code error;
        if (!folder.empty())
            std::filesystem::create_directories(folder, error);
        if (error)
            throw InputError(folder, "", error.message());
    }

    /// @return the file's path; empty if nothing is written
    std::string write(const Finding& finding)
    {
        if (folder_.empty() || finding.counterexample.empty())
            return "";
        const std::string rule(finding.rule);
        const std::filesystem::path file = folder_ / (rule + '-' + std::to_string(++written_[rule]) + ".json");
        write_file(file, finding.counterexample);
        return file.string();
    }

private:
    const std::filesystem::path folder_;
    std::map<std::string, int> written_;
};

AdReport report_of(const std::string& ad, const CheckCommandOptions& options, Counterexamples& counterexamples)
{
    BaseScenario base = read_base_scenario(ad, options.input);
    if (options.measure)
        measure_texts(base.scenario, options.measure, TextsToMeasure::OfTheAd);
    const CheckResult result = check_ad(base, options.check);
    AdReport report{.file = base.file, .sessions = result.sessions, .severity = options.check.severity};
    for (const Finding& finding : result.findings)
        report.findings.push_back({.finding = finding, .counterexample_file = counterexamples.write(finding)});
    return report;
}

std::string written(const std::vector<AdReport>& reports, CheckFormat format)
{
    switch (format) {
    case CheckFormat::Json:
        return json_of(reports);
    case CheckFormat::Sarif:
        return sarif_of(reports, QORO_VERSION_TEXT);
    case CheckFormat::Text:
        break;
    }
    std::string text;
    for (const AdReport& report : reports)
        text += (text.empty() || report.findings.empty() ? "" : "\n") + text_of(report, isatty(STDOUT_FILENO) == 1);
    return text;
}

} // namespace

void add_check_options(CLI::App& command, CheckCommandOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    command.add_option("ads", options.ads, "Ads, folders of ads, VAST tags, scenarios; - for standard input")
        ->type_name("AD")
        ->required();
    command
        .add_option_function<std::string>(
            "--format",
            [&options](const std::string& name) {
                if (name != "text" && name != "json" && name != "sarif")
                    throw CLI::ValidationError("--format: expected text, json or sarif, got \"" + name + "\"");
                options.format = name == "json"    ? CheckFormat::Json
                                 : name == "sarif" ? CheckFormat::Sarif
                                                   : CheckFormat::Text;
            },
            "Text to read, one JSON object, or a SARIF 2.1.0 log; text by default")
        ->type_name("text|json|sarif");
    command
        .add_option_function<std::string>(
            "--severity",
            [&options](const std::string& name) {
                for (const Severity severity : {Severity::Note, Severity::Warning, Severity::Error})
                    if (name == name_of(severity)) {
                        options.check.severity = severity;
                        return;
                    }
                throw CLI::ValidationError("--severity: expected note, warning or error, got \"" + name + "\"");
            },
            "The least severity that is reported; warning by default")
        ->type_name("note|warning|error");
    command
        .add_option_function<double>(
            "--policy-seconds",
            [&options](double seconds) {
                if (!(seconds >= 0 && seconds <= 1e6))
                    throw CLI::ValidationError("--policy-seconds: expected seconds from 0 to 1000000");
                options.check.policy_seconds = seconds;
            },
            "Seconds after which the viewer must be able to close the ad; 15 by default")
        ->type_name("SECONDS");
    command.add_flag(
        "--guard", options.check.guard,
        "Check what a viewer gets: with the close guard and the request limit of the kit, not the ad alone");
    command.add_option("--out", options.out, "Write a session for each finding into this folder")->type_name("DIR");
}

int check_command(const CheckCommandOptions& options)
{
    Counterexamples counterexamples(options.out);
    std::vector<AdReport> reports;
    bool unusable = false;
    for (const std::string& ad : options.ads)
        try {
            reports.push_back(report_of(ad, options, counterexamples));
        } catch (const InputError& error) {
            std::cerr << "qoro-ad: " << error.what() << '\n';
            unusable = true;
        }
    const std::string text = written(reports, options.format);
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
    if (unusable)
        return UnusableInput;
    return std::ranges::any_of(reports, [](const AdReport& each) { return !each.findings.empty(); }) ? Findings : 0;
}

} // namespace qoro
