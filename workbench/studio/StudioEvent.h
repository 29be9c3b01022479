#pragma once

#include "platform/Geometry.h"
#include "platform/Orientation.h"

#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// Something that happens in a session of the studio, as one item of its time axis.
struct StudioEvent {
    enum class Kind {
        Step,       ///< A step as a scenario has it.
        Touch,      ///< The viewer taps a point.
        Turn,       ///< The viewer turns the device.
        Stall,      ///< The video gets no data for a time, or no more.
        VideoFails, ///< The video fails for good.
        Servers,    ///< A server fails for a time, or for good.
        Call,       ///< A call interrupts the sound for a time.
        Leave,      ///< The viewer leaves the application for a time.
        Volume,     ///< The viewer sets the volume.
    };

    /// A step of the resulting scenario.
    struct Step {
        /// Seconds since the session's start.
        double at = 0;
        std::string key;
        /// Its value: a JSON text.
        std::string json;
    };

    /// Positive for what was added, negative for a step of the ad's own course.
    int id = 0;
    Kind kind = Kind::Step;
    /// Seconds since the session's start.
    double at = 0;
    /// How long a stall, a failing server, a call and an absence last. 0: for good, where that is possible.
    double seconds = 0;
    /// Of a touch: in points of the upright screen.
    CGPoint point = {};
    /// What a touch hits, for people; may be empty.
    std::string label = {};
    /// Of a turn.
    UIDeviceOrientation orientation = UIDeviceOrientationPortrait;
    /// The server that fails: "https://ads.example"; "*" for all.
    std::string server = "*";
    /// 0 to 1.
    double volume = 0;
    /// Of a step.
    Step step = {};

    /// The steps of a scenario, in order of time.
    std::vector<Step> steps() const;
};

/// "step", "touch", "turn", "stall", "videoFails", "servers", "call", "leave" or "volume".
std::string_view name_of(StudioEvent::Kind kind);

} // namespace qoro
