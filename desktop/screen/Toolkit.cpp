#include "desktop/screen/Toolkit.h"

#include <clocale>
#include <gtk/gtk.h>
#include <malloc.h>

#include <string>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>

/// Memory that desktop libraries retain until the program ends: font caches, the script engine's types, GLib's string
/// table, which leaks its smaller predecessor whenever it grows, and what GStreamer's HTTP source leaks when a transfer
/// is aborted.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n"
           "leak:libjavascriptcoregtk\n"
           "leak:ld-linux\n"
           "leak:g_intern_\n"
           "leak:g_quark_\n"
           "leak:libgstsoup\n";
}
#endif

namespace qoro
{

namespace
{
/// More than the pixels of any device's screen take.
constexpr int frame_memory = 16 * 1024 * 1024;
/// One for the main thread and one for all others.
constexpr int arenas = 2;
} // namespace

void prepare_program(bool pages)
{
    g_setenv("GSK_RENDERER", "cairo", FALSE);
    // Only WebKit needs GTK's detection of a graphics card: without it, WebKit leaves trails behind moving content of a
    // transparent page.
    if (!pages) {
        const char* set = g_getenv("GDK_DEBUG");
        g_setenv("GDK_DEBUG", set && *set ? (std::string(set) + ",gl-disable").c_str() : "gl-disable", TRUE);
    }
    // GTK allocates and frees memory for a complete picture in each frame. By default the C library returns it to the
    // kernel every time, which costs more than the drawing.
    mallopt(M_MMAP_THRESHOLD, frame_memory);
    mallopt(M_TRIM_THRESHOLD, 2 * frame_memory);
    // By default each thread of an ad would get its own arena, of which some pages stay in use: resident memory would
    // grow with each ad.
    mallopt(M_ARENA_MAX, arenas);
    // Not of numbers, whose decimal point other programs' parsers may expect.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
}

bool start_toolkit()
{
    if (!gtk_is_initialized())
        gtk_disable_setlocale();
#ifdef __SANITIZE_ADDRESS__
    // The memory of a graphics driver becomes unreachable when the driver is unloaded.
    const __lsan::ScopedDisabler drivers_own;
#endif
    return gtk_init_check();
}

} // namespace qoro
