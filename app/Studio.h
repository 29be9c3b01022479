#pragma once

#include "app/Report.h"

#include <string>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad studio`.
struct StudioOptions {
    /// The input, the ad's options and the functions are those of a report; out_file has no effect.
    ReportOptions report;
    /// Whether the page opens in the desktop's browser.
    bool open = false;
    /// Options that are passed on to `qoro-ad play`.
    bool no_web_sandbox = false;
    bool allow_private_network = false;
};

/// Adds the command's options, which parsing fills.
/// @param options outlives the parsing
void add_studio_options(CLI::App& command, StudioOptions& options);

/// Serves the page until SIGINT, SIGTERM or SIGHUP.
/// @return the exit status
/// @throws InputError for unusable input
int studio_command(const StudioOptions& options);

} // namespace qoro
