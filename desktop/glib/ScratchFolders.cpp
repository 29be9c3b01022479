#include "desktop/glib/ScratchFolders.h"

#include <glib.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace qoro
{

std::vector<std::string> scratch_folders(std::uint64_t bytes)
{
    struct Folder {
        std::string path;
        std::uint64_t room;
    };
    std::vector<Folder> folders;
    for (const char* path : {g_get_tmp_dir(), g_get_user_runtime_dir(), g_get_user_cache_dir(), "/dev/shm"}) {
        std::error_code unknown;
        const std::filesystem::space_info space = std::filesystem::space(path, unknown);
        if (!unknown && access(path, W_OK | X_OK) == 0)
            folders.push_back({path, std::min<std::uint64_t>(space.available, bytes)});
    }
    // The room was capped at `bytes`, so that folders with enough of it compare equal and retain their order.
    std::ranges::stable_sort(folders, std::ranges::greater{}, &Folder::room);
    std::vector<std::string> paths;
    paths.reserve(folders.size());
    for (Folder& folder : folders)
        paths.push_back(std::move(folder.path));
    return paths;
}

} // namespace qoro
