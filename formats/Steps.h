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

/// News of the movie player. Time and duration are set first; then load state, playback state and finish are each set
/// and posted, in this order.
struct PlayerNews {
    /// Seconds.
    std::optional<double> time;
    /// Seconds.
    std::optional<double> duration;
    std::optional<MPMovieLoadState> load;
    std::optional<MPMoviePlaybackState> state;
    std::optional<MPMovieFinishReason> finish;
    /// Seconds for which playback gets no data, from now; infinity for ever. No effect unless the player plays, and in
    /// manual mode.
    std::optional<double> stall = {};
    /// Playback fails now and with every later play(); without effect in manual mode.
    bool broken = false;
};

/// Changes of the device; absent values stay as they are.
struct DeviceChange {
    std::optional<UIDeviceOrientation> orientation;
    std::optional<UIInterfaceOrientation> status_bar_orientation;
    std::optional<bool> status_bar_hidden;
    /// 0 to 1.
    std::optional<float> output_volume;
};

// What a step does.

/// Opens the ad at a vertical position, in points.
struct OpenStep {
    float y = 0;
};
/// A touch up inside a button of the controller, named by its field.
struct TapStep {
    std::string button;
};
/// A touch and release.
struct TouchStep {
    /// Where, in points of the screen.
    CGPoint point = {};
    /// CSS selector of the page's element whose centre is touched instead, where pages are real; empty for the point.
    std::string selector = {};
};
/// A command of the creative's script.
struct ScriptStep {
    ScriptMessage message;
};
/// News that a simulated player receives; not available where players are real.
struct PlayerStep {
    PlayerNews news;
};
/// A fault of the creative's page.
enum class PageFault { Dies, Hangs };
/// A fault of a simulated page; not available where pages are real.
struct PageStep {
    PageFault fault;
};
/// Servers that fail from now on, or answer again; not available where servers are real.
struct ServersStep {
    struct Change {
        /// "https://ads.example", or "*" for every server.
        std::string server;
        /// Why its requests fail; absent: it answers again.
        std::optional<std::string> failure;
    };
    std::vector<Change> changes;
};
/// A change of the device.
struct DeviceStep {
    DeviceChange change;
};
/// The user leaves the app or returns to it, or the app becomes active again.
struct AppStep {
    enum class Event { Background, Foreground, Active } event;
};
/// An audio interruption and its type.
struct InterruptStep {
    AVAudioSessionInterruptionType type{};
};
/// The host or the kit calls an operation of the controller.
struct CallStep {
    std::string operation;
    NSArray arguments;
};
/// Reports a snapshot of the controller (emit_snapshot).
struct SnapshotStep {
};
/// The host releases the controller.
struct ReleaseStep {
};

/// One step of a session.
struct Step {
    /// Seconds since the session's start.
    double at = 0;
    std::variant<OpenStep, TapStep, TouchStep, ScriptStep, PlayerStep, PageStep, ServersStep, DeviceStep, AppStep,
                 InterruptStep, CallStep, SnapshotStep, ReleaseStep>
        what;
    /// The step's own key and its value, as written in the file.
    std::string key;
    Value value;
};

/// Reads a list of steps.
/// @param json text of a JSON list
/// @param file name for error messages
/// @param simulated whether players and pages are simulated; if not, steps must not deliver player news or break a page
/// @throws InputError
std::vector<Step> read_steps(std::string_view json, const std::string& file, bool simulated);

} // namespace qoro
