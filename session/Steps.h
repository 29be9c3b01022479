#pragma once

#include "platform/Geometry.h"
#include "platform/Ports.h"
#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qoro
{

/// News of the movie player. What is named is set, then posted: the load state, the playback state, the finish.
struct PlayerNews {
    /// Seconds.
    std::optional<double> time;
    /// Seconds.
    std::optional<double> duration;
    std::optional<int> load;
    std::optional<int> state;
    /// MPMovieFinishReason
    std::optional<int> finish;
};

/// What changes about the device.
struct DeviceChange {
    /// UIDeviceOrientation
    std::optional<int> orientation;
    /// UIInterfaceOrientation
    std::optional<int> status_bar_orientation;
    std::optional<bool> status_bar_hidden;
    /// 0 to 1.
    std::optional<float> output_volume;
};

// What a step does.

/// The ad is opened at a vertical position, in points.
struct OpenStep {
    float y = 0;
};
/// A touch up inside a button of the controller, by the name of its field.
struct TapStep {
    std::string button;
};
/// A touch and release at a point of the screen.
struct TouchStep {
    CGPoint point;
};
/// The creative's script gives a command.
struct ScriptStep {
    ScriptMessage message;
};
struct PlayerStep {
    PlayerNews news;
};
/// What goes wrong with the creative's page.
enum class PageFault { Dies, Hangs };
struct PageStep {
    PageFault fault;
};
struct DeviceStep {
    DeviceChange change;
};
/// The user leaves the app, comes back to it, or has it active again.
struct AppStep {
    enum class Event { Background, Foreground, Active } event;
};
/// An audio interruption, with its type.
struct InterruptStep {
    int type = 0;
};
/// The host or the kit calls an operation of the controller.
struct CallStep {
    std::string operation;
    NSArray arguments;
};
struct SnapshotStep {
};
/// The host lets the controller go.
struct ReleaseStep {
};

struct Step {
    /// Seconds since the session's start.
    double at = 0;
    std::variant<OpenStep, TapStep, TouchStep, ScriptStep, PlayerStep, PageStep, DeviceStep, AppStep, InterruptStep,
                 CallStep, SnapshotStep, ReleaseStep>
        what;
    /// The step's own key and its value, as they were written.
    std::string key;
    Value value;
};

/// Reads a list of steps.
/// @param json the text of a JSON list
/// @param file what to call it in an error
/// @param simulated whether steps may bring a player its news and break a page: no where both are real
/// @throws InputError
std::vector<Step> read_steps(std::string_view json, const std::string& file, bool simulated);

} // namespace qoro
