#include "desktop/media/HttpSource.h"

#include "desktop/glib/Owned.h"
#include "platform/AddressParts.h"

#include <gst/base/gstpushsrc.h>
#include <gst/gst.h>

#include <algorithm>
#include <cstdint>

struct QoroHttpSource {
    GstPushSrc parent;
    /// URI that other elements see instead of the address.
    std::string* name;
    qoro::HttpReader* reader;
    /// Offset of the next byte.
    std::uint64_t position;
    bool size_reported;
};

struct QoroHttpSourceClass {
    GstPushSrcClass parent;
};

G_DEFINE_TYPE(QoroHttpSource, qoro_http_source, GST_TYPE_PUSH_SRC)

namespace
{

constexpr gsize PieceSize = 64u << 10;

/// The longest file extension of a video format ("m2ts").
constexpr std::size_t LongestEnding = 4;

bool is_plain(char c)
{
    return g_ascii_isalnum(c) != FALSE;
}

/// The extension of an address's path, with its dot; empty if there is none, or if it contains anything but letters and
/// digits. GStreamer sees nothing else of an untrusted address, because its URI parser terminates the program at an
/// escaped null byte.
std::string ending_of(const std::string& address)
{
    const std::string_view path = qoro::AddressParts(address).path();
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string_view::npos || path[dot] != '.')
        return "";
    const std::string ending(path.substr(dot + 1));
    const bool usable = !ending.empty() && ending.size() <= LongestEnding && std::ranges::all_of(ending, is_plain);
    return usable ? "." + ending : "";
}

QoroHttpSource& self_of(void* element)
{
    return *static_cast<QoroHttpSource*>(element);
}

gboolean start(GstBaseSrc* source)
{
    QoroHttpSource& self = self_of(source);
    self.position = 0;
    self.size_reported = false;
    return TRUE;
}

gboolean unlock(GstBaseSrc* source)
{
    self_of(source).reader->stop();
    return TRUE;
}

gboolean unlock_stop(GstBaseSrc* source)
{
    self_of(source).reader->resume();
    return TRUE;
}

gboolean is_seekable(GstBaseSrc* source)
{
    return self_of(source).reader->can_jump();
}

gboolean get_size(GstBaseSrc* source, guint64* size)
{
    const auto known = self_of(source).reader->size();
    *size = known.value_or(0);
    return known.has_value();
}

gboolean do_seek(GstBaseSrc* source, GstSegment* segment)
{
    if (segment->format != GST_FORMAT_BYTES)
        return FALSE;
    self_of(source).position = segment->start;
    return TRUE;
}

gboolean query(GstBaseSrc* source, GstQuery* asked)
{
    if (GST_QUERY_TYPE(asked) == GST_QUERY_URI) {
        gst_query_set_uri(asked, self_of(source).name->c_str());
        return TRUE;
    }
    const gboolean known = GST_BASE_SRC_CLASS(qoro_http_source_parent_class)->query(source, asked);
    if (GST_QUERY_TYPE(asked) != GST_QUERY_SCHEDULING)
        return known;
    // Marks reading ahead as expensive.
    GstSchedulingFlags flags = GST_SCHEDULING_FLAG_SEQUENTIAL;
    gint least = 1;
    gint most = -1;
    gint align = 0;
    gst_query_parse_scheduling(asked, &flags, &least, &most, &align);
    const int limited = static_cast<int>(flags) | static_cast<int>(GST_SCHEDULING_FLAG_BANDWIDTH_LIMITED);
    gst_query_set_scheduling(asked, static_cast<GstSchedulingFlags>(limited), least, most, align);
    return TRUE;
}

void report_size(QoroHttpSource& self)
{
    GST_OBJECT_LOCK(&self);
    GST_BASE_SRC(&self)->segment.duration = *self.reader->size();
    GST_OBJECT_UNLOCK(&self);
    gst_element_post_message(GST_ELEMENT(&self), gst_message_new_duration_changed(GST_OBJECT(&self)));
    self.size_reported = true;
}

GstFlowReturn create(GstPushSrc* source, GstBuffer** made)
{
    using Outcome = qoro::HttpReader::Outcome;

    QoroHttpSource& self = self_of(source);
    qoro::Owned<GstBuffer, gst_buffer_unref> owned(gst_buffer_new_allocate(nullptr, PieceSize, nullptr));
    GstBuffer* buffer = owned.get();
    GstMapInfo room;
    gst_buffer_map(buffer, &room, GST_MAP_WRITE);
    std::size_t got = 0;
    const Outcome outcome =
        self.reader->read(self.position, reinterpret_cast<char*>(room.data), static_cast<std::size_t>(room.size), got);
    gst_buffer_unmap(buffer, &room);
    if (self.reader->size() && !self.size_reported)
        report_size(self);
    if (outcome == Outcome::Bytes) {
        gst_buffer_resize(buffer, 0, static_cast<gssize>(got));
        GST_BUFFER_OFFSET(buffer) = self.position;
        self.position += got;
        *made = owned.release();
        return GST_FLOW_OK;
    }
    if (outcome == Outcome::End && self.position == 0) {
        GST_ELEMENT_ERROR(&self, RESOURCE, READ, ("it is empty"), (nullptr));
        return GST_FLOW_ERROR;
    }
    if (outcome == Outcome::End)
        return GST_FLOW_EOS;
    if (outcome == Outcome::Stopped)
        return GST_FLOW_FLUSHING;
    GST_ELEMENT_ERROR(&self, RESOURCE, READ, ("%s", self.reader->error().c_str()), (nullptr));
    return GST_FLOW_ERROR;
}

void finalize(GObject* object)
{
    QoroHttpSource& self = self_of(object);
    delete self.reader;
    delete self.name;
    G_OBJECT_CLASS(qoro_http_source_parent_class)->finalize(object);
}

GstStaticPadTemplate exit_pad = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);

} // namespace

static void qoro_http_source_class_init(QoroHttpSourceClass* type)
{
    G_OBJECT_CLASS(type)->finalize = finalize;
    gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(type), &exit_pad);
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Video of a server", "Source/Network",
                                          "Reads from an HTTP server", "Qoro Video Ad");
    GstBaseSrcClass* base = GST_BASE_SRC_CLASS(type);
    base->start = start;
    base->unlock = unlock;
    base->unlock_stop = unlock_stop;
    base->is_seekable = is_seekable;
    base->get_size = get_size;
    base->do_seek = do_seek;
    base->query = query;
    GST_PUSH_SRC_CLASS(type)->create = create;
}

static void qoro_http_source_init(QoroHttpSource* self)
{
    gst_base_src_set_format(GST_BASE_SRC(self), GST_FORMAT_BYTES);
}

namespace qoro
{

GstElement* make_http_source(const std::string& address, const HttpReader::Limits& limits)
{
    auto* source = static_cast<QoroHttpSource*>(g_object_new(qoro_http_source_get_type(), nullptr));
    source->name = new std::string("video:stream" + ending_of(address));
    source->reader = new HttpReader(address, limits);
    return GST_ELEMENT(source);
}

} // namespace qoro
