#pragma once

#include "formats/AdScenario.h"

#include <string>

namespace CLI
{
class App;
}

namespace qoro
{

/// The options of `qoro-ad simulate` for an ad without a scenario.
struct SimulatedAdOptions {
    /// Without an ad file there is no such ad.
    AdScenarioParts parts;
    /// Where the scenario is written; empty for nowhere.
    std::string scenario_file;
    /// Where the trace is written; empty and "-" for standard output.
    std::string trace_file;
};

/// Adds the options, which parsing fills.
/// @param options outlives the parsing
void add_simulated_ad_options(CLI::App& command, SimulatedAdOptions& options);

} // namespace qoro
