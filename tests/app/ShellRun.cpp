#include "tests/app/ShellRun.h"

#include "Places.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>

namespace qoro::test
{

namespace
{

std::string quoted(const std::string& path)
{
    return "'" + path + "'";
}

std::string content(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace

ShellResult run_shell(const std::string& line, const std::string& input)
{
    std::string name = (std::filesystem::temp_directory_path() / "qoro-shell-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no folder could be made");
    const std::filesystem::path folder = name;
    std::ofstream(folder / "in", std::ios::binary) << input;
    std::ofstream(folder / "line") << "cd " << quoted(QORO_SOURCE_DIR)
                                   << "\nPATH=" << quoted(std::filesystem::path(QORO_AD).parent_path().string())
                                   << ":$PATH\n"
                                   << line << "\n";
    const std::string command = "sh " + quoted(folder / "line") + " <" + quoted(folder / "in") + " >" +
                                quoted(folder / "out") + " 2>" + quoted(folder / "err");
    const int status = std::system(command.c_str());
    ShellResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, content(folder / "out"), content(folder / "err")};
    std::filesystem::remove_all(folder);
    return result;
}

std::string program_as_shipped()
{
#ifdef QORO_AD_AS_SHIPPED
    return quoted(QORO_AD_AS_SHIPPED);
#else
    return quoted(QORO_AD);
#endif
}

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace qoro::test
