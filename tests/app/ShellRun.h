#pragma once

#include <string>
#include <vector>

namespace qoro::test
{

/// The result of a shell command.
struct ShellResult {
    /// As the shell reports it: 128 plus the signal's number after a signal.
    int status = -1;
    std::string output;
    std::string errors;
};

/// Runs a shell command in the project's folder, where `qoro-ad` is the program built with these tests.
/// @param input text for standard input
ShellResult run_shell(const std::string& line, const std::string& input = "");

/// The program without sanitizers, for runs that they would slow down twentyfold, and that another test lets them
/// watch: as a word of a shell's line.
std::string program_as_shipped();

/// The lines of a text, without line ends.
std::vector<std::string> lines_of(const std::string& text);

} // namespace qoro::test
