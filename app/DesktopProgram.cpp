#include "app/DesktopProgram.h"

#include "formats/AdInput.h"
#include "formats/InputError.h"

#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace qoro
{

void run_desktop_program(char** arguments)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    if (error)
        return;
    // In the folder of a build, and installed.
    for (const std::filesystem::path& place : {folder, folder.parent_path() / QORO_LIBEXEC_FOLDER})
        execv((place / "qoro-ad-desktop").c_str(), arguments);
}

bool is_scenario_file(const std::string& input)
{
    if (input == "-")
        return false;
    try {
        return read_ad_input(input, InputKind::Scenario).kind == InputKind::Scenario;
    } catch (const InputError&) {
        // The command complains.
        return true;
    }
}

} // namespace qoro
