#include "desktop/web/GuardFolder.h"

#include "desktop/glib/ScratchFolders.h"
#include "desktop/web/Embedded.h"

#include <dlfcn.h>
#include <glib.h>

#include <cstdint>
#include <filesystem>
#include <stdexcept>

namespace qoro
{

namespace
{

/// Bytes reserved for the content filters that WebKit stores beside the module.
constexpr std::uint64_t RoomForFilters = 100'000;

/// Writes the module to a new folder under `place`.
/// @return the folder; empty if nothing can be executed from there
std::string try_place(const std::string& place)
{
    std::string folder = place + "/qoro-ad-XXXXXX";
    if (!g_mkdtemp(folder.data()))
        return "";
    const std::string file = folder + "/page-guard.so";
    const std::string_view module = page_guard();
    const bool written =
        g_file_set_contents(file.c_str(), module.data(), static_cast<gssize>(module.size()), nullptr) != FALSE;
    void* loaded = written ? dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL) : nullptr;
    if (loaded) {
        dlclose(loaded);
        return folder;
    }
    std::error_code gone_already;
    std::filesystem::remove_all(folder, gone_already);
    return "";
}

} // namespace

GuardFolder::GuardFolder()
{
    for (const std::string& place : scratch_folders(page_guard().size() + RoomForFilters))
        if (path_ = try_place(place); !path_.empty())
            return;
    throw std::runtime_error("the guard of pages can be placed nowhere: a temporary folder that programs may run from "
                             "is needed");
}

GuardFolder::~GuardFolder()
{
    std::error_code gone_already;
    std::filesystem::remove_all(path_, gone_already);
}

} // namespace qoro
