#pragma once

#include <string>

namespace qoro
{

/// Replaces this process by the program that has all commands and is linked with the desktop's libraries, which take
/// tens of milliseconds to load.
/// @param arguments of this program, its name first, null at the end
/// @throws std::exception if it is not installed beside this one
[[noreturn]] void run_desktop_program(char** arguments);

/// Whether an input is used without the desktop's libraries: a scenario in a file. An ad's video must be looked at, a
/// tag must be fetched, and standard input cannot be read twice.
bool is_scenario_file(const std::string& input);

} // namespace qoro
