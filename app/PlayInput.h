#pragma once

#include "app/PlayOptions.h"
#include "desktop/DesktopPlatform.h"
#include "formats/Scenario.h"
#include "host/OpenedTag.h"
#include "platform/SafeArea.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// The input of `qoro-ad play`, read and checked before any window opens.
struct PlayInput {
    /// Null with a tag.
    std::shared_ptr<QoroVideoAd> ad;
    /// The VAST tag that leads to the ad; absent for an ad file.
    std::optional<OpenedTag::Tag> tag;
    /// Base folder of the ad's relative addresses; empty with a tag.
    std::string folder;
    /// Width of the screen in pixels, which decides which media file of a tag plays.
    double band_pixels = 0;
    DesktopPlatform::Options platform;
    HostSetup host;
    /// What the ad contains without effect, and the files that it lacks; a line each.
    /// @{
    std::vector<std::string> remarks;
    std::vector<std::string> missing_files;
    /// @}
    /// Files of the host's own copies of videos, by address. A relative address is relative to the ad's folder.
    std::map<std::string, std::string> copies;
    /// What the host adds to the ad's requests.
    std::vector<OriginHeaders> origins;
    /// How the device is held when the ad opens.
    UIDeviceOrientation orientation = UIDeviceOrientationPortrait;
    std::vector<Step> steps;
    /// Insets to mark in portrait and in landscape; zero: none.
    /// @{
    SafeAreaInsets portrait_insets;
    SafeAreaInsets landscape_insets;
    /// @}
};

/// Reads and checks all files that the options name.
/// @throws InputError
PlayInput read_play_input(const PlayOptions& options);

} // namespace qoro
