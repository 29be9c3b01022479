#pragma once

#include "platform/EventTable.h"
#include "platform/Export.h"
#include "platform/Purposes.h"

#include <cstdint>
#include <optional>

// Events of VAST tags; a part of platform/Events.h.

namespace QORO_EXPORT qoro
{

namespace event
{

/// A tracker of a VAST ad is sent.
struct VastTracked {
    EventText url;          ///< The address, its macros replaced.
    RequestPurpose purpose; ///< RequestPurpose::Tracking.
    EventText event;        ///< Name of the event that is tracked, such as "firstQuartile".

    static constexpr auto table = line("request", field("url", &VastTracked::url), field("for", &VastTracked::purpose),
                                       field("event", &VastTracked::event));
};

/// A document of a VAST tag is requested.
struct VastRequested {
    EventText url; ///< Address of the document, its macros replaced.

    static constexpr auto table = action_line("vast", "request", field("url", &VastRequested::url));
};

/// An ad of a VAST tag begins.
struct VastAdBegun {
    EventText id;                         ///< The ad's id; null without one.
    std::optional<std::int64_t> sequence; ///< Position in the pod; null for a stand-alone ad.
    EventText title;                      ///< The ad's title; null without one.
    std::int64_t wrappers;                ///< Number of wrappers around the ad.
    EventText video;                      ///< Address of the chosen media file.

    static constexpr auto table =
        action_line("vast", "ad", field("id", &VastAdBegun::id), field("sequence", &VastAdBegun::sequence),
                    field("title", &VastAdBegun::title), field("wrappers", &VastAdBegun::wrappers),
                    field("video", &VastAdBegun::video));
};

/// Something of a VAST document has no effect.
struct VastIgnored {
    EventText element; ///< Name of the element or attribute.
    EventText why;     ///< Why, one line.
    EventText path;    ///< XPath of the element.

    static constexpr auto table = action_line("vast", "ignored", field("element", &VastIgnored::element),
                                              field("why", &VastIgnored::why), field("path", &VastIgnored::path));
};

/// An ad of a VAST tag cannot be played, or a part of it cannot be shown.
struct VastFailed {
    std::int64_t error; ///< The standard's error code.
    EventText why;      ///< Why, one line.

    static constexpr auto table =
        action_line("vast", "failed", field("error", &VastFailed::error), field("why", &VastFailed::why));
};

/// A VAST tag leads to no ad.
struct VastWithoutAd {
    std::int64_t error; ///< The standard's error code.
    EventText why;      ///< Why, one line.

    static constexpr auto table =
        action_line("vast", "noAd", field("error", &VastWithoutAd::error), field("why", &VastWithoutAd::why));
};

} // namespace event

} // namespace qoro
