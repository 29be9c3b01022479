#pragma once

#include "vast/Resolver.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// A VAST ad as the controller shows it: an ad description and a page. docs/vast.md has the mapping.

namespace qoro::vast
{

/// The companion that becomes the page.
struct CompanionChoice {
    /// Index of the companion; absent when none can be shown.
    std::optional<std::size_t> chosen;
    /// Index of its resource.
    std::size_t resource = 0;
    /// Whether a companion must be shown that cannot be (VAST 4.3, section 3.16, "required").
    bool lacks_required = false;
};

/// Chooses the first companion with a picture, an HTML or a frame resource that a page can show. Only one companion is
/// shown, so of several that are all required, one is lacking.
CompanionChoice choose_companion(const std::vector<Companion>& companions);

/// The icon that becomes the brand icon: AdChoices first, else the first; only one with a picture. Null without one.
const Icon* choose_icon(const std::vector<Icon>& icons);
/// The picture of an icon; null without one.
const Resource* picture_of(const Icon& icon);

/// Texts and addresses that a description needs beyond the VAST document.
struct Surroundings {
    /// Address of the page.
    std::string page;
    /// Title of the action button and of the end card's button.
    std::string button = "Learn more";
    /// The language of the texts (BCP 47), for the page.
    std::string language = "en";
    /// Whether the ad closes at the video's end, because the pod goes on.
    bool closes_at_end = false;
};

/// The ad description as the JSON text of an ad file. Its tracking lists are empty: the kit sends VAST's trackers.
std::string ad_description(const ResolvedAd& ad, const Surroundings& surroundings);

/// The page: the chosen companion, or else an end card with title, advertiser and a button. Clicks pass through
/// mraid.open().
std::string ad_page(const ResolvedAd& ad, const Surroundings& surroundings);

} // namespace qoro::vast
