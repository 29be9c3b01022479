#include "app/Report.h"

#include "app/WorkbenchInput.h"
#include "formats/AdFolder.h"
#include "formats/InputError.h"
#include "platform/AddressParts.h"
#include "workbench/report/MeasuredTexts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

namespace qoro
{

namespace
{

constexpr const char* Description = "Write a page that shows what an ad does: one HTML file, to look at and to send";

constexpr const char* Advice =
    "The page shows the device at each moment, what can be tapped, the trackers with the times at which they were due\n"
    "and sent, the network, and the ad on phones and tablets. It needs no network and opens in any browser.\n\n"
    "Examples:\n"
    "  qoro-ad report ad.json -o report.html                  an ad: watched to the end, then closed\n"
    "  qoro-ad report ad.json --steps steps.json -o report.html\n"
    "                                                         what the viewer does, from a file\n"
    "  qoro-ad report tag.xml --device iphone-15 -o tag.html  a VAST tag on a device\n"
    "  qoro-ad report session.json -o session.html            a scenario of simulate\n\n"
    "Exit status: 0 the report is written; 2 the ad or an option is not usable, or the file can't be written (one "
    "line\n"
    "on standard error says which, where and what was expected).\n";

void write_report(const std::string& path, const std::string& page)
{
    if (path == "-") {
        std::cout << page << std::flush;
        if (!std::cout)
            throw InputError("standard output", "", std::strerror(errno));
        return;
    }
    std::ofstream file(path, std::ios::binary);
    file << page << std::flush;
    if (!file)
        throw InputError(path, "", std::strerror(errno));
}

ListedFinding::Severity severity_of(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return ListedFinding::Severity::Note;
    case Severity::Warning:
        return ListedFinding::Severity::Warning;
    case Severity::Error:
        break;
    }
    return ListedFinding::Severity::Error;
}

} // namespace

std::string title_of(const std::string& file)
{
    const std::filesystem::path path(file);
    const std::string name = path.stem().string();
    const std::string folder = std::filesystem::absolute(path).parent_path().filename().string();
    return name == "ad" && !folder.empty() ? folder : name.empty() ? file : name;
}

std::vector<std::string> remark_lines(const BaseScenario& base)
{
    std::vector<std::string> lines;
    for (const auto* remarks : {&base.missing_files, &base.remarks})
        for (const PlacedRemark& remark : *remarks)
            lines.push_back(remark.path.empty() ? remark.text : remark.path + ": " + remark.text);
    return lines;
}

std::vector<ListedFinding> listed(const CheckResult& checked, const ReportParts& parts)
{
    Course reported{.when = "", .scenario = parts.scenario};
    if (parts.device) {
        reported.scenario.set_device(*parts.device);
        reported.models = {*parts.device};
    }
    const std::vector<Finding>& found = checked.findings;
    const auto moments = moments_in(reported, found);
    std::vector<ListedFinding> findings;
    for (std::size_t i = 0; i < found.size(); ++i)
        findings.push_back({.rule = std::string(found[i].rule),
                            .severity = severity_of(found[i].severity),
                            .sentence = (found[i].path.empty() ? "" : found[i].path + ": ") + found[i].sentence,
                            .at = moments[i]});
    return findings;
}

std::string video_file(const BaseScenario& base, const std::string& address)
{
    const std::filesystem::path folder = std::filesystem::absolute(base.file).parent_path();
    const std::string path(AddressParts(address).path());
    const std::string below = path.substr(std::min(path.find_first_not_of('/'), path.size()));
    for (const std::filesystem::path& name :
         {std::filesystem::path(base.scenario.string(path_under("/host/cached", address)).value_or("")),
          name_in_folder(below), name_in_folder(below).filename()})
        if (!name.empty() && is_file_in_folder(name, folder.string()))
            return (folder / name).string();
    return "";
}

void add_shown_ad_options(CLI::App& command, ReportOptions& options)
{
    command
        .add_option("input", options.input,
                    "What to show: an ad, an ad's folder, a VAST tag, a scenario, a recording; - for standard input")
        ->type_name("AD|TAG|SCENARIO")
        ->required();
    command
        .add_option("--steps", options.ad.parts.steps_file,
                    "What the viewer of an ad does: a JSON file; by default watches to the end, then closes the ad")
        ->type_name("FILE");
    add_device_option(command, options.ad.parts.device);
}

BaseScenario read_shown_ad(const ReportOptions& options)
{
    BaseScenario base = read_base_scenario(options.input, options.ad);
    if (base.kind == InputKind::Scenario && !options.ad.parts.steps_file.empty())
        throw InputError(base.file, "", "a scenario has steps of its own: expected no --steps");
    if (options.measure)
        measure_texts(base.scenario, options.measure, TextsToMeasure::OfTheAd);
    return base;
}

void add_report_options(CLI::App& command, ReportOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    add_shown_ad_options(command, options);
    command.add_option("-o,--out", options.out_file, "Write the report to this file; - for standard output")
        ->type_name("FILE")
        ->required();
}

int report_command(const ReportOptions& options)
{
    const BaseScenario base = read_shown_ad(options);
    ReportParts parts{.title = title_of(base.file), .scenario = base.scenario, .device = options.ad.parts.device};
    parts.findings = listed(check_ad(base, {}), parts);
    for (const ListedFinding& finding : parts.findings)
        if (finding.rule == "tag-without-ad")
            std::cerr << "qoro-ad: " << base.file << ": " << finding.sentence << '\n';
    parts.remarks = remark_lines(base);
    if (options.measure)
        measure_texts(parts.scenario, options.measure);
    if (options.stills_of)
        parts.stills_of = [&](const std::string& address, std::size_t most) {
            const std::string file = video_file(base, address);
            return file.empty() ? std::vector<VideoStill>() : options.stills_of(file, most);
        };
    write_report(options.out_file, report_page(parts.title, report_data(parts)));
    return 0;
}

} // namespace qoro
