#include "desktop/media/StreamSinks.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/StreamKind.h"

#include <gst/video/video.h>

#include <unistd.h>

#include <string>
#include <thread>
#include <utility>

namespace qoro
{

namespace
{
using Caps = Owned<GstCaps, gst_caps_unref>;
using Pad = Owned<GstPad, gst_object_unref>;
using Sample = Owned<GstSample, gst_sample_unref>;

/// Time for the main thread to show a picture before the next frame is taken and the decoder continues. If all
/// processors are busy, the scheduler lets the main thread wait, which makes the picture up to 3 ms late.
constexpr std::chrono::milliseconds HeadStart{1};
/// Only granted if the frame was ready this long before it was due: a decoder that is short of time must not wait.
constexpr std::chrono::milliseconds TimeToSpare{4};
/// Decoded frames that are kept for the sink. Without them, a frame that takes longer to decode than it is shown is
/// late, and so is every frame that is decoded while the processors are busy.
constexpr guint FramesAhead = 3;

/// Whether a sink plays a buffer. Buffers before the target of a seek are only decoded.
bool lies_within_segment(GstPad* pad, GstBuffer* buffer)
{
    const Owned<GstEvent, gst_event_unref> event(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
    if (!event)
        return false;
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event.get(), &segment);
    const GstClockTime begin = GST_BUFFER_PTS(buffer);
    const GstClockTime end = GST_CLOCK_TIME_IS_VALID(begin) && GST_BUFFER_DURATION_IS_VALID(buffer)
                                 ? begin + GST_BUFFER_DURATION(buffer)
                                 : begin;
    return gst_segment_clip(segment, GST_FORMAT_TIME, begin, end, nullptr, nullptr);
}

/// Tells the decoder that a frame's rows may lie anywhere, so that its own memory reaches VideoPictures without a copy.
GstPadProbeReturn on_allocation(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
    if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
        return GST_PAD_PROBE_OK;
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    return GST_PAD_PROBE_HANDLED;
}
} // namespace

StreamSinks::StreamSinks(std::shared_ptr<VideoPictures> pictures, bool silent, std::optional<float> volume)
    : pictures_(std::move(pictures)), silent_(silent), volume_(volume)
{
}

bool StreamSinks::add(GstBin* pipeline, GstPad* pad)
{
    const Caps caps(gst_pad_get_current_caps(pad));
    const std::string_view kind = stream_kind(caps.get());
    if (kind == "video/x-raw" && !picture_)
        return add_picture(pipeline, pad);
    if (kind == "audio/x-raw" && !sound_)
        add_sound(pipeline, pad);
    return true;
}

double StreamSinks::seconds_ahead() const
{
    guint64 ahead = 0;
    if (GstElement* queue = ahead_)
        g_object_get(queue, "current-level-time", &ahead, nullptr);
    return static_cast<double>(ahead) / static_cast<double>(GST_SECOND);
}

bool StreamSinks::is_of_sound(GstObject* from) const
{
    GstElement* sink = sound_;
    return sink && gst_object_has_as_ancestor(from, GST_OBJECT(sink));
}

std::chrono::duration<double> StreamSinks::opening_sound_since() const
{
    const Clock::rep since = sound_opening_;
    return since ? Clock::now() - Clock::time_point(Clock::duration(since)) : Clock::duration(0);
}

bool StreamSinks::add_picture(GstBin* pipeline, GstPad* pad)
{
    GstElement* queue = gst_element_factory_make("queue", nullptr);
    GstElement* sink = gst_element_factory_make("appsink", nullptr);
    if (!queue || !sink)
        return false;
    g_object_set(queue, "max-size-buffers", FramesAhead, "max-size-bytes", 0U, "max-size-time", guint64{0}, "silent",
                 TRUE, nullptr);
    const Caps readable(gst_caps_new_empty_simple("video/x-raw"));
    // qos: a late decoder is notified and drops frames. max-lateness: frames that are too late are not shown.
    g_object_set(sink, "caps", readable.get(), "max-buffers", 1U, "enable-last-sample", FALSE, "qos", TRUE,
                 "max-lateness", static_cast<gint64>(50 * GST_MSECOND), nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = on_preroll;
    callbacks.new_sample = on_sample;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
    ahead_ = queue;
    picture_ = sink;
    gst_bin_add_many(pipeline, queue, sink, nullptr);
    gst_element_link(queue, sink);
    const Pad entry(gst_element_get_static_pad(sink, "sink"));
    watch(entry.get());
    gst_pad_add_probe(entry.get(), GST_PAD_PROBE_TYPE_BUFFER, on_frame, this, nullptr);
    gst_pad_add_probe(entry.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, on_allocation, nullptr, nullptr);
    const Pad queue_entry(gst_element_get_static_pad(queue, "sink"));
    gst_pad_link(pad, queue_entry.get());
    for (GstElement* element : {sink, queue})
        gst_element_sync_state_with_parent(element);
    return true;
}

ObjectRef<GstElement> StreamSinks::open_sound()
{
    GstElement* sink = silent_ ? nullptr : gst_element_factory_make("pulsesink", nullptr);
    if (!sink)
        return nullptr;
    // With the sound server's clock, a suspended device would stop the picture for about a second.
    g_object_set(sink, "provide-clock", FALSE, nullptr);
    // By its role, a sound server knows which streams to pause for a call.
    const Owned<GstStructure, gst_structure_free> tags(gst_structure_new("tags", "qoro.player", G_TYPE_STRING,
                                                                         std::to_string(getpid()).c_str(), "media.role",
                                                                         G_TYPE_STRING, "video", nullptr));
    g_object_set(sink, "stream-properties", tags.get(), nullptr);
    if (volume_) {
        const double slider = *volume_;
        g_object_set(sink, "volume", slider * slider * slider, nullptr);
    }
    auto owned = sink_ref(sink);
    sound_opening_ = Clock::now().time_since_epoch().count();
    // Opened outside the pipeline, where a failure does not become an error of the pipeline.
    const bool opened = gst_element_set_state(sink, GST_STATE_READY) == GST_STATE_CHANGE_SUCCESS;
    sound_opening_ = 0;
    if (opened)
        return owned;
    gst_element_set_state(sink, GST_STATE_NULL);
    return nullptr;
}

void StreamSinks::add_sound(GstBin* pipeline, GstPad* pad)
{
    ObjectRef<GstElement> owned = open_sound();
    if (!owned) {
        owned = sink_ref(gst_element_factory_make("fakesink", nullptr));
        g_object_set(owned.get(), "sync", TRUE, nullptr);
    }
    GstElement* sink = owned.get();
    GstElement* convert = gst_element_factory_make("audioconvert", nullptr);
    GstElement* resample = gst_element_factory_make("audioresample", nullptr);
    sound_ = sink;
    gst_bin_add_many(pipeline, convert, resample, sink, nullptr);
    gst_element_link_many(convert, resample, sink, nullptr);
    const Pad entry(gst_element_get_static_pad(convert, "sink"));
    watch(entry.get());
    gst_pad_link(pad, entry.get());
    for (GstElement* element : {sink, resample, convert})
        gst_element_sync_state_with_parent(element);
}

void StreamSinks::watch(GstPad* entry)
{
    constexpr int What = static_cast<int>(GST_PAD_PROBE_TYPE_BUFFER) | static_cast<int>(GST_PAD_PROBE_TYPE_EVENT_FLUSH);
    gst_pad_add_probe(entry, static_cast<GstPadProbeType>(What), on_data, this, nullptr);
}

GstPadProbeReturn StreamSinks::on_data(GstPad* pad, GstPadProbeInfo* info, gpointer sinks)
{
    StreamSinks& self = *static_cast<StreamSinks*>(sinks);
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) == 0) {
        if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_FLUSH_STOP)
            self.got_any_ = false;
        return GST_PAD_PROBE_OK;
    }
    if (!self.got_any_)
        self.got_any_ = lies_within_segment(pad, GST_PAD_PROBE_INFO_BUFFER(info));
    return GST_PAD_PROBE_OK;
}

/// The sink waits until a frame is due. Its picture is made before, so that it is not late by the time that takes.
GstPadProbeReturn StreamSinks::on_frame(GstPad* pad, GstPadProbeInfo* info, gpointer sinks)
{
    StreamSinks& self = *static_cast<StreamSinks*>(sinks);
    GstBuffer* frame = GST_PAD_PROBE_INFO_BUFFER(info);
    const Caps caps(gst_pad_get_current_caps(pad));
    if (caps && lies_within_segment(pad, frame)) {
        const Sample sample(gst_sample_new(frame, caps.get(), nullptr, nullptr));
        self.pictures_->prepare(sample.get());
    }
    self.frame_ready_ = Clock::now();
    return GST_PAD_PROBE_OK;
}

GstFlowReturn StreamSinks::on_preroll(GstAppSink* sink, gpointer sinks)
{
    if (const Sample sample{gst_app_sink_pull_preroll(sink)})
        static_cast<StreamSinks*>(sinks)->pictures_->put(sample.get());
    return GST_FLOW_OK;
}

GstFlowReturn StreamSinks::on_sample(GstAppSink* sink, gpointer sinks)
{
    StreamSinks& self = *static_cast<StreamSinks*>(sinks);
    const bool has_time = Clock::now() - self.frame_ready_ > TimeToSpare;
    const Sample sample{gst_app_sink_pull_sample(sink)};
    if (sample && self.pictures_->put(sample.get()) && has_time)
        std::this_thread::sleep_for(HeadStart);
    return GST_FLOW_OK;
}

} // namespace qoro
