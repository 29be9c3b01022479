#pragma once

#include <gst/gst.h>

#include <functional>
#include <memory>
#include <string>

namespace qoro::test
{

using DecodedSample = std::shared_ptr<GstSample>;

struct Yuv {
    int luma, cb, cr;
};
// Primary colours in the narrow range, by ITU-R BT.709 and BT.601.
constexpr Yuv BlackYuv{16, 128, 128};
constexpr Yuv WhiteYuv{235, 128, 128};
constexpr Yuv Red709{63, 102, 240};
constexpr Yuv Red601{81, 90, 240};

/// A frame as a decoder gives it, of the given luma, Cb and Cr at each of its pixels.
/// @param more of its caps, as GStreamer writes them
DecodedSample frame_of(int width, int height, const std::function<Yuv(int x, int y)>& at,
                       const std::string& more = ",colorimetry=bt709,chroma-site=mpeg2",
                       const std::string& format = "I420");

} // namespace qoro::test
