#include "desktop/media/VideoStills.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/VideoDiscovery.h"

#include <gst/gst.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <utility>

namespace qoro
{

namespace
{

constexpr GstClockTime Patience = 10 * GST_SECOND;
constexpr double LeastBetween = 0.5;
/// Of GstPlayFlags: only the video is decoded.
constexpr int VideoOnly = 1;

struct StopAndUnref {
    void operator()(GstElement* element) const
    {
        gst_element_set_state(element, GST_STATE_NULL);
        gst_object_unref(element);
    }
};
using Playbin = std::unique_ptr<GstElement, StopAndUnref>;

struct UnrefSample {
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
};
struct UnrefCaps {
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
};

bool is_paused(GstElement* element)
{
    GstState state = GST_STATE_NULL;
    return gst_element_get_state(element, &state, nullptr, Patience) != GST_STATE_CHANGE_FAILURE &&
           state == GST_STATE_PAUSED;
}

/// The frame that is shown now; empty without one.
std::string shown_frame(GstElement* playbin, GstCaps* format)
{
    GstSample* taken = nullptr;
    g_signal_emit_by_name(playbin, "convert-sample", format, &taken);
    const std::unique_ptr<GstSample, UnrefSample> sample(taken);
    GstBuffer* buffer = sample ? gst_sample_get_buffer(sample.get()) : nullptr;
    if (!buffer)
        return "";
    std::string bytes(gst_buffer_get_size(buffer), '\0');
    bytes.resize(gst_buffer_extract(buffer, 0, bytes.data(), bytes.size()));
    return bytes;
}

} // namespace

std::vector<TakenStill> take_stills(const std::string& path, std::size_t most, int width)
{
    std::vector<TakenStill> stills;
    const auto video = discover_video(path);
    if (!video || !(video->duration > 0) || !(video->size.width > 0) || !(video->size.height > 0) || most == 0)
        return stills;
    const Playbin playbin(gst_element_factory_make("playbin", nullptr));
    GstElement* sink = gst_element_factory_make("fakesink", nullptr);
    // Otherwise a device for sound would be looked for.
    GstElement* silence = gst_element_factory_make("fakesink", nullptr);
    const Owned<char, g_free> address(g_filename_to_uri(std::filesystem::absolute(path).c_str(), nullptr, nullptr));
    if (!playbin || !sink || !silence || !address)
        return stills;
    g_object_set(playbin.get(), "uri", address.get(), "video-sink", sink, "audio-sink", silence, "flags", VideoOnly,
                 nullptr);
    gst_element_set_state(playbin.get(), GST_STATE_PAUSED);
    if (!is_paused(playbin.get()))
        return stills;
    const int height = std::max(1, static_cast<int>(std::lround(width * video->size.height / video->size.width)));
    const std::unique_ptr<GstCaps, UnrefCaps> format(
        gst_caps_new_simple("image/jpeg", "width", G_TYPE_INT, width, "height", G_TYPE_INT, height,
                            "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, nullptr));
    const std::size_t count =
        std::clamp<std::size_t>(static_cast<std::size_t>(video->duration / LeastBetween), 1, most);
    for (std::size_t n = 0; n < count; ++n) {
        // Not quite at the end, where there is no frame any more.
        const double at =
            count == 1 ? 0 : (video->duration - 0.1) * static_cast<double>(n) / static_cast<double>(count - 1);
        const auto position = static_cast<gint64>(std::max(at, 0.0) * GST_SECOND);
        const auto how = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
        if (!gst_element_seek_simple(playbin.get(), GST_FORMAT_TIME, how, position) || !is_paused(playbin.get()))
            continue;
        std::string bytes = shown_frame(playbin.get(), format.get());
        if (!bytes.empty())
            stills.push_back({at, std::move(bytes)});
    }
    return stills;
}

} // namespace qoro
