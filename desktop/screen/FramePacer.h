#pragma once

#include "desktop/glib/Owned.h"

#include <cstdint>
#include <functional>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// Decides when a changed screen is updated: at most once per frame, never while its window is invisible, and, while a
/// video plays, together with the video's next picture. Main thread only.
class FramePacer
{
public:
    /// @param widget its frame clock sets the pace; kept alive
    /// @param update brings the screen up to date, before the frame is drawn
    FramePacer(GtkWidget* widget, std::function<void()> update);
    ~FramePacer();
    FramePacer(const FramePacer&) = delete;
    FramePacer& operator=(const FramePacer&) = delete;

    /// Schedules an update, unless one is scheduled already.
    void schedule();
    /// A video on the screen has a new picture. Updates what has waited for it.
    void picture_arrived();

private:
    struct Callbacks;

    void update_with_next_frame();

    const ObjectRef<GtkWidget> widget_;
    const std::function<void()> update_;
    /// Tick callback of the scheduled update; 0 while no update is scheduled.
    unsigned tick_ = 0;
    /// The timer of a change that waits for the video's next picture.
    SourceId patience_;
    /// GLib's monotonic time in µs; 0 before the first picture.
    std::int64_t last_picture_ = 0;
};

} // namespace qoro
