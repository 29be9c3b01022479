#pragma once

#include "desktop/DesktopPlatform.h"

namespace qoro
{

/// The keys with which a viewer uses the device: turns it, changes the volume, leaves the application and returns.
class DeviceKeys
{
public:
    /// @param platform outlives this object
    explicit DeviceKeys(DesktopPlatform& platform) : platform_(platform) {}

    /// @param keyval as in gdk/gdkkeysyms.h
    /// @return whether the key was used
    bool press(unsigned keyval);
    /// The viewer leaves the application, or returns. No effect if that is so already.
    void leave_or_return(bool leaves);

private:
    DesktopPlatform& platform_;
    bool is_away_ = false;
};

} // namespace qoro
