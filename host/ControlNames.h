#pragma once

namespace qoro
{

class Platform;

/// Registers with a platform the accessible names of the controller's pictures and actions. The kit knows neither; it
/// looks the names up (kit/Accessible.h).
void set_control_names(Platform& platform);

} // namespace qoro
