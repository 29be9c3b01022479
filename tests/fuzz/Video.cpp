// A video's bytes as a server sends them: GStreamer's type detection and its demuxers, on one thread. Decoders are
// excluded, since they would take most of the time.

#include "desktop/media/StreamKind.h"
#include "tests/fuzz/FuzzTarget.h"

#include <gst/base/gsttypefindhelper.h>
#include <gst/gst.h>

#include <array>
#include <string>
#include <string_view>

namespace qoro
{

namespace
{

/// Bytes per network read, as from a server.
constexpr std::size_t PieceSize = 1024;

struct Container {
    std::string_view kind;
    const char* element;
};
constexpr std::array<Container, 7> Containers = {{
    {"video/quicktime", "qtdemux"},
    {"audio/x-m4a", "qtdemux"},
    {"video/webm", "matroskademux"},
    {"video/x-matroska", "matroskademux"},
    {"video/mpegts", "tsdemux"},
    {"video/x-msvideo", "avidemux"},
    {"application/ogg", "oggdemux"},
}};

GstFlowReturn drop_buffer(GstPad*, GstObject*, GstBuffer* buffer)
{
    gst_buffer_unref(buffer);
    return GST_FLOW_OK;
}

gboolean drop_event(GstPad*, GstObject*, GstEvent* event)
{
    gst_event_unref(event);
    return TRUE;
}

/// Connects one stream of the video.
void on_pad(GstElement* element, GstPad* pad, gpointer)
{
    GstPad* drain = gst_pad_new(nullptr, GST_PAD_SINK);
    gst_pad_set_chain_function(drain, drop_buffer);
    gst_pad_set_event_function(drain, drop_event);
    gst_pad_set_active(drain, TRUE);
    // The element owns it.
    g_object_set_data_full(G_OBJECT(element), GST_PAD_NAME(pad), gst_object_ref_sink(drain), gst_object_unref);
    gst_pad_link(pad, drain);
}

void take_apart(GstElement* element, std::string_view bytes, GstCaps* caps)
{
    g_signal_connect(element, "pad-added", G_CALLBACK(on_pad), nullptr);
    GstPad* feed = gst_pad_new("feed", GST_PAD_SRC);
    gst_object_ref_sink(feed);
    GstPad* entry = gst_element_get_static_pad(element, "sink");
    gst_pad_set_active(feed, TRUE);
    gst_element_set_state(element, GST_STATE_PAUSED);
    gst_pad_link(feed, entry);
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_BYTES);
    gst_pad_push_event(feed, gst_event_new_stream_start("video"));
    gst_pad_push_event(feed, gst_event_new_caps(caps));
    gst_pad_push_event(feed, gst_event_new_segment(&segment));
    GstFlowReturn flow = GST_FLOW_OK;
    for (std::size_t at = 0; at < bytes.size() && flow == GST_FLOW_OK; at += PieceSize) {
        const std::string_view piece = bytes.substr(at, PieceSize);
        GstBuffer* buffer = gst_buffer_new_memdup(piece.data(), piece.size());
        GST_BUFFER_OFFSET(buffer) = at;
        flow = gst_pad_push(feed, buffer);
    }
    gst_pad_push_event(feed, gst_event_new_eos());
    gst_element_set_state(element, GST_STATE_NULL);
    gst_pad_unlink(feed, entry);
    gst_pad_set_active(feed, FALSE);
    gst_object_unref(entry);
    gst_object_unref(feed);
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    static const bool ready = gst_init_check(nullptr, nullptr, nullptr);
    require(ready, "GStreamer can be loaded");
    GstCaps* caps =
        gst_type_find_helper_for_data(nullptr, reinterpret_cast<const guint8*>(input.data()), input.size(), nullptr);
    const std::string_view kind = stream_kind(caps);
    for (const Container& container : Containers) {
        if (container.kind != kind)
            continue;
        GstElement* element = gst_element_factory_make(container.element, nullptr);
        require(element != nullptr, "GStreamer has its usual elements");
        gst_object_ref_sink(element);
        take_apart(element, input, caps);
        gst_object_unref(element);
    }
    gst_clear_caps(&caps);
}

} // namespace qoro
