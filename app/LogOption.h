#pragma once

#include "platform/QoroAdManager.h"

#include <optional>

namespace CLI
{
class App;
}

namespace qoro
{

/// Adds `--log LEVEL`: the lines of the ad's log, of this level and above, go to standard error; and `--verbose`, for
/// notes and above.
/// @param level its default on entry, absent for no lines; outlives the parsing
void add_log_option(CLI::App& command, std::optional<ZulixLogTag>& level);

} // namespace qoro
