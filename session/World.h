#pragma once

#include "platform/Geometry.h"
#include "platform/Ports.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// What an address answers.
struct NetAnswer {
    bool ok = true;
    /// In words, when not ok.
    std::string error;
    std::string body;
    /// Seconds until it arrives.
    double after = 0;
};

/// What the device is and how it is held when the session begins.
struct DeviceSetup {
    DeviceFacts facts;
    /// UIDeviceOrientation, 0 to 6.
    int orientation = 1;
    /// UIInterfaceOrientation, 1 to 4.
    int status_bar_orientation = 1;
    bool status_bar_hidden = false;
    /// 0 to 1.
    float output_volume = 0.6F;
    bool volume_slider = true;
    /// Addresses that begin so can be opened.
    std::vector<std::string> can_open{"http:", "https:", "tel:"};
    /// Whether there is a calendar that takes events.
    bool calendar = true;
};

/// A lack of data, once a player.
struct Stall {
    /// Seconds of media time.
    double at = 0;
    /// Seconds that it lasts.
    double lasts = 0;
};

/// How a simulated player behaves.
struct VideoSetup {
    /// The player does nothing by itself; its news are steps.
    bool manual = false;
    /// Seconds, more than 0.
    double duration = 30;
    /// Seconds from the player's making until it can be played.
    double load_after = 0.3;
    std::vector<Stall> stalls;
    /// Seconds of media time at which playback fails once a player: a play after that goes on. Absent for never.
    std::optional<double> error;
    /// Seconds of media time at which playback fails for good. Absent for never.
    std::optional<double> error_for_good;
};

/// Everything around a simulated session that answers: the device, the network, the text metrics, the cache, the video.
struct World {
    DeviceSetup device;
    VideoSetup video;
    /// By address; one that is not named answers with success and no body.
    std::map<std::string, NetAnswer, std::less<>> net;
    /// Measured sizes by text, whatever the font.
    std::map<std::string, CGSize, std::less<>> text;
    /// Paths of local copies by address.
    std::map<std::string, std::string, std::less<>> cached;
};

} // namespace qoro
