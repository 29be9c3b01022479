#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace qoro
{

/// A command of the program with its options: the program itself, a command, or a command of a command.
struct CommandWords {
    /// "cache prefetch"; empty for the program itself.
    std::string path;
    const CLI::App* app;
};

/// The program and all its commands, each before its own.
std::vector<CommandWords> commands_of(const CLI::App& program);

/// What a value is, from the name of its type.
struct ValueWords {
    /// The values to choose from; empty for any other kind.
    std::vector<std::string> choices;
    bool is_file = false;
    bool is_folder = false;
};

/// @param option takes a value
ValueWords value_of(const CLI::Option& option);
/// Whether the option is a switch, without a value.
bool is_switch(const CLI::Option& option);
/// The options with dashes that apply to a command: its own, and those of the commands around it.
std::vector<const CLI::Option*> options_of(const CLI::App& command);
/// The arguments without dashes.
std::vector<const CLI::Option*> arguments_of(const CLI::App& command);
/// Its names with their dashes, the short ones first: "-h", "--help".
std::vector<std::string> names_of(const CLI::Option& option);

} // namespace qoro
