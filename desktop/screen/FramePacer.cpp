#include "desktop/screen/FramePacer.h"

#include <gtk/gtk.h>

#include <utility>

namespace qoro
{

namespace
{
/// Longer than a frame of any video, but imperceptible.
constexpr int longest_wait_ms = 50;
} // namespace

struct FramePacer::Callbacks {
    static gboolean tick(GtkWidget*, GdkFrameClock*, void* data)
    {
        auto* pacer = static_cast<FramePacer*>(data);
        pacer->tick_ = 0;
        pacer->update_();
        return G_SOURCE_REMOVE;
    }

    static gboolean patience_ended(void* data)
    {
        auto* pacer = static_cast<FramePacer*>(data);
        pacer->patience_.forget();
        pacer->update_with_next_frame();
        return G_SOURCE_REMOVE;
    }
};

FramePacer::FramePacer(GtkWidget* widget, std::function<void()> update)
    : widget_(new_ref(widget)), update_(std::move(update))
{
}

FramePacer::~FramePacer()
{
    if (tick_)
        gtk_widget_remove_tick_callback(widget_.get(), tick_);
}

void FramePacer::schedule()
{
    if (tick_ || patience_)
        return;
    // GTK draws frames no closer together than the monitor's refresh interval. While a video plays, other changes wait
    // for its next picture: a frame of their own would delay that picture.
    if (last_picture_ && g_get_monotonic_time() - last_picture_ < gint64{longest_wait_ms} * 1000)
        patience_.reset(g_timeout_add(longest_wait_ms, Callbacks::patience_ended, this));
    else
        update_with_next_frame();
}

void FramePacer::update_with_next_frame()
{
    patience_.reset();
    if (!tick_)
        tick_ = gtk_widget_add_tick_callback(widget_.get(), Callbacks::tick, this, nullptr);
}

void FramePacer::picture_arrived()
{
    last_picture_ = g_get_monotonic_time();
    if (!patience_)
        return;
    patience_.reset();
    update_();
}

} // namespace qoro
