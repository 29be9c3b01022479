#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "formats/HostSetup.h"
#include "formats/Steps.h"
#include "formats/World.h"
#include "kit/OriginHeaders.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// An ad session as a file describes it.
struct Scenario {
    World world;
    HostSetup host = unguarded_host();
    /// As read; null with a tag. A session changes its ad, so it runs on a copy.
    std::shared_ptr<const QoroVideoAd> ad;
    /// Address of the VAST tag that leads to the ad; empty when ad is given.
    std::string tag;
    std::vector<Step> steps;
};

/// Reads a scenario. Only "ad" and "steps" are required; an unknown key is an error.
/// @param file name for error messages
/// @throws InputError
Scenario read_scenario(std::string_view text, const std::string& file);

/// The ad's surroundings on a machine: the optional "device" and "host" objects of a scenario.
struct Surroundings {
    DeviceSetup device;
    HostSetup host;
    /// Paths of cached videos by address.
    std::map<std::string, std::string, std::less<>> cached;
    /// What the host adds to requests; a simulated session sends none.
    std::vector<OriginHeaders> origins = {};
};

/// Reads a JSON object with the keys "device" and "host".
/// @throws InputError
Surroundings read_surroundings(std::string_view text, const std::string& file);

} // namespace qoro
