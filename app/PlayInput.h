#pragma once

#include "app/PlayOptions.h"
#include "desktop/DesktopPlatform.h"
#include "session/Scenario.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qoro
{

/// Everything that `qoro-ad play` needs to know, read and checked before any window opens.
struct PlayInput {
    std::shared_ptr<QoroVideoAd> ad;
    /// What the ad's relative addresses are relative to.
    std::string folder;
    DesktopPlatform::Options platform;
    HostSetup host;
    /// Files of the host's own copies of videos, by address; a relative one is of the ad's folder.
    std::map<std::string, std::string> copies;
    /// UIDeviceOrientation: how the device is held when the ad opens.
    int orientation = 1;
    std::vector<Step> steps;
};

/// @throws InputError
PlayInput read_play_input(const PlayOptions& options);

} // namespace qoro
