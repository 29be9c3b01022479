#pragma once

#include "platform/Export.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QORO_EXPORT qoro
{

/// Why an ad ended.
enum class AdEnd {
    /// The viewer used the ad's close button or the close guard's, or left the store page; or the host closed the ad on
    /// the viewer's behalf (OpenedAd::close with ClosedBy::Viewer).
    Viewer,
    /// The page's script closed it.
    Page,
    /// The video ended (bIsAutoClose).
    Video,
    /// The host closed it (OpenedAd::close).
    Host,
    /// Nothing was ever shown; or nothing of any video was played, and the ad closed because of that
    /// (HostSetup::close_when_video_fails).
    Failed,
};

/// A phrase for a report: "closed by the viewer", "not shown", … Not translated; lives as long as the program.
std::string_view words_for(AdEnd end);

/// Playback of one video.
struct PlayedVideo {
    /// As the ad or its page names it, or the path of the cached copy.
    std::string address;
    /// Seconds; absent when never known.
    std::optional<double> duration;
    /// Seconds of media played. Repeats count again; skipped parts do not.
    double played = 0;
    /// Whether playback reached the end at least once.
    bool reached_end = false;
    /// The last playback error as the player reports it, empty if it gives no text; absent if playback never failed.
    /// Playback may have continued after an error.
    std::optional<std::string> error;
};

/// How an ad ended.
struct AdOutcome {
    /// Why the ad ended.
    AdEnd end{};
    /// Why nothing was shown or played, one line; present for AdEnd::Failed alone.
    std::optional<std::string> error;
    /// Seconds from opening to end.
    double lasted = 0;
    /// In the order shown: the ad's own video, then those loaded by the page or by a replay. Each load is a separate
    /// entry.
    std::vector<PlayedVideo> videos;
    /// Why the page failed to load, or stopped; absent when it has not failed, and for an ad without a page.
    std::optional<std::string> page_error;
    /// Number of touches that led to a page, a program, a message, a store or a calendar entry.
    std::size_t click_throughs = 0;
    /// Number of times the ad sent the viewer out of the app.
    std::size_t departures = 0;
    /// Whether the impression was reported to the kit.
    bool impression_sent = false;
};

} // namespace qoro
