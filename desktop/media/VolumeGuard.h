#pragma once

#include "desktop/media/PulseCall.h"

#include <sys/types.h>

namespace qoro
{

/// A small process beside this one that puts a sink's volume back when this one ends without saying so: after a crash.
/// It needs pactl; without it a crash leaves the volume as it is.
class VolumeGuard
{
public:
    explicit VolumeGuard(const SinkVolume& found);
    /// The regular end: the guard goes, and touches nothing.
    ~VolumeGuard();
    VolumeGuard(const VolumeGuard&) = delete;
    VolumeGuard& operator=(const VolumeGuard&) = delete;

private:
    pid_t process_ = -1;
    int line_ = -1;
};

} // namespace qoro
