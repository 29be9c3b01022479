#pragma once

#include <cstdint>

namespace qoro
{

class Platform;

// Notifications from the platform to the root controllers of the windows that are not hidden, each as an event of its
// own, from the bottom window up.

/// The interface has rotated.
/// @param from the UIInterfaceOrientation before
void tell_rotation(Platform& platform, std::int64_t from);

/// The viewer sees the windows again, after another application.
void tell_appearance(Platform& platform);

} // namespace qoro
