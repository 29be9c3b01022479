#pragma once

#include "desktop/media/PulseCall.h"

#include <sys/types.h>

namespace qoro
{

/// A helper process that restores a sink's volume if this process ends without destroying the guard, as in a crash. Its
/// program is compiled in and run from memory; a kernel that forbids that (vm.memfd_noexec) leaves the volume changed.
class VolumeGuard
{
public:
    explicit VolumeGuard(const SinkVolume& found);
    /// Ends the helper without restoring anything.
    ~VolumeGuard();
    VolumeGuard(const VolumeGuard&) = delete;
    VolumeGuard& operator=(const VolumeGuard&) = delete;

private:
    pid_t process_ = -1;
    int line_ = -1;
};

} // namespace qoro
