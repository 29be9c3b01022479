#include "desktop/screen/Toolkit.h"

#include <clocale>
#include <gtk/gtk.h>
#include <malloc.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>

/// What the desktop's libraries keep to the end of the program: font caches, the script engine's types, GLib's table of
/// names, which leaves its smaller self behind each time that it grows, and what GStreamer's source for HTTP loses of a
/// transfer that is broken off.
extern "C" const char* __lsan_default_suppressions();
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
/// More than the pixels of any device's screen.
constexpr int frame_memory = 16 * 1024 * 1024;
/// The main thread's, and one for all others.
constexpr int arenas = 2;
} // namespace

void prepare_toolkit()
{
    // GTK's search for a graphics card stays on all the same: without it WebKit draws in a way that leaves trails
    // behind what moves on a transparent page.
    g_setenv("GSK_RENDERER", "cairo", FALSE);
    // GTK takes memory for the whole picture of every frame, and gives it back. Left to itself the C library then hands
    // it to the kernel each time, which costs more than the drawing.
    mallopt(M_MMAP_THRESHOLD, frame_memory);
    mallopt(M_TRIM_THRESHOLD, 2 * frame_memory);
    // Each of an ad's threads would have memory of its own, of which some pages stay in use for the next thread to
    // find: ad after ad, more would be resident.
    mallopt(M_ARENA_MAX, arenas);
    // GTK would do so later, under the feet of the other threads; and for numbers too, whose decimal point trackers and
    // scripts are sent.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    gtk_disable_setlocale();
}

bool start_toolkit()
{
    prepare_toolkit();
#ifdef __SANITIZE_ADDRESS__
    // What a graphics driver takes is lost sight of when it is unloaded.
    const __lsan::ScopedDisabler drivers_own;
#endif
    return gtk_init_check();
}

} // namespace qoro
