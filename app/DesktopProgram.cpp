#include "app/DesktopProgram.h"

#include "formats/AdInput.h"
#include "formats/InputError.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace qoro
{

void run_desktop_program(char** arguments)
{
    const char* const name = "qoro-ad-desktop";
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    // A build has both programs in one folder; an installation does not.
    for (const std::filesystem::path& place : {folder, folder.parent_path() / QORO_LIBEXEC_FOLDER})
        execv((place / name).c_str(), arguments);
    throw std::runtime_error(std::string(name) + ", the program that all other commands need, can't be started from " +
                             (folder.parent_path() / QORO_LIBEXEC_FOLDER).string() + ": " + std::strerror(errno) +
                             "; install qoro-ad again");
}

bool is_scenario_file(const std::string& input)
{
    // What is read from a pipe here would be missing later.
    std::error_code unknown;
    if (input == "-" || (std::filesystem::exists(input, unknown) && !std::filesystem::is_regular_file(input, unknown)))
        return false;
    try {
        return read_ad_input(input, InputKind::Scenario).kind == InputKind::Scenario;
    } catch (const InputError&) {
        // The command complains.
        return true;
    }
}

} // namespace qoro
