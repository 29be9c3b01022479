#pragma once

#include "platform/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class Simulation;

/// A view of the ad that the viewer can touch or read, at one moment.
struct SeenControl {
    /// Name of its field: "btnClose"; of static storage duration.
    std::string_view name;
    /// The rectangle around it on the screen, in points. Screen coordinates are those of the windows: upright.
    CGRect frame;
    /// Clockwise, in quarter turns from 0 to 3: how it lies on the screen.
    int turns = 0;
    /// The part that the viewer can see; absent when it is off screen or covered.
    std::optional<CGRect> visible;
    /// A point at which a touch reaches it; absent without one.
    std::optional<CGPoint> touchable;
    /// Whether it reacts to touches at all.
    bool is_button = false;
    /// Its text; empty without one.
    std::string text;

    bool operator==(const SeenControl&) const = default;
};

/// What the viewer sees and hears at one moment.
struct Sight {
    /// Microseconds since the session's start.
    std::int64_t at = 0;
    /// Whether an ad is open.
    bool open = false;
    /// In the order of the controller's fields; those that do not exist or are hidden are left out.
    std::vector<SeenControl> controls = {};
    /// Whether a touch in the middle of the close button, or of the close guard's, reaches it.
    bool close = false;
    /// Whether a part of the video is visible and has a picture.
    bool video = false;
    /// Whether a part of the page is visible and has content.
    bool page = false;
    /// Whether another screen covers the ad: the in-app browser, the store page or a message.
    bool other_screen = false;
    /// Whether a player plays with sound.
    bool sound = false;

    /// Whether the viewer sees the same.
    bool alike(const Sight& other) const;
};

/// Looks at a session between two of its events.
Sight look_at(Simulation& simulation);

} // namespace qoro
