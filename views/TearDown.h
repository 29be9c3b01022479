#pragma once

namespace qoro
{

class Platform;

/// Ends a platform, for its destructor, while its ports still exist: removes the event sink, discards what the loop
/// would still run, and destroys the windows' root controllers and the shared objects. These find the platform as the
/// current one.
void tear_down(Platform& platform);

} // namespace qoro
