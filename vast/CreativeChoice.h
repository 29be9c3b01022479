#pragma once

#include "vast/Model.h"

#include <cstddef>
#include <optional>
#include <vector>

// Which companion and which icon of an ad are shown.

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

/// Chooses the first companion with a picture, an HTML or a frame resource that a page can show, of those that are
/// required, if there are any. Only one companion is shown, so of several that are all required, one is lacking; and so
/// is the companion of a second CompanionAds that requires any.
CompanionChoice choose_companion(const std::vector<Companion>& companions);

/// The icon that becomes the brand icon: AdChoices first, else the first; only one with a picture. Null without one.
const Icon* choose_icon(const std::vector<Icon>& icons);
/// The picture of an icon; null without one.
const Resource* picture_of(const Icon& icon);

/// What of an ad is not shown, or not as the document demands, because the page shows one companion, and the bar one
/// icon for as long as the bar is shown.
std::vector<Ignored> not_shown(const Ad& ad);

} // namespace qoro::vast
