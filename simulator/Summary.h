#pragma once

#include "session/Scenario.h"
#include "session/Trace.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// One tracking address of an ad, and when it was asked for.
struct TrackerSummary {
    /// Where the ad names it: "start", "progress 8", "pause", "button 1 click", "heartbeat"; several with commas
    /// between. Empty for an address that the ad did not name when the session began.
    std::string kind;
    /// As the ad has it, with its macros; as it was sent when the ad does not name it.
    std::string url;
    /// Microseconds, each time that it was sent, in order.
    std::vector<std::int64_t> sent;
};

/// What there is of an ad at one moment that a closed ad should not leave.
struct LeftBehind {
    enum class Controller {
        /// The host has not let it go yet.
        Held,
        /// The host has let it go; a timer, a request or a window keeps it.
        Kept,
        Gone,
    };
    /// The controller's timers that run, by their fields' names.
    std::vector<std::string> timers;
    /// Its registrations for notifications.
    std::size_t observers = 0;
    /// Windows beside the host's own.
    std::size_t windows = 0;
    /// Listeners of the page's script.
    std::size_t listeners = 0;
    /// Requests without an answer yet.
    std::size_t requests = 0;
    Controller controller = Controller::Gone;
};

/// A session in figures. Moments are microseconds since the session's start; absent for what did not happen.
struct Summary {
    std::optional<std::int64_t> opened;
    /// When a finger on the middle of the close button would first have reached it.
    std::optional<std::int64_t> close_button;
    /// When the ad was first closed to the end; hiding the video is no close.
    std::optional<std::int64_t> closed;
    /// When the host let the controller go.
    std::optional<std::int64_t> released;
    /// When the controller was destroyed.
    std::optional<std::int64_t> destroyed;
    /// Microseconds that a real main thread would have waited for synchronous fetches.
    std::int64_t blocked = 0;
    /// The ad's own, list by list, sent or not; then the others in the order of their first sending.
    std::vector<TrackerSummary> trackers;
    /// At the end of the moment at which the ad closed.
    std::optional<LeftBehind> after_close;
    /// After the last step.
    LeftBehind at_end;
};

/// Runs a scenario, writes its trace, and sums it up. The trace is the same as without the summary.
Summary simulate_and_sum_up(const Scenario& scenario, TraceFormat format, const LineSink& sink);

/// As an object with a named field for each figure; moments in seconds.
void append_json(std::string& out, const Summary& summary);
/// As tables for people, several lines.
void append_table(std::string& out, const Summary& summary);

} // namespace qoro
