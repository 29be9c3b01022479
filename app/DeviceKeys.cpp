#include "app/DeviceKeys.h"

#include <gdk/gdkkeysyms.h>

#include <utility>

namespace qoro
{

namespace
{
constexpr float VolumeStep = 0.05F;
} // namespace

bool DeviceKeys::press(unsigned keyval)
{
    switch (keyval) {
    case GDK_KEY_Left:
        platform_.device().turn_counterclockwise();
        return true;
    case GDK_KEY_Right:
        platform_.device().turn_clockwise();
        return true;
    case GDK_KEY_Up:
        platform_.change_volume(VolumeStep);
        return true;
    case GDK_KEY_Down:
        platform_.change_volume(-VolumeStep);
        return true;
    case GDK_KEY_h:
    case GDK_KEY_H:
        leave_or_return(!is_away_);
        return true;
    default:
        return false;
    }
}

void DeviceKeys::leave_or_return(bool leaves)
{
    if (std::exchange(is_away_, leaves) == leaves)
        return;
    if (leaves)
        platform_.leave_app();
    else
        platform_.return_to_app();
}

} // namespace qoro
