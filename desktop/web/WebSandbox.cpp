#include "desktop/web/WebSandbox.h"

#include "desktop/glib/Owned.h"

#include <glib.h>
#include <glib/gstdio.h>

#include <unistd.h>

#include <initializer_list>
#include <string>

namespace qoro
{

bool sandbox_works()
{
    const char* proxy[] = {"xdg-dbus-proxy", "--version", nullptr};
    // The isolation that WebKit uses. This fails in a container that prohibits any of it.
    const char* shut_away[] = {"bwrap",
                               "--die-with-parent",
                               "--unshare-pid",
                               "--unshare-ipc",
                               "--unshare-uts",
                               "--unshare-net",
                               "--ro-bind",
                               "/",
                               "/",
                               "--proc",
                               "/proc",
                               "--dev",
                               "/dev",
                               "true",
                               nullptr};
    for (const char** command : {proxy, shut_away}) {
        int status = 0;
        const gboolean ran = g_spawn_sync(
            nullptr, const_cast<char**>(command), nullptr,
            static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL),
            nullptr, nullptr, nullptr, nullptr, &status, nullptr);
        if (!ran || !g_spawn_check_wait_status(status, nullptr))
            return false;
    }
    return true;
}

bool sandbox_has_room()
{
    const std::string file = std::string(g_get_user_runtime_dir()) + "/qoro-ad-room-" + std::to_string(getpid());
    const std::string words(4096, ' ');
    Error error;
    const bool full =
        !g_file_set_contents(file.c_str(), words.data(), static_cast<gssize>(words.size()), error.out()) &&
        g_error_matches(error.get(), G_FILE_ERROR, G_FILE_ERROR_NOSPC);
    g_remove(file.c_str());
    return !full;
}

void give_up_sandbox()
{
    g_setenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS", "1", TRUE);
}

} // namespace qoro
