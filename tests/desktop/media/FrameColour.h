#pragma once

#include "desktop/media/VideoFrame.h"

#include <glib.h>

#include <cstdlib>
#include <sstream>
#include <string>

namespace qoro::test
{

/// The colour of the frame's centre: "red", "green", "blue", "white", or else its three components; "none" for null.
inline std::string colour_of(const VideoFrame& frame)
{
    if (!frame)
        return "none";
    std::size_t size = 0;
    const auto* pixels = static_cast<const unsigned char*>(g_bytes_get_data(frame.pixels.get(), &size));
    const auto middle =
        static_cast<std::size_t>(frame.height / 2) * frame.stride + static_cast<std::size_t>(frame.width / 2) * 4;
    const int blue = pixels[middle];
    const int green = pixels[middle + 1];
    const int red = pixels[middle + 2];
    const auto is = [&](int r, int g, int b) {
        return std::abs(red - r) < 40 && std::abs(green - g) < 40 && std::abs(blue - b) < 40;
    };
    if (pixels[middle + 3] != 255)
        return "transparent";
    if (is(255, 0, 0))
        return "red";
    if (is(0, 128, 0))
        return "green";
    if (is(0, 0, 255))
        return "blue";
    if (is(255, 255, 255))
        return "white";
    std::ostringstream text;
    text << red << ' ' << green << ' ' << blue;
    return text.str();
}

} // namespace qoro::test
