// Writes the manual page or a shell's completions: qoro_manual man|bash|zsh|fish FILE
#include "app/CommandLine.h"
#include "app/manual/Completions.h"
#include "app/manual/ManualPage.h"

#include <qoro/Version.h>

#include <fstream>
#include <iostream>
#include <string>

namespace
{

/// Empty for an unknown kind.
std::string text_of(const std::string& kind, const CLI::App& program)
{
    if (kind == "man")
        return qoro::manual_page(program, QORO_VERSION_TEXT);
    if (kind == "bash")
        return qoro::bash_completion(program);
    if (kind == "zsh")
        return qoro::zsh_completion(program);
    if (kind == "fish")
        return qoro::fish_completion(program);
    return "";
}

} // namespace

int main(int count, char** words)
{
    qoro::CommandLine line;
    const std::string text = count == 3 ? text_of(words[1], line.description()) : "";
    if (text.empty()) {
        std::cerr << "usage: qoro_manual man|bash|zsh|fish FILE\n";
        return 2;
    }
    std::ofstream file(words[2]);
    file << text;
    file.close();
    if (!file) {
        std::cerr << "qoro_manual: " << words[2] << ": cannot be written\n";
        return 1;
    }
}
