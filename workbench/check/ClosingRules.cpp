#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"

#include <algorithm>
#include <cstddef>

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

/// From when on the session no longer shows what the ad alone does: the viewer, the system or the host has paused it.
std::int64_t end_of_passive_viewing(const CheckedSession& session)
{
    for (const CheckedLine& line : session.lines())
        if (line.what == "step" && line.is_touch && line.button != "btnClose" && line.position.value_or(0) > 0)
            return line.at;
    return session.record().end;
}

/// Seconds between two times in which the viewer is in the application.
double seconds_inside(const CheckedSession& session, std::int64_t from, std::int64_t until)
{
    double inside = 0;
    bool away = false;
    std::int64_t since = from;
    for (const CheckedLine& line : session.lines()) {
        if (line.what != "step" || line.app.empty() || line.at > until)
            continue;
        const std::int64_t at = std::max(line.at, from);
        if (!away)
            inside += in_seconds(at - since);
        since = at;
        away = line.app == "background";
    }
    return away ? inside : inside + in_seconds(until - since);
}

/// The longest time in which the viewer cannot close the ad.
Wait longest_wait(const CheckedSession& session)
{
    Wait longest;
    const std::vector<Sight>& sights = session.record().sights;
    const std::int64_t end = end_of_passive_viewing(session);
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
        const std::int64_t until = std::min(i < sights.size() ? sights[i].at : session.record().end, end);
        const double seconds = until > from ? seconds_inside(session, from, until) : 0;
        if (seconds > longest.seconds)
            longest = {.seconds = seconds,
                       .to_the_end = i == sights.size() && until == session.record().end,
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
             .path = deciding_path(session)}};
}

std::vector<Suspicion> close_late(const CheckedSession& session)
{
    const Wait wait = longest_wait(session);
    if (wait.to_the_end || wait.seconds <= session.course().policy_seconds)
        return {};
    return {{.sentence = in_course(session, "the viewer cannot close the ad for " + seconds_text(wait.seconds) + " s"),
             .path = deciding_path(session)}};
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
             .path = "/strWebViewUrl"}};
}

} // namespace qoro
