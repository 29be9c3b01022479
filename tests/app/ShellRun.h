#pragma once

#include <string>
#include <vector>

namespace qoro::test
{

struct ShellResult {
    /// As the shell reports it; 128 and the signal's number when a signal ended it.
    int status = -1;
    std::string output;
    std::string errors;
};

/// Runs a line of shell in this project's folder, where `qoro-ad` is the program that was built with these tests.
/// @param input what stands on standard input
ShellResult run_shell(const std::string& line, const std::string& input = "");

/// A text's lines, without their ends.
std::vector<std::string> lines_of(const std::string& text);

} // namespace qoro::test
