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
    command
        .add_option_function<std::string>(
            "--log", [&level](const std::string& name) { level = log_level_named(name); },
            "Write the ad's log to standard error, from this level up (" + standard + ")")
        ->type_name("debug|info|note|warning|error")
        ->check(CLI::Validator(check_level, ""));
}

} // namespace qoro
