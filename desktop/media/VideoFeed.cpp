#include "desktop/media/VideoFeed.h"

#include "desktop/glib/Owned.h"
#include "desktop/glib/ScratchFolders.h"
#include "desktop/media/HttpSource.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{
using Pad = Owned<GstPad, gst_object_unref>;

/// Larger videos are refused.
constexpr std::uint64_t MostBytes = 1'000'000'000;
/// Bytes per second, for a video whose server does not state its size.
constexpr double UsualRate = 150e3;
/// Seconds of data in push mode below which the buffer counts as empty.
constexpr double NothingReady = 0.02;
} // namespace

VideoFeed::VideoFeed(std::string location, bool is_file, unsigned server_seconds, News news)
    : location_(std::move(location)), is_file_(is_file), server_seconds_(server_seconds), news_(std::move(news)),
      complete_(is_file), rate_(UsualRate)
{
}

GstElement* VideoFeed::make(GstBin* pipeline, const char* name)
{
    GstElement* element = gst_element_factory_make(name, nullptr);
    if (element)
        gst_bin_add(pipeline, element);
    else
        news_.failed(std::string("GStreamer has no element ") + name);
    return element;
}

GstElement* VideoFeed::add_to(GstBin* pipeline)
{
    if (is_file_) {
        source_ = make(pipeline, "filesrc");
        if (source_)
            g_object_set(source_, "location", location_.c_str(), nullptr);
        return source_;
    }
    source_ = make_http_source(location_, {.silent_seconds = server_seconds_, .size = MostBytes});
    gst_bin_add(pipeline, source_);
    return keep(pipeline) ? keeper_ : nullptr;
}

bool VideoFeed::keep(GstBin* pipeline)
{
    keeper_ = make(pipeline, "queue2");
    if (!keeper_)
        return false;
    // queue2 stores the video in a file: its in-memory ring buffer writes past the reader's buffer if the server
    // finishes while a read seeks.
    const std::vector<std::string> folders = scratch_folders(MostBytes);
    if (folders.empty()) {
        news_.failed("there is no folder to keep it in");
        return false;
    }
    const std::string file = folders.front() + "/qoro-video-XXXXXX";
    g_object_set(keeper_, "temp-template", file.c_str(), "max-size-buffers", 0U, "max-size-bytes", 0U, "max-size-time",
                 G_GUINT64_CONSTANT(0), nullptr);
    g_signal_connect(keeper_, "notify::temp-location", G_CALLBACK(on_file), nullptr);
    gst_element_link(source_, keeper_);

    const Pad entry(gst_element_get_static_pad(keeper_, "sink"));
    gst_pad_add_probe(entry.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_event, this, nullptr);
    gst_pad_add_probe(entry.get(), GST_PAD_PROBE_TYPE_BUFFER, on_data, this, nullptr);
    const Pad exit(gst_element_get_static_pad(keeper_, "src"));
    wait_.watch(exit.get());
    gst_pad_add_probe(exit.get(), GST_PAD_PROBE_TYPE_QUERY_UPSTREAM, on_query, nullptr, nullptr);
    return true;
}

void VideoFeed::learn_rate(double duration)
{
    gint64 size = 0;
    if ((gst_element_query_duration(source_, GST_FORMAT_BYTES, &size) && size > 0) ||
        (complete_ && (size = static_cast<gint64>(received_.load())) > 0))
        rate_ = static_cast<double>(size) / duration;
}

bool VideoFeed::starved()
{
    return wait_.reads() ? wait_.prevails() : seconds_ready() < NothingReady;
}

double VideoFeed::seconds_ready()
{
    guint bytes = 0;
    g_object_get(keeper_, "current-level-bytes", &bytes, nullptr);
    return static_cast<double>(bytes) / rate_;
}

// The file is only used through its descriptor. Unlinked, it disappears with the program, however that ends.
void VideoFeed::on_file(GstElement* keeper, GParamSpec*, gpointer)
{
    gchar* name = nullptr;
    g_object_get(keeper, "temp-location", &name, nullptr);
    const std::string file = take_text(name);
    std::error_code no_matter;
    if (!file.empty())
        std::filesystem::remove(file, no_matter);
}

GstPadProbeReturn VideoFeed::on_event(GstPad*, GstPadProbeInfo* info, gpointer feed)
{
    VideoFeed& self = *static_cast<VideoFeed*>(feed);
    const GstEventType event = GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info));
    if (event != GST_EVENT_EOS && event != GST_EVENT_SEGMENT)
        return GST_PAD_PROBE_OK;
    // End of the source; a new segment means that the source was sent elsewhere.
    self.complete_ = event == GST_EVENT_EOS;
    self.news_.changed();
    return GST_PAD_PROBE_OK;
}

// Drops queries for the duration in time format: a byte source of unknown size answers that it is unknown, and that
// answer would take precedence over the demuxer's.
GstPadProbeReturn VideoFeed::on_query(GstPad*, GstPadProbeInfo* info, gpointer)
{
    GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
    GstFormat format = GST_FORMAT_UNDEFINED;
    if (GST_QUERY_TYPE(query) == GST_QUERY_DURATION)
        gst_query_parse_duration(query, &format, nullptr);
    return format == GST_FORMAT_TIME ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

GstPadProbeReturn VideoFeed::on_data(GstPad*, GstPadProbeInfo* info, gpointer feed)
{
    VideoFeed& self = *static_cast<VideoFeed*>(feed);
    gint64 size = 0;
    if (self.received_ == 0 && gst_element_query_duration(self.source_, GST_FORMAT_BYTES, &size) && size > 0)
        self.size_ = static_cast<std::uint64_t>(size);
    self.received_ += gst_buffer_get_size(GST_PAD_PROBE_INFO_BUFFER(info));
    if (self.received_ <= MostBytes)
        return GST_PAD_PROBE_OK;
    self.news_.failed("it is larger than 1 GB");
    return GST_PAD_PROBE_DROP;
}

} // namespace qoro
