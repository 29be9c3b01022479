#pragma once

#include "simulator/Summary.h"
#include "workbench/report/VideoTrack.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// One request of a tracker, or one that was due and not sent. Times are microseconds since the session's start.
struct LedgerEntry {
    /// As TrackerSummary::kind.
    std::string kind;
    /// As TrackerSummary::url.
    std::string url;
    /// When the video passed the tracker's position, or the ad closed. Absent for a tracker of what the viewer does, of
    /// a heartbeat, and of a VAST tag.
    std::optional<std::int64_t> due = {};
    /// Absent if it was not sent.
    std::optional<std::int64_t> sent = {};
};

/// Tracker by tracker, in the order of the summary; then by time. A tracker that was neither due nor sent has one
/// entry.
/// @param of_tag whether the trackers are a VAST tag's, which may be of several ads
std::vector<LedgerEntry> ledger_of(const Summary& summary, const VideoTrack& video, bool of_tag);

} // namespace qoro
