#include "desktop/screen/UploadMemory.h"

#include <cairo-xlib.h>
#include <gdk/x11/gdkx.h>

namespace qoro
{

UploadMemory::UploadMemory(GdkDisplay* display, int width, int height)
{
    if (!GDK_IS_X11_DISPLAY(display))
        return;
    ::Display* connection = gdk_x11_display_get_xdisplay(display);
    const int screen = DefaultScreen(connection);
    cairo_surface_t* root =
        cairo_xlib_surface_create(connection, RootWindow(connection, screen), DefaultVisual(connection, screen), 1, 1);
    // The pool's size is a multiple of the first image allocated from it.
    kept_ = cairo_surface_create_similar_image(root, CAIRO_FORMAT_ARGB32, width, height);
    cairo_surface_destroy(root);
}

UploadMemory::~UploadMemory()
{
    if (kept_)
        cairo_surface_destroy(kept_);
}

} // namespace qoro
