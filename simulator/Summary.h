#pragma once

#include "formats/Scenario.h"
#include "formats/Trace.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// One tracking address of an ad and the times of its requests.
struct TrackerSummary {
    /// Where the ad names it: "start", "progress 8", "pause", "button 1 click", "heartbeat"; comma-separated if in
    /// several places. Of a VAST tag, the event. Empty for an address that the ad did not name at the session's start.
    std::string kind;
    /// As in the ad, with its macros; as sent when the ad does not name it.
    std::string url;
    /// Time of each request, microseconds, in order.
    std::vector<std::int64_t> sent;
};

/// Resources of an ad that should be gone after its close, at one moment.
struct LeftBehind {
    enum class Controller {
        /// The host still retains it.
        Held,
        /// Released by the host; retained by a timer, a request or a window.
        Kept,
        Gone,
    };
    /// Field names of the controller's running timers.
    std::vector<std::string> timers;
    /// The controller's notification registrations.
    std::size_t observers = 0;
    /// Windows besides the host's own.
    std::size_t windows = 0;
    /// Listeners of the page's script.
    std::size_t listeners = 0;
    /// Requests without an answer yet.
    std::size_t requests = 0;
    Controller controller = Controller::Gone;
};

/// The figures of a session. Times are microseconds since the session's start; absent for what did not happen.
struct Summary {
    std::optional<std::int64_t> opened;
    /// When a touch at the middle of the close button would first have hit it.
    std::optional<std::int64_t> close_button;
    /// When the ad was first closed completely; hiding the video is not a close.
    std::optional<std::int64_t> closed;
    /// When the host released the controller.
    std::optional<std::int64_t> released;
    /// When the controller was destroyed.
    std::optional<std::int64_t> destroyed;
    /// Microseconds that a real main thread would have been blocked by synchronous fetches.
    std::int64_t blocked = 0;
    /// First the ad's own trackers, list by list, sent or not; then others in order of their first request.
    std::vector<TrackerSummary> trackers;
    /// At the end of the virtual time at which the ad closed.
    std::optional<LeftBehind> after_close;
    /// After the last step.
    LeftBehind at_end;
};

/// Runs a scenario, writes its trace and returns its summary. The summary does not change the trace.
Summary simulate_and_sum_up(const Scenario& scenario, TraceFormat format, const LineSink& sink,
                            const LogSink& log = {});

/// Appends the summary as an object with one field per figure; times in seconds.
void append_json(std::string& out, const Summary& summary);
/// Appends the summary as readable tables of several lines.
void append_table(std::string& out, const Summary& summary);

} // namespace qoro
