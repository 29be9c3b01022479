#pragma once

namespace qoro
{

class Platform;

/// Sets the accessible names of the controller's controls, which the kit does not know (kit/Accessible.h).
void set_control_names(Platform& platform);

} // namespace qoro
