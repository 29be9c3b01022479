// What a Desktop sets of its process: nothing, unless the host asks for it.
#include <qoro/Desktop.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

extern char** environ;

namespace
{
std::string environment()
{
    std::string all;
    for (char** variable = environ; *variable; ++variable)
        all += std::string(*variable) + '\n';
    return all;
}
} // namespace

int main(int count, char** words)
{
    const bool asks = count > 1 && std::strcmp(words[1], "--prepare") == 0;
    // Otherwise it would stay unset even if the desktop set it.
    unsetenv("GSK_RENDERER");
    setenv("LC_ALL", "C.UTF-8", 1);
    const std::string before = environment();
    {
        const qoro::Desktop desktop({.silent = true, .prepare_program = asks});
    }
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    std::cout << "environment " << (environment() == before ? "kept" : "changed") << ", locale "
              << (locale == "C" ? "kept" : "changed") << '\n';
}
