#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// Who or what ended an ad.
enum class AdEnd {
    /// The viewer, by the ad's close button or by leaving its store page.
    Viewer,
    /// The page's script.
    Page,
    /// The ad, as its video came to the end (bIsAutoClose).
    Video,
    /// The host (OpenedAd::close).
    Host,
    /// Nothing was ever shown.
    Failed,
};

/// "closed by the viewer", "failed", …
std::string_view words_for(AdEnd end);

/// What became of one video.
struct PlayedVideo {
    /// As the ad or its page names it, or the path of its local copy.
    std::string address;
    /// Seconds; absent when it never became known.
    std::optional<double> duration;
    /// Seconds of it that ran before the viewer, repeats counted again, what was skipped left out.
    double played = 0;
    /// Whether it came to its end, at least once.
    bool reached_end = false;
    /// Why it failed last, in the player's words, empty where the player has none; absent when it did not fail. A video
    /// that has failed may still have gone on.
    std::optional<std::string> error;
};

/// How an ad ended.
struct AdOutcome {
    AdEnd end{};
    /// Why nothing was shown, one line; absent when something was.
    std::optional<std::string> error;
    /// Seconds from the opening to the end.
    double lasted = 0;
    /// In the order in which they were shown: the ad's own, then those that the page or a replay brought. A video that
    /// is loaded anew counts as another one.
    std::vector<PlayedVideo> videos;
    /// Why the page is not there, or not any more; absent for one that is, and for an ad without a page.
    std::optional<std::string> page_error;
    /// How often a touch led the viewer elsewhere: to a page, a program, a message, a store, a calendar entry.
    std::size_t click_throughs = 0;
    /// How often the ad sent the viewer out of the app.
    std::size_t departures = 0;
    /// Whether the kit was asked to count the impression.
    bool impression_sent = false;
};

} // namespace qoro
