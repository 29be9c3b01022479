#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

/// Seconds without a close button after which it is said never to come. Longer than any sensible countdown.
constexpr double Never = 60;
/// Seconds that a close may take after its button was touched.
constexpr double CloseTakes = 1;
/// A close button may first show the page behind the video, so the first touch need not close the ad.
constexpr std::size_t TouchesToClose = 3;

/// A time in which the viewer cannot close the ad.
struct Wait {
    /// Microseconds since the session's start.
    std::int64_t from = 0;
    double seconds = 0;
    /// Whether it lasts to the end of the session.
    bool to_the_end = false;
    bool from_opening = false;
};

/// Whether the page in front of the video is there to close the ad. One whose text is unknown is trusted.
bool page_closes(const CheckedSession& session, const Sight& sight)
{
    if (!session.ad() || !session.ad()->bIsWebViewInFront || !sight.page)
        return false;
    const auto page = session.page();
    return !page || page_can_close(*page);
}

/// Whether a control can be touched at some time of a span.
bool is_touchable_in(const CheckedSession& session, std::string_view control, const TimeSpan& span)
{
    const std::vector<Sight>& sights = session.record().sights;
    for (std::size_t i = 0; i < sights.size(); ++i)
        if (sights[i].at < span.until && session.end_of(i) > span.from)
            for (const SeenControl& each : sights[i].controls)
                if (each.name == control && each.touchable)
                    return true;
    return false;
}

/// The times in which the viewer is elsewhere, or could go on with a paused video: they do not count as waiting.
std::vector<TimeSpan> times_that_do_not_count(const CheckedSession& session)
{
    std::vector<TimeSpan> spans = absences(session);
    std::optional<std::int64_t> paused;
    const auto end_pause = [&](std::int64_t at) {
        const auto from = std::exchange(paused, std::nullopt);
        if (from && is_touchable_in(session, "btnPlayAndPause", {from.value_or(0), at}))
            spans.push_back({from.value_or(0), at});
    };
    for (const CheckedLine& line : session.lines()) {
        if (line.event == "video_pause" && !paused)
            paused = line.at;
        else if (line.event == "video_play" || line.event == "video_ended")
            end_pause(line.at);
    }
    end_pause(session.record().end);
    return spans;
}

/// Seconds between two times, without those that do not count.
double seconds_of_waiting(std::int64_t from, std::int64_t until, const std::vector<TimeSpan>& others)
{
    std::int64_t waiting = until - from;
    std::int64_t counted = from;
    std::vector<TimeSpan> sorted = others;
    std::ranges::sort(sorted, {}, &TimeSpan::from);
    for (const TimeSpan& span : sorted) {
        const std::int64_t begin = std::max(span.from, counted);
        const std::int64_t end = std::min(span.until, until);
        if (end <= begin)
            continue;
        waiting -= end - begin;
        counted = end;
    }
    return in_seconds(waiting);
}

/// The longest time in which the viewer cannot close the ad.
Wait longest_wait(const CheckedSession& session)
{
    Wait longest;
    const std::vector<Sight>& sights = session.record().sights;
    const std::vector<TimeSpan> others = times_that_do_not_count(session);
    for (std::size_t i = 0; i < sights.size();) {
        const auto closable = [&](const Sight& sight) {
            return !sight.open || sight.close || sight.other_screen || page_closes(session, sight);
        };
        if (closable(sights[i])) {
            ++i;
            continue;
        }
        const std::size_t first = i;
        while (i < sights.size() && !closable(sights[i]))
            ++i;
        const std::int64_t from = sights[first].at;
        const std::int64_t until = i < sights.size() ? sights[i].at : session.record().end;
        const double seconds = seconds_of_waiting(from, until, others);
        if (seconds > longest.seconds)
            longest = {.from = from,
                       .seconds = seconds,
                       .to_the_end = i == sights.size(),
                       .from_opening = from == session.record().summary.opened};
    }
    return longest;
}

std::string deciding_path(const CheckedSession& session)
{
    const QoroVideoAd* ad = session.ad();
    if (!ad)
        return "";
    for (const auto& [decides, path] :
         {std::pair(ad->bIsWebViewInFront, "/bIsWebViewInFront"),
          {ad->bIsEndedCloseBtn, "/bIsEndedCloseBtn"},
          {static_cast<double>(ad->iCloseBtnCountdown) > session.course().policy_seconds, "/iCloseBtnCountdown"},
          {ad->iBufferingSufferTime < 0 || ad->iBufferingSufferTime >= session.course().policy_seconds,
           "/iBufferingSufferTime"}})
        if (decides)
            return path;
    return "";
}

} // namespace

std::vector<Suspicion> close_never(const CheckedSession& session)
{
    const Wait wait = longest_wait(session);
    if (!wait.to_the_end || wait.seconds < std::max(Never, session.course().policy_seconds))
        return {};
    return {{.sentence = in_course(session, wait.from_opening ? "the viewer can never close the ad"
                                                              : "the viewer can no longer close the ad"),
             .path = deciding_path(session),
             .at = wait.from}};
}

std::vector<Suspicion> close_late(const CheckedSession& session)
{
    const Wait wait = longest_wait(session);
    if (wait.to_the_end || wait.seconds <= session.course().policy_seconds)
        return {};
    return {{.sentence = in_course(session, "the viewer cannot close the ad for " + seconds_text(wait.seconds) + " s"),
             .path = deciding_path(session),
             .at = wait.from}};
}

std::vector<Suspicion> close_ignored(const CheckedSession& session)
{
    std::size_t touches = 0;
    std::int64_t last = 0;
    for (const CheckedLine& line : session.lines()) {
        if (line.what != "step" || !line.is_touch || line.button != "btnClose")
            continue;
        const auto seen = std::ranges::find_if(session.record().sights.rbegin(), session.record().sights.rend(),
                                               [&](const Sight& sight) { return sight.at < line.at; });
        if (seen == session.record().sights.rend() || !seen->close)
            continue;
        ++touches;
        last = line.at;
    }
    const bool open = !session.record().sights.empty() && session.record().sights.back().open;
    if (touches < TouchesToClose || !open || in_seconds(session.record().end - last) < CloseTakes)
        return {};
    return {{.sentence = in_course(session, "the close button is touched " + std::to_string(touches) +
                                                " times, and the ad does not close"),
             .path = "/strWebViewUrl",
             .at = last}};
}

} // namespace qoro
