#pragma once

#include "app/SimulatedAd.h"
#include "formats/Trace.h"
#include "platform/QoroAdManager.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad simulate`.
struct SimulateOptions {
    /// "-" for standard input.
    std::vector<std::string> files;
    /// Read one scenario per line from standard input; write one result per line to standard output.
    bool jsonl = false;
    /// Absent: JSON, or text when a summary is requested.
    std::optional<TraceFormat> format;
    bool summary = false;
    /// Write the scenario of a recording rather than run anything.
    bool as_scenario = false;
    /// Level from which lines of the ads' logs go to standard error; absent for none.
    std::optional<ZulixLogTag> log;
    unsigned jobs = 1;
    SimulatedAdOptions ad;
};

/// Adds the command's description, options and arguments.
void add_simulate_options(CLI::App& command, SimulateOptions& options);

/// Simulates the given scenarios, or the ad, and writes the results to standard output.
/// @return the exit status: 0, 1 when a replay differs from its recording, or 2 when a scenario was invalid; errors are
/// on standard error
/// @throws InputError when the options conflict, and for an invalid ad
/// @throws std::runtime_error when writing to standard output fails
int simulate_command(const SimulateOptions& options);

} // namespace qoro
