#include "workbench/check/RuleFunctions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

namespace
{

/// The events of qoroPlayer.
constexpr auto PlayerEvents =
    std::to_array<std::string_view>({"video_loading", "video_loaded", "video_play", "video_pause", "video_ended",
                                     "video_timeupdate", "video_volumechange", "video_orientation",
                                     "video_visibilitychange", "onclick_closebtn", "onhide", "controlschange"});

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

/// Names of the events that a page listens to through qoroPlayer.
std::vector<std::string> player_events_in(std::string_view page)
{
    const std::string compact = without_blanks(page);
    constexpr std::string_view Call = "qoroPlayer.addEventListener(";
    std::vector<std::string> names;
    for (std::size_t at = compact.find(Call); at != std::string::npos; at = compact.find(Call, at + 1)) {
        const std::size_t from = at + Call.size();
        if (from >= compact.size() || !contains("\"'`", std::string_view(&compact[from], 1)))
            continue;
        const std::size_t end = compact.find(compact[from], from + 1);
        if (end != std::string::npos)
            names.push_back(compact.substr(from + 1, end - from - 1));
    }
    return names;
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
    return std::ranges::count(player_events_in(page), "onclick_closebtn") > 0;
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
    for (const std::string& name : player_events_in(*page))
        if (std::ranges::find(PlayerEvents, name) == PlayerEvents.end())
            suspicions.push_back({.sentence = "the page listens to \"" + name + "\", which is no event of the player",
                                  .path = "/strWebViewUrl",
                                  .key = name});
    return suspicions;
}

} // namespace qoro
