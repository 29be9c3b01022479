#include "workbench/report/Ledger.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace qoro
{

namespace
{

std::vector<std::string_view> parts_of(std::string_view kinds)
{
    constexpr std::string_view Between = ", ";
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; end != std::string_view::npos; kinds.remove_prefix(end + Between.size())) {
        end = kinds.find(Between);
        parts.push_back(kinds.substr(0, end));
        if (end == std::string_view::npos)
            break;
    }
    return parts;
}

/// When trackers of one kind were due, in order.
std::vector<std::int64_t> due_times(std::string_view kind, const Summary& summary, const VideoTrack& video)
{
    constexpr std::string_view Progress = "progress ";
    const auto list = [](const std::optional<std::int64_t>& time) {
        return time ? std::vector{*time} : std::vector<std::int64_t>();
    };
    if (kind == "start")
        return list(video.started());
    if (kind == "firstQuartile")
        return video.passed_part(0.25);
    if (kind == "midpoint")
        return video.passed_part(0.5);
    if (kind == "thirdQuartile")
        return video.passed_part(0.75);
    if (kind == "complete")
        return video.ended();
    if (kind == "close")
        return list(summary.closed);
    if (!kind.starts_with(Progress))
        return {};
    const std::string_view number = kind.substr(Progress.size());
    double position = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), position);
    return error == std::errc() && end == number.data() + number.size() ? video.passed(position)
                                                                        : std::vector<std::int64_t>();
}

} // namespace

std::vector<LedgerEntry> ledger_of(const Summary& summary, const VideoTrack& video, bool of_tag)
{
    std::vector<LedgerEntry> entries;
    for (const TrackerSummary& tracker : summary.trackers) {
        std::vector<std::int64_t> due;
        if (!of_tag)
            for (const std::string_view kind : parts_of(tracker.kind))
                std::ranges::copy(due_times(kind, summary, video), std::back_inserter(due));
        std::ranges::sort(due);
        for (const std::int64_t sent : tracker.sent) {
            // The latest that it can be for: what passes once more, as in a replay, is not due again of necessity.
            const auto after = std::ranges::upper_bound(due, sent);
            LedgerEntry entry{tracker.kind, tracker.url, {}, sent};
            if (after != due.begin()) {
                entry.due = *std::prev(after);
                due.erase(due.begin(), after);
            }
            entries.push_back(std::move(entry));
        }
        if (tracker.sent.empty())
            entries.push_back({tracker.kind, tracker.url, due.empty() ? std::nullopt : std::optional(due.front()), {}});
    }
    return entries;
}

} // namespace qoro
