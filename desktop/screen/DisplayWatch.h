#pragma once

#include <functional>

typedef struct _GSource GSource;

namespace qoro
{

/// Hears that the display is gone: its X server or Wayland compositor has ended, or has closed the connection. GTK
/// itself ends the program on the spot then. One at a time in a program; on the thread of GTK.
class DisplayWatch
{
public:
    /// GTK must have been started.
    /// @param lost called once, as an event of the main loop. From then on nothing else of that loop runs any more,
    ///        so that GTK does not notice: what has to end, ends inside the call, which quits the loop
    explicit DisplayWatch(std::function<void()> lost);
    /// What GTK does afterwards with a display that is gone leads nowhere.
    ~DisplayWatch();
    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;

private:
    struct Source;

    const std::function<void()> lost_;
    /// Null where there is nothing to watch.
    GSource* source_ = nullptr;
};

} // namespace qoro
