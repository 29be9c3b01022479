#pragma once

#include "app/SimulatedAd.h"
#include "workbench/explore/Search.h"

#include <string>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad explore`.
struct ExploreOptions {
    /// An ad file, an ad's folder or a scenario.
    std::string file;
    /// How the scenario of an ad is made.
    SimulatedAdOptions ad;
    SearchOptions search;
    bool guard = false;
    /// Where the courses of the findings are written; empty for nowhere.
    std::string folder;
};

/// Adds the command's description, options and arguments.
void add_explore_options(CLI::App& command, ExploreOptions& options);

/// Explores an ad and writes what was found to standard output.
/// @return the exit status: 0 without a finding, 1 with findings
/// @throws InputError for unusable input
int explore_command(const ExploreOptions& options);

} // namespace qoro
