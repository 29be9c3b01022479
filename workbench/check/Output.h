#pragma once

#include "workbench/check/Check.h"

#include <span>
#include <string>
#include <vector>

namespace qoro
{

/// A finding with the file that its counterexample is written to.
struct ReportedFinding {
    Finding finding;
    /// Empty if it is not written.
    std::string counterexample_file = {};
};

/// What is reported about one ad.
struct AdReport {
    /// As the user named it.
    std::string file;
    std::size_t sessions = 0;
    /// The least severity that was looked for.
    Severity severity = Severity::Note;
    /// The worst first.
    std::vector<ReportedFinding> findings = {};
};

/// For people: one line for an ad without findings; otherwise grouped by rule, the worst first.
/// @param colours whether to use escape sequences of a terminal
std::string text_of(const AdReport& report, bool colours);

/// One JSON object with all findings and their counterexamples.
std::string json_of(std::span<const AdReport> reports);

/// A log of SARIF 2.1.0 (OASIS), with all rules and all findings.
/// @param version of this program
std::string sarif_of(std::span<const AdReport> reports, const std::string& version);

} // namespace qoro
