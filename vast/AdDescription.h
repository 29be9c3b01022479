#pragma once

#include "vast/Resolver.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// A VAST ad as the controller shows it: an ad description and a page. docs/vast.md has the mapping.

namespace qoro::vast
{

/// Replaces each address that the ad shows or opens: the media file's, the companion's, the icon's, and those that
/// clicks lead to. Not those of trackers.
void replace_addresses(ResolvedAd& ad, const std::function<std::string(const std::string&)>& replace);

/// Texts and addresses that a description needs beyond the VAST document.
struct Surroundings {
    /// Address of the page; unused where the companion is a frame, which is a page of its own.
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
/// mraid.open(), also those on links of an HTML companion. The end card as well where the companion is a frame: the
/// ad's page is the frame's document itself, because a page's frames load nothing.
std::string ad_page(const ResolvedAd& ad, const Surroundings& surroundings);

} // namespace qoro::vast
