#include "desktop/glib/Owned.h"
#include "desktop/media/LibavDecoder.h"
#include "desktop/media/LibavElements.h"
#include "desktop/media/LibavPicture.h"

#include <gst/video/gstvideodecoder.h>

#include <algorithm>
#include <atomic>

namespace qoro
{

namespace
{

using Buffer = Owned<GstBuffer, gst_buffer_unref>;
using State = Owned<GstVideoCodecState, gst_video_codec_state_unref>;

/// More would cost memory and delay without use; libavcodec's own limit.
constexpr int MostThreads = 16;
/// Number of packets after which a picture that has not appeared never will: more than decoding threads and pictures
/// that wait for their turn can hold back.
constexpr guint32 LongestWait = 64;
/// Faults in sequence after which the rest of a decoder's pictures is given up.
constexpr int MostDamage = 100;

/// The state of one element. Guarded by the element's stream lock, except for max_threads.
class LibavVideo
{
public:
    explicit LibavVideo(GstVideoDecoder* element) : element_(element) {}

    bool set_format(GstVideoCodecState* input);
    GstFlowReturn decode(GstVideoCodecFrame* packet);
    GstFlowReturn drain();
    void flush();
    void close();
    void learn_allocation(GstQuery* query)
    {
        takes_rows_anywhere_ = gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    }

    std::atomic<int> max_threads = 0;

private:
    GstFlowReturn damaged();
    GstFlowReturn pass_on_pictures();
    GstFlowReturn pass_on(const AVFrame& picture);
    bool agree_on_form(const AVFrame& picture);
    GstFlowReturn fill(GstVideoCodecFrame* output, const AVFrame& picture);
    void forget_packets(const GstVideoCodecFrame* output, guint32 newest);

    GstVideoDecoder* const element_;
    std::unique_ptr<LibavDecoder> decoder_;
    State input_;
    State output_;
    PictureForm form_;
    /// Whether kinds of fields have alternated.
    bool mixed_ = false;
    /// Whether the next element reads GstVideoMeta.
    bool takes_rows_anywhere_ = false;
};

/// Marks a packet whose picture is left out because it would be late.
void mark_hurried(GstVideoCodecFrame* packet)
{
    gst_video_codec_frame_set_user_data(packet, packet, nullptr);
}

bool is_hurried(GstVideoCodecFrame* packet)
{
    return gst_video_codec_frame_get_user_data(packet) != nullptr;
}

/// Whether two formats differ in no more than what the decoder does not need to know.
bool same_stream(const GstCaps* one, const GstCaps* other)
{
    const Owned<GstCaps, gst_caps_unref> first(gst_caps_copy(one));
    const Owned<GstCaps, gst_caps_unref> second(gst_caps_copy(other));
    for (GstCaps* caps : {first.get(), second.get()})
        gst_structure_remove_field(gst_caps_get_structure(caps, 0), "framerate");
    return gst_caps_is_equal(first.get(), second.get());
}

bool LibavVideo::set_format(GstVideoCodecState* input)
{
    const bool continues = decoder_ && input_ && same_stream(input_->caps, input->caps);
    if (!continues) {
        drain();
        LibavDecoder::Setup setup;
        setup.codec = codec_of(element_);
        setup.caps = input->caps;
        const int processors = static_cast<int>(g_get_num_processors());
        setup.threads = std::min(max_threads > 0 ? max_threads.load() : processors, MostThreads);
        decoder_ = LibavDecoder::open(setup);
    }
    input_.reset(gst_video_codec_state_ref(input));
    // The next picture's form is agreed on anew.
    output_.reset();
    mixed_ = mixed_ && continues;
    return decoder_ != nullptr;
}

GstFlowReturn LibavVideo::decode(GstVideoCodecFrame* packet)
{
    if (!decoder_) {
        gst_video_decoder_release_frame(element_, packet);
        return GST_FLOW_NOT_NEGOTIATED;
    }
    const bool hurried = gst_video_decoder_get_max_decode_time(element_, packet) <= 0;
    if (hurried)
        mark_hurried(packet);
    decoder_->set_hurried(hurried);
    const bool sent = decoder_->send(packet->input_buffer, packet->system_frame_number);
    GstFlowReturn flow = sent ? GST_FLOW_OK : damaged();
    if (flow == GST_FLOW_OK)
        flow = pass_on_pictures();
    forget_packets(nullptr, packet->system_frame_number);
    gst_video_codec_frame_unref(packet);
    return flow;
}

/// The base class decides how many faults it tolerates.
GstFlowReturn LibavVideo::damaged()
{
    GstFlowReturn flow = GST_FLOW_OK;
    GST_VIDEO_DECODER_ERROR(element_, 1, STREAM, DECODE, (nullptr), ("damaged data"), flow);
    return flow;
}

GstFlowReturn LibavVideo::drain()
{
    if (!decoder_)
        return GST_FLOW_OK;
    decoder_->end();
    const GstFlowReturn flow = pass_on_pictures();
    decoder_->flush();
    return flow;
}

void LibavVideo::flush()
{
    if (decoder_)
        decoder_->flush();
}

void LibavVideo::close()
{
    decoder_.reset();
    input_.reset();
    output_.reset();
    mixed_ = false;
}

GstFlowReturn LibavVideo::pass_on_pictures()
{
    GstFlowReturn flow = GST_FLOW_OK;
    int damage = 0;
    while (flow == GST_FLOW_OK && damage < MostDamage) {
        const LibavDecoder::Found found = decoder_->receive();
        if (found == LibavDecoder::Found::Nothing || found == LibavDecoder::Found::End)
            break;
        if (found == LibavDecoder::Found::Frame) {
            flow = pass_on(decoder_->frame());
        } else {
            ++damage;
            flow = damaged();
        }
    }
    return flow;
}

GstFlowReturn LibavVideo::pass_on(const AVFrame& picture)
{
    GstVideoCodecFrame* const output =
        picture.pts >= 0 ? gst_video_decoder_get_frame(element_, static_cast<int>(picture.pts)) : nullptr;
    // The decoder may repeat a picture to conceal a lost one.
    if (!output)
        return GST_FLOW_OK;
    GstFlowReturn flow = GST_FLOW_OK;
    if (!agree_on_form(picture))
        flow = GST_PAD_IS_FLUSHING(GST_VIDEO_DECODER_SRC_PAD(element_)) ? GST_FLOW_FLUSHING : GST_FLOW_NOT_NEGOTIATED;
    if (flow == GST_FLOW_OK)
        flow = fill(output, picture);
    if (flow != GST_FLOW_OK) {
        gst_video_decoder_drop_frame(element_, output);
        return flow;
    }
    forget_packets(output, output->system_frame_number);
    return gst_video_decoder_finish_frame(element_, output);
}

/// Tells the next element what the pictures look like, if that has changed.
bool LibavVideo::agree_on_form(const AVFrame& picture)
{
    const PictureForm before = form_;
    form_ = form_of(picture);
    const bool fields_change = !mixed_ && !same_fields(form_, before);
    if (output_ && same_picture(form_, before) && !fields_change)
        return true;
    if (form_.format == GST_VIDEO_FORMAT_UNKNOWN)
        return false;
    mixed_ = mixed_ || form_.repeats_fields || (output_ && before.interlaced && fields_change);
    output_.reset(gst_video_decoder_set_output_state(element_, form_.format, static_cast<guint>(form_.width),
                                                     static_cast<guint>(form_.height), input_.get()));
    if (!output_)
        return false;
    describe_pictures(output_->info, *input_, form_, decoder_->context().framerate, mixed_);
    if (gst_video_decoder_negotiate(element_))
        return true;
    output_.reset();
    return false;
}

/// Gives a packet its picture.
GstFlowReturn LibavVideo::fill(GstVideoCodecFrame* output, const AVFrame& picture)
{
    Buffer buffer(buffer_of(picture, output_->info));
    if (!buffer)
        return GST_FLOW_ERROR;
    if (takes_rows_anywhere_) {
        output->output_buffer = buffer.release();
    } else {
        const GstFlowReturn flow = gst_video_decoder_allocate_output_frame(element_, output);
        if (flow != GST_FLOW_OK)
            return flow;
        GstVideoFrame from;
        GstVideoFrame to;
        if (!gst_video_frame_map(&from, &output_->info, buffer.get(), GST_MAP_READ))
            return GST_FLOW_ERROR;
        const bool mapped = gst_video_frame_map(&to, &output_->info, output->output_buffer, GST_MAP_WRITE);
        const bool copied = mapped && gst_video_frame_copy(&to, &from);
        if (mapped)
            gst_video_frame_unmap(&to);
        gst_video_frame_unmap(&from);
        if (!copied)
            return GST_FLOW_ERROR;
    }
    if ((picture.flags & AV_FRAME_FLAG_CORRUPT) != 0)
        GST_BUFFER_FLAG_SET(output->output_buffer, GST_BUFFER_FLAG_CORRUPTED);
    if (form_.interlaced)
        GST_BUFFER_FLAG_SET(output->output_buffer, GST_VIDEO_BUFFER_FLAG_INTERLACED);
    if (form_.top_field_first)
        GST_BUFFER_FLAG_SET(output->output_buffer, GST_VIDEO_BUFFER_FLAG_TFF);
    if (form_.repeats_fields)
        GST_BUFFER_FLAG_SET(output->output_buffer, GST_VIDEO_BUFFER_FLAG_RFF);
    return GST_FLOW_OK;
}

/// Releases the packets that will have no picture: second fields, damaged ones, and those left out. Pictures appear in
/// the order of their times, but a container may state wrong times.
/// @param output the next picture; null if there is none yet
void LibavVideo::forget_packets(const GstVideoCodecFrame* output, guint32 newest)
{
    GList* const packets = gst_video_decoder_get_frames(element_);
    for (GList* each = packets; each; each = each->next) {
        auto* const packet = static_cast<GstVideoCodecFrame*>(each->data);
        const guint32 number = packet->system_frame_number;
        const bool passed = output && is_hurried(packet) && packet->pts < output->pts;
        const bool waited = number < newest && newest - number > LongestWait;
        // Each function takes over the list's reference. Only a picture that was left out is reported as dropped.
        if (packet == output || (!passed && !waited))
            gst_video_codec_frame_unref(packet);
        else if (is_hurried(packet))
            gst_video_decoder_drop_frame(element_, packet);
        else
            gst_video_decoder_release_frame(element_, packet);
    }
    g_list_free(packets);
}

} // namespace

} // namespace qoro

// ------------------------------------------------------------------------------------------------------------ Element

struct QoroLibavVideo {
    GstVideoDecoder parent;
    qoro::LibavVideo* self;
};

struct QoroLibavVideoClass {
    GstVideoDecoderClass parent;
};

G_DEFINE_ABSTRACT_TYPE(QoroLibavVideo, qoro_libav_video, GST_TYPE_VIDEO_DECODER)

namespace
{

enum Property { MaxThreads = 1 };

qoro::LibavVideo& self_of(void* element)
{
    return *static_cast<QoroLibavVideo*>(element)->self;
}

gboolean open(GstVideoDecoder*)
{
    return qoro::libav() != nullptr;
}

gboolean stop(GstVideoDecoder* element)
{
    self_of(element).close();
    return TRUE;
}

gboolean set_format(GstVideoDecoder* element, GstVideoCodecState* state)
{
    return self_of(element).set_format(state);
}

GstFlowReturn handle_frame(GstVideoDecoder* element, GstVideoCodecFrame* packet)
{
    return self_of(element).decode(packet);
}

GstFlowReturn drain(GstVideoDecoder* element)
{
    return self_of(element).drain();
}

gboolean flush(GstVideoDecoder* element)
{
    self_of(element).flush();
    return TRUE;
}

gboolean decide_allocation(GstVideoDecoder* element, GstQuery* query)
{
    self_of(element).learn_allocation(query);
    return GST_VIDEO_DECODER_CLASS(qoro_libav_video_parent_class)->decide_allocation(element, query);
}

void set_property(GObject* object, guint, const GValue* value, GParamSpec*)
{
    self_of(object).max_threads = g_value_get_int(value);
}

void get_property(GObject* object, guint, GValue* value, GParamSpec*)
{
    g_value_set_int(value, self_of(object).max_threads);
}

void finalize(GObject* object)
{
    delete static_cast<QoroLibavVideo*>(static_cast<void*>(object))->self;
    G_OBJECT_CLASS(qoro_libav_video_parent_class)->finalize(object);
}

} // namespace

static void qoro_libav_video_class_init(QoroLibavVideoClass* type)
{
    GObjectClass* const object = G_OBJECT_CLASS(type);
    object->finalize = finalize;
    object->set_property = set_property;
    object->get_property = get_property;
    g_object_class_install_property(
        object, MaxThreads,
        g_param_spec_int("max-threads", "Threads", "Number of decoding threads; 0: one per processor", 0, G_MAXINT, 0,
                         static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
    GstVideoDecoderClass* const decoder = GST_VIDEO_DECODER_CLASS(type);
    decoder->open = open;
    decoder->stop = stop;
    decoder->set_format = set_format;
    decoder->handle_frame = handle_frame;
    decoder->drain = drain;
    decoder->finish = drain;
    decoder->flush = flush;
    decoder->decide_allocation = decide_allocation;
}

static void qoro_libav_video_init(QoroLibavVideo* element)
{
    GstVideoDecoder* const decoder = GST_VIDEO_DECODER(element);
    element->self = new qoro::LibavVideo(decoder);
    gst_video_decoder_set_needs_format(decoder, TRUE);
    gst_video_decoder_set_use_default_pad_acceptcaps(decoder, TRUE);
    GST_PAD_SET_ACCEPT_TEMPLATE(GST_VIDEO_DECODER_SINK_PAD(decoder));
}

namespace qoro
{

GType libav_video_type()
{
    return qoro_libav_video_get_type();
}

} // namespace qoro
