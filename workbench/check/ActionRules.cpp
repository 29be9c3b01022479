#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace qoro
{

namespace
{

constexpr std::array<std::string_view, 2> ActionButtons{"btnActionOne", "btnActionTwo"};
/// Microseconds that a button may take to lead somewhere.
constexpr std::int64_t LeadsWithin = 2'000'000;
/// Microseconds for which a main thread may be blocked unnoticed.
constexpr std::int64_t UnnoticedBlock = 100'000;

/// Whether a line shows that a button has led somewhere.
bool leads_somewhere(const CheckedLine& line)
{
    if (line.what == "openURL" || line.act == "browser.expand")
        return !line.url.empty();
    constexpr std::array<std::string_view, 6> Acts{"sendSms",       "openStore",    "store.create",
                                                   "store.present", "calendar.add", "createCalendarEvent"};
    return (line.what == "kit" || line.what == "super") && std::ranges::find(Acts, line.act) != Acts.end();
}

} // namespace

std::string path_of_button(const CheckedSession& session, std::size_t control)
{
    const auto count = session.ad() ? session.ad()->arrayButtonsInfo.count() : 0;
    return control < count ? "/arrayButtonsInfo/" + std::to_string(control) : std::string("/arrayButtonsInfo");
}

std::vector<Suspicion> button_leads_nowhere(const CheckedSession& session)
{
    std::vector<Suspicion> suspicions;
    const std::vector<CheckedLine>& lines = session.lines();
    for (auto step = lines.begin(); step != lines.end(); ++step) {
        const auto control =
            static_cast<std::size_t>(std::ranges::find(ActionButtons, step->button) - ActionButtons.begin());
        if (step->what != "step" || !step->is_touch || control == ActionButtons.size())
            continue;
        if (session.record().end - step->at < LeadsWithin)
            continue;
        bool leads = false;
        std::string refusal;
        for (auto line = step; line != lines.end() && line->at <= step->at + LeadsWithin; ++line) {
            leads = leads || leads_somewhere(*line);
            if (line->act == "calendar.refused")
                refusal = line->why;
        }
        if (leads && refusal.empty())
            continue;
        suspicions.push_back(
            {.sentence = std::string(control == 0 ? "the first" : "the second") + " action button " +
                         (refusal.empty() ? "leads nowhere" : "creates a calendar event that is refused: " + refusal),
             .path = path_of_button(session, control),
             .key = std::string(step->button),
             .at = step->at});
    }
    return suspicions;
}

std::vector<Suspicion> button_not_shown(const CheckedSession& session)
{
    const QoroVideoAd* ad = session.ad();
    if (!ad || ad->bIsWebViewInFront || !session.opened())
        return {};
    std::array<bool, ActionButtons.size()> shown{};
    std::optional<std::int64_t> played;
    for (const Sight& sight : session.record().sights) {
        if (sight.video && !played)
            played = sight.at;
        for (std::size_t i = 0; i < ActionButtons.size(); ++i)
            shown[i] = shown[i] ||
                       std::ranges::find(sight.controls, ActionButtons[i], &SeenControl::name) != sight.controls.end();
    }
    const std::size_t expected = std::min<std::size_t>(ad->arrayButtonsInfo.count(), ActionButtons.size());
    const auto seen = static_cast<std::size_t>(std::ranges::count(shown, true));
    if (!played || seen >= expected)
        return {};
    return {{.sentence = "only " + std::to_string(seen) + " of " + std::to_string(expected) +
                         " action buttons are shown on a device that can call and send messages",
             .path = "/arrayButtonsInfo",
             .at = played}};
}

std::vector<Suspicion> main_thread_blocked(const CheckedSession& session)
{
    const std::int64_t blocked = session.record().summary.blocked;
    if (blocked <= UnnoticedBlock)
        return {};
    const auto fetch = std::ranges::find_if(
        session.lines(), [](const CheckedLine& line) { return line.what == "fetch" && line.purpose == "brandIcon"; });
    return {{.sentence = "a brand icon that arrives after " + seconds_text(in_seconds(blocked)) +
                         " s blocks the application for as long",
             .path = "/strBrandIconUrl",
             .at = fetch == session.lines().end() ? session.record().summary.opened : fetch->at}};
}

} // namespace qoro
