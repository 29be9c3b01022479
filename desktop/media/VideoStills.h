#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qoro
{

/// A frame of a video as a picture's file.
struct TakenStill {
    /// Position in the video, in seconds.
    double at = 0;
    /// A JPEG file.
    std::string bytes;
};

/// Takes frames of a video file, equally far apart from its beginning. Blocks while it decodes, for at most ten seconds
/// a frame; may be called on any thread.
/// @param path of the file
/// @param most how many frames, at most one each half second
/// @param width of the pictures in pixels
/// @return empty for a file that is no video, or that this machine cannot decode
std::vector<TakenStill> take_stills(const std::string& path, std::size_t most, int width);

} // namespace qoro
