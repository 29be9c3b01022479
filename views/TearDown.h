#pragma once

#include "platform/Export.h"

namespace QORO_EXPORT qoro
{

class Platform;

/// Tears a platform down, for its destructor, while its ports still exist: removes the event sink, discards the loop's
/// timers and posted work, and destroys the windows' root controllers and the shared objects. The platform is current
/// while their destructors run.
void tear_down(Platform& platform);

} // namespace qoro
