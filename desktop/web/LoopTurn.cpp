#include "desktop/web/LoopTurn.h"

#include <glib.h>

namespace qoro
{

namespace
{

/// A source that is never ready, but is checked in each iteration of the loop.
struct Watch {
    GSource source;
    double woke;
};

gboolean woke_up(GSource* source)
{
    reinterpret_cast<Watch*>(source)->woke = LoopTurn::now();
    return FALSE;
}

gboolean has_nothing(GSource*, GSourceFunc, gpointer)
{
    return G_SOURCE_CONTINUE;
}

GSourceFuncs functions = {nullptr, woke_up, has_nothing, nullptr, nullptr, nullptr};

} // namespace

LoopTurn::LoopTurn() : source_(g_source_new(&functions, sizeof(Watch)))
{
    g_source_set_static_name(source_.get(), "turns of the main loop");
    // GLib does not check sources of lower priority than a ready one.
    g_source_set_priority(source_.get(), G_MININT);
    g_source_attach(source_.get(), nullptr);
}

double LoopTurn::woke() const
{
    return reinterpret_cast<const Watch*>(source_.get())->woke;
}

double LoopTurn::now()
{
    return static_cast<double>(g_get_monotonic_time()) * 1e-6;
}

} // namespace qoro
