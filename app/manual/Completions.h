#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace qoro
{

/// Completions of the program's commands, options and values for a shell.
/// @{
std::string bash_completion(const CLI::App& program);
std::string zsh_completion(const CLI::App& program);
std::string fish_completion(const CLI::App& program);
/// @}

} // namespace qoro
