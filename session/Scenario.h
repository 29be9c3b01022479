#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "session/Host.h"
#include "session/Steps.h"
#include "session/World.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// One whole ad session as a file describes it.
struct Scenario {
    World world;
    HostSetup host = unguarded_host();
    /// As it was read; a session runs on a copy, since it changes its ad.
    std::shared_ptr<const QoroVideoAd> ad;
    std::vector<Step> steps;
};

/// Reads a scenario. Everything but "ad" and "steps" may be left out; an unknown key is an error.
/// @param file what to call it in an error
/// @throws InputError
Scenario read_scenario(std::string_view text, const std::string& file);

/// What stands around an ad on a machine: the "device" and "host" objects of a scenario, both of which may be left out.
struct Surroundings {
    DeviceSetup device;
    HostSetup host;
    /// Paths of local copies by address.
    std::map<std::string, std::string, std::less<>> cached;
};

/// @throws InputError
Surroundings read_surroundings(std::string_view text, const std::string& file);

/// A copy that a session may change without the other being changed.
std::shared_ptr<QoroVideoAd> copy_of(const QoroVideoAd& ad);

} // namespace qoro
