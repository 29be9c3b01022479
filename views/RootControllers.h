#pragma once

#include "platform/Export.h"
#include "platform/Orientation.h"

namespace QORO_EXPORT_TO_DESKTOP qoro
{

class Platform;

// Notifications from the platform to the root controllers of the windows that are not hidden, each as an event of its
// own, from the bottom window up.

/// The interface has rotated.
/// @param from the orientation before
void notify_rotation(Platform& platform, UIInterfaceOrientation from);

/// The viewer sees the windows again, after another application.
void notify_appearance(Platform& platform);

} // namespace qoro
