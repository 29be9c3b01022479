#pragma once

#include "session/Trace.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// What `qoro-ad simulate` was asked for.
struct SimulateOptions {
    /// "-" is standard input.
    std::vector<std::string> files;
    /// Scenarios come one a line on standard input, results go one a line to standard output.
    bool jsonl = false;
    /// Absent: JSON, or text when there is to be a summary.
    std::optional<TraceFormat> format;
    bool summary = false;
    unsigned jobs = 1;
};

/// Gives the command its description, options and arguments.
void add_simulate_options(CLI::App& command, SimulateOptions& options);

/// Simulates what the options name and writes it to standard output.
/// @return the exit status: 0, or 2 when a scenario was not usable; complaints stand on standard error
/// @throws InputError when the options don't go together
/// @throws std::runtime_error when standard output takes no more
int simulate_command(const SimulateOptions& options);

} // namespace qoro
