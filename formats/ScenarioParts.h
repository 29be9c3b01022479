#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/HostSetup.h"
#include "formats/Steps.h"
#include "formats/World.h"

#include <string>
#include <vector>

namespace qoro
{

// The parts of a scenario as JSON, on one line each. Reading them gives the same values.

/// The object "device".
std::string device_text(const DeviceSetup& device);
/// The object "host", without copies of videos and added headers.
std::string host_text(const HostSetup& host);
/// The object "ad". Properties that are absent, zero or false are left out.
std::string ad_text(const QoroVideoAd& ad);
/// The list "steps".
std::string steps_text(const std::vector<Step>& steps);

} // namespace qoro
