#pragma once

#include "app/SimulatedAd.h"
#include "workbench/BaseScenario.h"
#include "workbench/check/Check.h"
#include "workbench/report/Report.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad report`.
struct ReportOptions {
    /// An ad, an ad's folder, a VAST tag, a scenario, or "-" for standard input.
    std::string input;
    /// File that the report is written to; "-" for standard output.
    std::string out_file;
    /// Leaves the device and the steps of a scenario as they are.
    SimulatedAdOptions ad;
    /// Takes frames of a video file, at most so many, equally far apart. Empty: this build cannot.
    std::function<std::vector<VideoStill>(const std::string& path, std::size_t most)> stills_of = {};
    /// Measures a text as the desktop draws it. Empty: this build cannot.
    std::function<CGSize(const std::string& text, const FontSpec& font)> measure = {};
};

/// The file of a video in the folder of the input: the one that a scenario names as the host's copy, the one of the
/// address's path, or the one of its name.
/// @return its path; empty without such a file, and for one that a link or ".." leads out of the folder
std::string video_file(const BaseScenario& base, const std::string& address);
/// What a report says of an ad beside its session.
/// @{
/// "demo" for "examples/demo/ad.json", and "end-card" for "creatives/end-card.json".
std::string title_of(const std::string& file);
/// What the ad contains without effect, what it lacks, and what is assumed.
std::vector<std::string> remark_lines(const BaseScenario& base);
/// @param parts those that the session of the parts shows have their moment in it
std::vector<ListedFinding> listed(const CheckResult& checked, const ReportParts& parts);
/// @}

/// Adds the options that say which ad is shown, and how.
/// @param options outlives the parsing
void add_shown_ad_options(CLI::App& command, ReportOptions& options);
/// @throws InputError for unusable input
BaseScenario read_shown_ad(const ReportOptions& options);

/// Adds the command's options, which parsing fills.
/// @param options outlives the parsing
void add_report_options(CLI::App& command, ReportOptions& options);

/// Simulates a session and writes its report.
/// @return the exit status
/// @throws InputError for unusable input, and for a file that cannot be written
int report_command(const ReportOptions& options);

} // namespace qoro
