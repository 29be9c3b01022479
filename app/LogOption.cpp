#include "app/LogOption.h"

#include "formats/LogLines.h"

#include <CLI/CLI.hpp>

#include <string>

namespace qoro
{

namespace
{

std::string check_level(const std::string& name)
{
    return log_level_named(name) ? "" : "expected one of debug, info, note, warning, error, got \"" + name + "\"";
}

} // namespace

void add_log_option(CLI::App& command, std::optional<ZulixLogTag>& level)
{
    const std::string standard = level ? std::string(log_level_name(*level)) : "none";
    auto* log = command.add_option_function<std::string>(
        "--log", [&level](const std::string& name) { level = log_level_named(name); },
        "Write the ad's log to standard error, from this level up (" + standard + ")");
    log->type_name("debug|info|note|warning|error")->check(CLI::Validator(check_level, ""));
    command
        .add_flag_callback(
            "--verbose", [&level] { level = ZulixLogTagOfNote; },
            "As --log note: also what is as intended, such as parts of a VAST tag that have no effect")
        ->excludes(log);
}

} // namespace qoro
