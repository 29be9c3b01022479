#include "vast/CreativeChoice.h"

#include "vast/Texts.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qoro::vast
{

namespace
{

/// Whether an element <img> shows it.
bool is_picture(const Resource& resource)
{
    constexpr std::array<std::string_view, 7> Types{"",          "image/png",  "image/jpeg",   "image/jpg",
                                                    "image/gif", "image/webp", "image/svg+xml"};
    return resource.kind == Resource::Kind::Static &&
           std::ranges::any_of(Types, [&](std::string_view type) { return equal_names(type, resource.type); });
}

bool can_be_shown(const Resource& resource)
{
    return resource.kind != Resource::Kind::Static || is_picture(resource);
}

/// An XPath without its last step.
std::string_view parent_of(std::string_view path)
{
    return path.substr(0, std::min(path.rfind('/'), path.size()));
}

} // namespace

CompanionChoice choose_companion(const std::vector<Companion>& companions)
{
    constexpr std::array<std::string_view, 3> Preferred{"all", "any", ""};
    CompanionChoice choice;
    for (const std::string_view required : Preferred)
        for (std::size_t n = 0; n < companions.size() && !choice.chosen; ++n) {
            const auto& resources = companions[n].resources;
            const auto shown = std::ranges::find_if(resources, can_be_shown);
            if (shown == resources.end() || (!required.empty() && companions[n].required != required))
                continue;
            choice.chosen = n;
            choice.resource = static_cast<std::size_t>(shown - resources.begin());
        }
    // Of each CompanionAds that requires any, one companion; companions of one have the same path, up to their own
    // step.
    std::size_t required = 0;
    for (std::size_t n = 0; n < companions.size(); ++n) {
        const std::string& demand = companions[n].required.value_or("none");
        const bool is_another = n == 0 || companions[n - 1].required != companions[n].required ||
                                parent_of(companions[n - 1].path) != parent_of(companions[n].path);
        if (demand == "all" || (demand == "any" && is_another))
            ++required;
    }
    const bool shows_one =
        choice.chosen && (companions[*choice.chosen].required == "all" || companions[*choice.chosen].required == "any");
    choice.lacks_required = required > (shows_one ? 1U : 0U);
    return choice;
}

std::vector<Ignored> not_shown(const Ad& ad)
{
    std::vector<Ignored> list;
    const auto choice = choose_companion(ad.companions);
    for (std::size_t n = 0; n < ad.companions.size(); ++n)
        if (n != choice.chosen)
            list.push_back({"Companion",
                            choice.chosen ? "only one companion is shown" : "it has nothing that a page can show",
                            ad.companions[n].path});
    if (!ad.linear)
        return list;
    const Icon* const shown = choose_icon(ad.linear->icons);
    for (const Icon& icon : ad.linear->icons) {
        if (&icon != shown)
            list.push_back(
                {"Icon", picture_of(icon) ? "only one icon is shown" : "only a picture can be shown", ad.path});
        else if (icon.offset.value_or(0) > 0)
            list.push_back({"offset", "the icon is shown from the start", ad.path});
        if (&icon == shown && icon.duration)
            list.push_back({"duration", "the icon is shown with the video's bar", ad.path});
    }
    return list;
}

const Icon* choose_icon(const std::vector<Icon>& icons)
{
    const Icon* chosen = nullptr;
    for (const Icon& icon : icons) {
        if (!picture_of(icon))
            continue;
        if (equal_names(icon.program, "AdChoices"))
            return &icon;
        if (!chosen)
            chosen = &icon;
    }
    return chosen;
}

const Resource* picture_of(const Icon& icon)
{
    const auto picture = std::ranges::find_if(icon.resources, is_picture);
    return picture == icon.resources.end() ? nullptr : &*picture;
}

} // namespace qoro::vast
