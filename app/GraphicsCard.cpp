#include "app/GraphicsCard.h"

#include <gtk/gtk.h>

#include <dlfcn.h>
#include <filesystem>
#include <string>
#include <system_error>

namespace
{
/// Whether composite_pages_without_card() was called.
bool without_card = false;
} // namespace

/// Hides GTK's function of this name from WebKit, which asks it whether to composite pages (the dynamic linker searches
/// the program before the libraries). WebKit needs nothing more of GTK's OpenGL while pictures are handed over in
/// shared memory. GTK itself gets its own answer until the display is open.
extern "C" [[gnu::visibility("default")]] gboolean gdk_display_prepare_gl(GdkDisplay* display, GError** error)
{
    if (without_card && display && display == gdk_display_get_default())
        return TRUE;
    static const auto gtks_own =
        reinterpret_cast<decltype(&gdk_display_prepare_gl)>(dlsym(RTLD_NEXT, "gdk_display_prepare_gl"));
    return gtks_own(display, error);
}

namespace qoro
{

bool has_graphics_card()
{
    std::error_code failed;
    for (const auto& device : std::filesystem::directory_iterator("/dev/dri", failed))
        if (device.path().filename().string().starts_with("renderD"))
            return true;
    return std::filesystem::exists("/dev/nvidiactl", failed);
}

void composite_pages_without_card()
{
    without_card = true;
    for (const auto& [name, value] : {
             std::pair("WEBKIT_DMABUF_RENDERER_FORCE_SHM", "1"),
             // Each of these two would load OpenGL to ask it for the card.
             std::pair("WEBKIT_FORCE_DMABUF_RENDERER", "1"),
             std::pair("WEBKIT_WEB_RENDER_DEVICE_FILE", "/dev/dri/none"),
             std::pair("WEBKIT_SKIA_ENABLE_CPU_RENDERING", "1"),
         })
        g_setenv(name, value, FALSE);
}

} // namespace qoro
