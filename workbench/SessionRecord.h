#pragma once

#include "formats/Scenario.h"
#include "simulator/Summary.h"
#include "workbench/Sight.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

class Simulation;

/// A line of a session's trace.
struct RecordedLine {
    /// Microseconds since the session's start.
    std::int64_t at = 0;
    /// Position of the ad's player in seconds; absent without a player.
    std::optional<double> position = {};
    /// The JSON object, without a line break.
    std::string json;
};

/// A whole session: what left the controller, and what the viewer saw.
struct SessionRecord {
    std::vector<RecordedLine> lines;
    /// One for each moment at which what the viewer sees has changed, in order of time.
    std::vector<Sight> sights;
    Summary summary;
    /// Microseconds: when the last step was performed.
    std::int64_t end = 0;
};

/// Simulates a session and records it. Looking does not change the session: the trace is that of simulate().
/// @param at_change called between two events, at each moment at which something happened or a view has changed, and at
///        the end; may be empty
SessionRecord record_session(const Scenario& scenario, const std::function<void(Simulation&)>& at_change = {});

} // namespace qoro
