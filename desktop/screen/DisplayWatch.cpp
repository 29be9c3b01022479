#include "desktop/screen/DisplayWatch.h"

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_X11
#include <X11/Xlib.h>
#include <gdk/x11/gdkx.h>
#endif
#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/wayland/gdkwayland.h>
#include <wayland-client-core.h>
#endif

#include <poll.h>
#include <utility>

namespace qoro
{

namespace
{

/// Higher than GTK's own source: while this source is ready, GLib does not check sources of lower priority.
constexpr int BeforeAll = G_PRIORITY_HIGH - 100;

bool is_gone = false;

#ifdef GDK_WINDOWING_X11
/// Replaces GTK's handler, which terminates the program.
int x_has_failed(Display*)
{
    is_gone = true;
    return 0;
}

/// Replaces Xlib's default, which terminates the program.
void stay(Display*, void*)
{
}
#endif

/// File descriptor of a display's connection; -1 if it has none.
int connection_of(GdkDisplay* display)
{
#ifdef GDK_WINDOWING_X11
    if (GDK_IS_X11_DISPLAY(display)) {
        Display* x = gdk_x11_display_get_xdisplay(display);
        XSetIOErrorHandler(x_has_failed);
        XSetIOErrorExitHandler(x, stay, nullptr);
        return ConnectionNumber(x);
    }
#endif
#ifdef GDK_WINDOWING_WAYLAND
    if (GDK_IS_WAYLAND_DISPLAY(display))
        return wl_display_get_fd(gdk_wayland_display_get_wl_display(display));
#endif
    return -1;
}

} // namespace

bool display_is_gone()
{
    return is_gone;
}

struct DisplayWatch::Source {
    GSource base;
    DisplayWatch* watch;
    int connection;
    gpointer tag;
    bool reported;

    // Polls the connection directly: GTK's own source flushes its requests while it prepares, before GLib polls, and
    // terminates the program if that fails.
    static gboolean prepare(GSource* source, gint* timeout)
    {
        *timeout = -1;
        const auto* self = reinterpret_cast<Source*>(source);
        pollfd connection{self->connection, 0, 0};
        return is_gone || (poll(&connection, 1, 0) == 1 && connection.revents != 0);
    }
    static gboolean check(GSource* source)
    {
        const auto* self = reinterpret_cast<Source*>(source);
        return is_gone || (g_source_query_unix_fd(source, self->tag) & (G_IO_HUP | G_IO_ERR)) != 0;
    }
    static gboolean dispatch(GSource* source, GSourceFunc, gpointer)
    {
        auto* self = reinterpret_cast<Source*>(source);
        is_gone = true;
        if (!std::exchange(self->reported, true))
            self->watch->lost_();
        return G_SOURCE_CONTINUE;
    }
};

DisplayWatch::DisplayWatch(std::function<void()> lost) : lost_(std::move(lost))
{
    const int connection = connection_of(gdk_display_get_default());
    if (connection < 0)
        return;
    static GSourceFuncs functions = {Source::prepare, Source::check, Source::dispatch, nullptr, nullptr, nullptr};
    GSource* made = g_source_new(&functions, sizeof(Source));
    source_.reset(made);
    auto* source = reinterpret_cast<Source*>(made);
    source->watch = this;
    source->reported = false;
    source->connection = connection;
    source->tag = g_source_add_unix_fd(made, connection, static_cast<GIOCondition>(G_IO_HUP | G_IO_ERR));
    g_source_set_name(made, "qoro display watch");
    g_source_set_priority(made, BeforeAll);
    g_source_attach(made, nullptr);
}

} // namespace qoro
