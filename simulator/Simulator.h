#pragma once

#include "formats/World.h"
#include "platform/Export.h"

#include <memory>

namespace QORO_EXPORT qoro
{

class Platform;
class SimulatedPlatform;

/// A platform in virtual time, for tests of a host application: no display, no network, no sound. Deterministic: the
/// same world and the same calls give the same events. Any number may exist, each on one thread at a time.
class Simulator
{
public:
    /// @param world the surroundings: device, network answers, the video's behaviour
    explicit Simulator(const World& world = {});
    /// No ad may be open.
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    /// The platform to open ads on.
    Platform& platform();
    /// Virtual seconds since the start.
    double now() const;
    /// Runs every event that is due at or before a time, then sets now() to that time. No effect for a time before
    /// now().
    /// @param seconds since the start
    void run_until(double seconds);

private:
    const std::unique_ptr<SimulatedPlatform> platform_;
};

} // namespace qoro
