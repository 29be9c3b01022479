#pragma once

#include "app/SimulatedAd.h"
#include "platform/Geometry.h"
#include "platform/Ports.h"
#include "workbench/check/Check.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

enum class CheckFormat { Text, Json, Sarif };

/// The command line of `qoro-ad check`.
struct CheckCommandOptions {
    /// Ads, folders, tags or scenarios; "-" for standard input.
    std::vector<std::string> ads;
    CheckFormat format = CheckFormat::Text;
    CheckOptions check = {.severity = Severity::Warning};
    /// Folder for the counterexamples; empty for none.
    std::string out;
    SimulatedAdOptions input;
    /// Measures a text as the desktop draws it. Empty: this build cannot, and texts have the simulator's widths.
    std::function<CGSize(const std::string& text, const FontSpec& font)> measure = {};
};

/// Adds the command's description, options and arguments.
/// @param options outlives the parsing
void add_check_options(CLI::App& command, CheckCommandOptions& options);

/// Checks the ads and writes what is found to standard output.
/// @return the exit status: 0 without a finding, 1 with findings, 2 when an ad was unusable
/// @throws InputError when a counterexample cannot be written
int check_command(const CheckCommandOptions& options);

} // namespace qoro
