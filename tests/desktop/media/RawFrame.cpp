#include "RawFrame.h"

#include "desktop/glib/Owned.h"

#include <gst/video/video.h>

#include <algorithm>
#include <cstddef>

namespace qoro::test
{

DecodedSample frame_of(int width, int height, const std::function<Yuv(int x, int y)>& at, const std::string& more,
                       const std::string& format)
{
    gst_init(nullptr, nullptr);
    const Owned<GstCaps, gst_caps_unref> caps(
        gst_caps_from_string(("video/x-raw,format=" + format + ",width=" + std::to_string(width) +
                              ",height=" + std::to_string(height) + ",framerate=30/1" + more)
                                 .c_str()));
    GstVideoInfo info;
    gst_video_info_from_caps(&info, caps.get());
    const Owned<GstBuffer, gst_buffer_unref> buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr));
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE);
    for (guint component = 0; component < 3; ++component) {
        const int shift = component == 0 ? 0 : 1;
        for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, component); ++y)
            for (int x = 0; x < GST_VIDEO_FRAME_COMP_WIDTH(&frame, component); ++x) {
                const Yuv pixel = at(std::min(x << shift, width - 1), std::min(y << shift, height - 1));
                auto* row = static_cast<guint8*>(GST_VIDEO_FRAME_COMP_DATA(&frame, component)) +
                            std::ptrdiff_t{y} * GST_VIDEO_FRAME_COMP_STRIDE(&frame, component);
                row[std::ptrdiff_t{x} * GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, component)] =
                    static_cast<guint8>(component == 0   ? pixel.luma
                                        : component == 1 ? pixel.cb
                                                         : pixel.cr);
            }
    }
    gst_video_frame_unmap(&frame);
    return {gst_sample_new(buffer.get(), caps.get(), nullptr, nullptr), gst_sample_unref};
}

} // namespace qoro::test
