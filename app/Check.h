#pragma once

#include "app/SimulatedAd.h"
#include "workbench/check/Check.h"

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
};

/// Adds the command's description, options and arguments.
/// @param options outlives the parsing
void add_check_options(CLI::App& command, CheckCommandOptions& options);

/// Checks the ads and writes what is found to standard output.
/// @return the exit status: 0 without a finding, 1 with findings, 2 when an ad was unusable
/// @throws InputError when a counterexample cannot be written
int check_command(const CheckCommandOptions& options);

} // namespace qoro
