#pragma once

#include "platform/Export.h"
#include "platform/Geometry.h"
#include "platform/Ports.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace QORO_EXPORT qoro
{

/// The answer to requests for an address.
struct NetAnswer {
    /// Whether the request succeeds.
    bool ok = true;
    /// Error text, when not ok.
    std::string error;
    /// The bytes of the answer.
    std::string body;
    /// Seconds until the answer arrives.
    double after = 0;
};

/// The device and its state at the session's start.
struct DeviceSetup {
    /// The constant properties.
    DeviceFacts facts;
    /// How the device is held.
    UIDeviceOrientation orientation = UIDeviceOrientationPortrait;
    /// Orientation of the interface.
    UIInterfaceOrientation status_bar_orientation = UIInterfaceOrientationPortrait;
    /// Whether the status bar is hidden.
    bool status_bar_hidden = false;
    /// 0 to 1.
    float output_volume = 0.6F;
    /// Whether a volume view has a slider that sets the output volume.
    bool volume_slider = true;
    /// Prefixes of the addresses that can be opened.
    std::vector<std::string> can_open{"http:", "https:", "tel:"};
    /// Whether the device has a calendar that accepts events.
    bool calendar = true;
};

/// A buffering stall; occurs once per player.
struct Stall {
    /// Media time, seconds.
    double at = 0;
    /// Duration, seconds.
    double lasts = 0;
};

/// Behaviour of a simulated player.
struct VideoSetup {
    /// Players act only on steps ("player" news).
    bool manual = false;
    /// Seconds, greater than 0.
    double duration = 30;
    /// Seconds from the player's creation until it is playable.
    double load_after = 0.3;
    /// In any order.
    std::vector<Stall> stalls;
    /// Media time in seconds at which playback fails, once per player; the next play() continues. Absent for never.
    std::optional<double> error;
    /// Media time in seconds at which playback fails permanently; at 0 the video never becomes playable. Absent for
    /// never.
    std::optional<double> error_for_good;
};

/// The surroundings of a simulated session: device, network, text metrics, video cache and video.
struct World {
    /// The device at the session's start.
    DeviceSetup device;
    /// Behaviour of the players of the session, but for those of videos.
    VideoSetup video;
    /// Behaviour of players by the address of their video.
    std::map<std::string, VideoSetup, std::less<>> videos;
    /// Answers by address; an unnamed address answers with success and an empty body.
    std::map<std::string, NetAnswer, std::less<>> net;
    /// Measured sizes by text, for every font.
    std::map<std::string, CGSize, std::less<>> text;
    /// Paths of cached videos by address.
    std::map<std::string, std::string, std::less<>> cached;
};

} // namespace qoro
