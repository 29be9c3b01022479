#pragma once

#include "platform/EventTable.h"
#include "platform/Export.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace QORO_EXPORT qoro
{

/// Why the ad requests an address.
enum class RequestPurpose {
    /// A tracker.
    Tracking,
    /// A tracker that a timer sends at an interval chosen by the ad.
    Heartbeat,
    /// The creative's page.
    Page,
};

/// Why the ad fetches a picture.
enum class FetchPurpose { BrandIcon, HiddenImage, ButtonImage };

/// Who closed an ad.
enum class ClosedBy {
    /// With the ad's close button or the close guard's, or by leaving the store page.
    Viewer,
    /// The page's script.
    Page,
    /// The end of the video (bIsAutoClose).
    Video,
    /// The host application.
    Host,
};

/// A trace does not distinguish heartbeats from other trackers.
inline Field::Content field_content(RequestPurpose purpose)
{
    return std::string_view(purpose == RequestPurpose::Page ? "page" : "tracking");
}

/// The name of the purpose, such as "brandIcon".
inline Field::Content field_content(FetchPurpose purpose)
{
    constexpr std::array<std::string_view, 3> Names{"brandIcon", "hiddenImage", "buttonImage"};
    return Names[static_cast<std::size_t>(purpose)];
}

} // namespace qoro
