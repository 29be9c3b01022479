#include "DecodedFile.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/MediaFramework.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <cstdlib>

namespace qoro::test
{

namespace
{

using Element = Owned<GstElement, gst_object_unref>;
using Message = Owned<GstMessage, gst_message_unref>;
using Sample = Owned<GstSample, gst_sample_unref>;

struct Watch {
    const Decoding& how;
    DecodedFile& file;
};

void on_element(GstBin*, GstBin*, GstElement* element, gpointer watch)
{
    const Watch& self = *static_cast<Watch*>(watch);
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "max-threads"))
        g_object_set(element, "max-threads", self.how.threads, nullptr);
    const std::string purpose =
        gst_element_class_get_metadata(GST_ELEMENT_GET_CLASS(element), GST_ELEMENT_METADATA_KLASS);
    if (purpose.find("Decoder") != std::string::npos &&
        purpose.find(self.how.kind == "video" ? "Video" : "Audio") != std::string::npos)
        self.file.decoder = G_OBJECT_TYPE_NAME(element);
}

GstPadProbeReturn on_query(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
    if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
        return GST_PAD_PROBE_OK;
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return GST_PAD_PROBE_HANDLED;
}

void take_sample(GstAppSink* sink, GstSample* sample, const Decoding& how, DecodedFile& file)
{
    if (file.caps.empty())
        file.caps = take_text(gst_caps_to_string(gst_sample_get_caps(sample)));
    file.times.push_back(GST_BUFFER_PTS(gst_sample_get_buffer(sample)));
    append_samples(file.samples, sample);
    if (how.on_sample)
        how.on_sample(sample, GST_ELEMENT(sink));
}

void hear(GstBus* bus, DecodedFile& file)
{
    while (const Message message{gst_bus_pop(bus)}) {
        file.dropped += GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_QOS ? 1 : 0;
        Error error;
        if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR && file.error.empty()) {
            gst_message_parse_error(message.get(), error.out(), nullptr);
            file.error = error.message();
        }
    }
}

/// Takes samples until the end or an error.
void run(GstAppSink* sink, GstBus* bus, const Decoding& how, DecodedFile& file)
{
    constexpr GstClockTime Glance = 20 * GST_MSECOND;
    while (!gst_app_sink_is_eos(sink) && file.error.empty()) {
        if (const Sample sample{gst_app_sink_try_pull_sample(sink, Glance)})
            take_sample(sink, sample.get(), how, file);
        hear(bus, file);
    }
    hear(bus, file);
}

bool seek(GstElement* pipeline, double seconds)
{
    return gst_element_seek_simple(pipeline, GST_FORMAT_TIME,
                                   static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                   static_cast<gint64>(seconds * static_cast<double>(GST_SECOND)));
}

} // namespace

void append_samples(std::string& samples, GstSample* sample)
{
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    GstVideoInfo info;
    GstVideoFrame frame;
    const bool is_picture =
        gst_structure_has_name(gst_caps_get_structure(gst_sample_get_caps(sample), 0), "video/x-raw");
    if (!is_picture) {
        std::string bytes(gst_buffer_get_size(buffer), '\0');
        gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
        samples += bytes;
    } else if (gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) &&
               gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {
        for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane)
            for (int row = 0; row < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane); ++row)
                samples.append(static_cast<const char*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane)) +
                                   static_cast<std::ptrdiff_t>(row) * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane),
                               static_cast<std::size_t>(GST_VIDEO_FRAME_COMP_WIDTH(&frame, plane) *
                                                        GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, plane)));
        gst_video_frame_unmap(&frame);
    }
}

DecodedFile decode(const std::string& path, const Decoding& how)
{
    start_media_framework();
    DecodedFile file;
    Watch watch{how, file};
    const Element pipeline(gst_parse_launch(
        ("filesrc name=source ! decodebin name=all all. ! " + how.kind + "/x-raw ! appsink name=sink sync=false")
            .c_str(),
        nullptr));
    const Element source(gst_bin_get_by_name(GST_BIN(pipeline.get()), "source"));
    const Element sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    const Owned<GstBus, gst_object_unref> bus(gst_element_get_bus(pipeline.get()));
    g_object_set(source.get(), "location", path.c_str(), nullptr);
    g_object_set(sink.get(), "max-buffers", 2U, nullptr);
    g_signal_connect(pipeline.get(), "deep-element-added", G_CALLBACK(on_element), &watch);
    if (how.rows_anywhere) {
        const Owned<GstPad, gst_object_unref> entry(gst_element_get_static_pad(sink.get(), "sink"));
        gst_pad_add_probe(entry.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, on_query, nullptr, nullptr);
    }
    gst_element_set_state(pipeline.get(), GST_STATE_PAUSED);
    gst_element_get_state(pipeline.get(), nullptr, nullptr, GST_CLOCK_TIME_NONE);
    if (how.from > 0 && !seek(pipeline.get(), how.from))
        file.error = "it cannot be sought in";
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    for (int n = 0; n < how.times; ++n) {
        if (n > 0 && !seek(pipeline.get(), 0))
            file.error = "it cannot be sought in";
        run(GST_APP_SINK(sink.get()), bus.get(), how, file);
    }
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return file;
}

bool run_ffmpeg(const std::string& arguments)
{
    return std::system(("ffmpeg -loglevel error -nostdin -y " + arguments).c_str()) == 0;
}

} // namespace qoro::test
