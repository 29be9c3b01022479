#pragma once

#include "desktop/glib/Owned.h"

#include <functional>

namespace qoro
{

/// Detects the loss of the display: its X server or Wayland compositor has ended or closed the connection. GTK itself
/// would terminate the program immediately. At most one per program, on GTK's thread.
class DisplayWatch
{
public:
    /// GTK must have been started.
    /// @param lost called once, as an event of the main loop. Afterwards the watch blocks all other sources of that
    ///        loop, so that GTK does not detect the loss: the callback must perform the shutdown and quit the loop
    explicit DisplayWatch(std::function<void()> lost);
    /// Leaves the X11 error handlers installed, so that later calls of GTK on the lost display are harmless.
    ~DisplayWatch() = default;
    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;

private:
    struct Source;

    const std::function<void()> lost_;
    /// Null if there is nothing to watch.
    OwnedSource source_;
};

/// Whether a DisplayWatch, or a call of Xlib since there is one, has found the connection to the display broken.
/// Further calls of Xlib then return at once, with nothing done. GTK's thread.
bool display_is_gone();

} // namespace qoro
