#pragma once

#include "platform/Geometry.h"

#include <optional>
#include <string>

namespace qoro
{

/// Facts of a video file.
struct DiscoveredVideo {
    /// Seconds; 0 when unknown.
    double duration = 0;
    /// Pixels, as displayed: with square pixels, and turned as the file says.
    CGSize size = {};
};

/// Reads the facts of a video file with GStreamer's discoverer. Blocks for at most ten seconds; may be called on any
/// thread.
/// @param path of the file
/// @return absent for a file that is no video, or that cannot be read
std::optional<DiscoveredVideo> discover_video(const std::string& path);

} // namespace qoro
