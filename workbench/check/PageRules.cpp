#include "workbench/check/RuleFunctions.h"

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "workbench/check/CheckedSession.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

/// When an ad sends an event of qoroPlayer for certain.
enum class Sent : std::uint8_t {
    InFullView, ///< In every view of a video to its end.
    WithVideo,  ///< When the viewer does something to a video.
    Otherwise,  ///< Whatever the ad has: the listener itself, the viewer or the close is the occasion.
};

struct PlayerEvent {
    std::string_view name;
    Sent sent;
};

/// The events of qoroPlayer.
constexpr auto PlayerEvents = std::to_array<PlayerEvent>({
    {"video_loading", Sent::InFullView},
    {"video_loaded", Sent::InFullView},
    {"video_play", Sent::InFullView},
    {"video_pause", Sent::WithVideo},
    {"video_ended", Sent::InFullView},
    {"video_timeupdate", Sent::InFullView},
    {"video_volumechange", Sent::WithVideo},
    {"video_orientation", Sent::Otherwise},
    {"video_visibilitychange", Sent::Otherwise},
    {"onclick_closebtn", Sent::Otherwise},
    {"onhide", Sent::Otherwise},
    {"controlschange", Sent::Otherwise},
});

/// The events of mraid: those of MRAID 3.0, and viewableChange of MRAID 2.0.
constexpr auto MraidEvents = std::to_array<std::string_view>(
    {"ready", "error", "stateChange", "viewableChange", "sizeChange", "exposureChange", "audioVolumeChange"});

/// The page of an ad, if its text is known.
std::optional<std::string> page_of(const BaseScenario& base)
{
    const auto address = base.scenario.string("/ad/strWebViewUrl");
    if (!address)
        return std::nullopt;
    return base.scenario.string(path_under(path_under("/net", *address), "body"));
}

std::string without_blanks(std::string_view text)
{
    std::string compact;
    std::ranges::copy_if(text, std::back_inserter(compact),
                         [](char c) { return std::isspace(static_cast<unsigned char>(c)) == 0; });
    return compact;
}

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

/// Whether a page loads scripts whose text is not known.
bool loads_other_scripts(std::string_view page)
{
    for (std::size_t at = page.find("<script"); at != std::string_view::npos; at = page.find("<script", at + 1)) {
        const std::string_view tag = page.substr(at, page.find('>', at) - at);
        if (contains(tag, "src") && !contains(tag, "mraid.js"))
            return true;
    }
    return false;
}

/// Names of the events that a page listens to, each once.
/// @param object "qoroPlayer" or "mraid"
std::vector<std::string> events_in(std::string_view page, std::string_view object)
{
    const std::string compact = without_blanks(page);
    const std::string call = std::string(object) + ".addEventListener(";
    std::vector<std::string> names;
    for (std::size_t at = compact.find(call); at != std::string::npos; at = compact.find(call, at + 1)) {
        const std::size_t from = at + call.size();
        if (from >= compact.size() || !contains("\"'`", std::string_view(&compact[from], 1)))
            continue;
        const std::size_t end = compact.find(compact[from], from + 1);
        std::string name = end == std::string::npos ? "" : compact.substr(from + 1, end - from - 1);
        if (!name.empty() && std::ranges::find(names, name) == names.end())
            names.push_back(std::move(name));
    }
    return names;
}

/// Whether a page can give the ad a video.
bool page_brings_video(std::string_view page)
{
    return contains(page, "playNextVideo") || loads_other_scripts(page);
}

/// When an event was first sent to the page, in seconds; absent if never.
std::optional<double> first_sent(const CheckedSession& session, std::string_view event)
{
    const auto line = std::ranges::find_if(
        session.lines(), [&](const CheckedLine& each) { return each.what == "js" && each.event == event; });
    return line == session.lines().end() ? std::nullopt : std::optional(in_seconds(line->at));
}

/// Whether the video played to its end; a video that fails has an end, too.
bool has_full_view(const CheckedSession& session)
{
    const auto played = first_sent(session, "video_play");
    const auto ended = first_sent(session, "video_ended");
    return played && ended && *ended - *played >= session.scenario().world.video.duration - 0.001;
}

} // namespace

bool page_can_close(std::string_view page)
{
    return contains(page, "mraid.close") || contains(page, "mraid.unload") || contains(page, "MRAIDClose") ||
           loads_other_scripts(page);
}

bool page_draws_close_control(std::string_view page)
{
    return contains(without_blanks(page), "seCustomClose(true");
}

bool page_listens_to_close_button(std::string_view page)
{
    return std::ranges::count(events_in(page, "qoroPlayer"), "onclick_closebtn") > 0;
}

std::vector<Suspicion> page_without_library(const BaseScenario& base)
{
    const auto page = page_of(base);
    if (!page)
        return {};
    const bool names_library = contains(*page, "mraid.js");
    if (names_library && !contains(*page, "<head>"))
        return {
            {.sentence = "the page names mraid.js but has no <head>, so it does not load", .path = "/strWebViewUrl"}};
    if (!names_library && (contains(*page, "qoroPlayer.") || contains(*page, "mraid.")))
        return {{.sentence = "the page uses the script library but does not name mraid.js, so it does not receive it",
                 .path = "/strWebViewUrl"}};
    return {};
}

std::vector<Suspicion> page_listens_in_vain(const BaseScenario& base)
{
    std::vector<Suspicion> suspicions;
    const auto page = page_of(base);
    if (!page)
        return suspicions;
    const auto suspect = [&](const std::string& name, const std::string& source) {
        suspicions.push_back({.sentence = "the page listens to \"" + name + "\", which is no event of " + source,
                              .path = "/strWebViewUrl",
                              .key = name});
    };
    for (const std::string& name : events_in(*page, "qoroPlayer"))
        if (std::ranges::find(PlayerEvents, name, &PlayerEvent::name) == PlayerEvents.end())
            suspect(name, "the player");
    for (const std::string& name : events_in(*page, "mraid"))
        if (std::ranges::find(MraidEvents, name) == MraidEvents.end())
            suspect(name, "mraid");
    return suspicions;
}

std::vector<Suspicion> event_never_sent(const CheckedSession& session)
{
    const auto page = session.page();
    const auto& lines = session.lines();
    if (!page || !session.ad() || !session.opened() || page_brings_video(*page))
        return {};
    const bool has_video = session.ad()->strVideoUrl.length() > 0;
    const double watched = in_seconds(session.record().end) - *session.opened();
    if (has_video ? !has_full_view(session) : watched < session.course().policy_seconds)
        return {};
    std::vector<Suspicion> suspicions;
    for (const std::string& name : events_in(*page, "qoroPlayer")) {
        const auto event = std::ranges::find(PlayerEvents, name, &PlayerEvent::name);
        const bool is_due = event != PlayerEvents.end() &&
                            (event->sent == Sent::InFullView || (event->sent == Sent::WithVideo && !has_video));
        if (is_due && !first_sent(session, name))
            suspicions.push_back({.sentence = "the page listens to \"" + name + "\", which this ad never sends",
                                  .path = "/strWebViewUrl",
                                  .key = name,
                                  .at = lines.back().at});
    }
    return suspicions;
}

} // namespace qoro
