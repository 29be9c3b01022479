#include "desktop/glib/Owned.h"
#include "desktop/media/LibavDecoder.h"
#include "desktop/media/LibavElements.h"
#include "desktop/media/LibavSound.h"

#include <gst/audio/gstaudiodecoder.h>

namespace qoro
{

namespace
{

using Buffer = Owned<GstBuffer, gst_buffer_unref>;

/// The state of one element. Guarded by the element's stream lock.
class LibavAudio
{
public:
    explicit LibavAudio(GstAudioDecoder* element) : element_(element) {}

    bool set_format(GstCaps* caps);
    /// @param packet null at the end, and where the stream is interrupted
    GstFlowReturn decode(GstBuffer* packet);
    void flush()
    {
        if (decoder_)
            decoder_->flush();
    }
    void close() { decoder_.reset(); }

private:
    GstFlowReturn damaged();
    GstFlowReturn collect(Buffer& sound);
    bool agree_on_form(const AVFrame& frame);

    GstAudioDecoder* const element_;
    std::unique_ptr<LibavDecoder> decoder_;
    GstAudioInfo form_{};
};

bool LibavAudio::set_format(GstCaps* caps)
{
    LibavDecoder::Setup setup;
    setup.codec = codec_of(element_);
    setup.caps = caps;
    decoder_ = LibavDecoder::open(setup);
    gst_audio_info_init(&form_);
    return decoder_ != nullptr;
}

GstFlowReturn LibavAudio::decode(GstBuffer* packet)
{
    // At the end, nothing is missing: these decoders return each packet's sound at once.
    if (!packet)
        return GST_FLOW_OK;
    if (!decoder_)
        return GST_FLOW_NOT_NEGOTIATED;
    GstFlowReturn flow = decoder_->send(packet, 0) ? GST_FLOW_OK : damaged();
    Buffer sound;
    if (flow == GST_FLOW_OK)
        flow = collect(sound);
    // Such as the frame in which an MP3 file describes itself.
    if (GST_BUFFER_FLAG_IS_SET(packet, GST_BUFFER_FLAG_DECODE_ONLY))
        sound.reset();
    // Also passes over a packet without sound.
    return flow == GST_FLOW_OK ? gst_audio_decoder_finish_frame(element_, sound.release(), 1) : flow;
}

/// The base class decides how many faults it tolerates.
GstFlowReturn LibavAudio::damaged()
{
    GstFlowReturn flow = GST_FLOW_OK;
    GST_AUDIO_DECODER_ERROR(element_, 1, STREAM, DECODE, (nullptr), ("damaged data"), flow);
    return flow;
}

/// Joins the frames that the decoder has ready.
GstFlowReturn LibavAudio::collect(Buffer& sound)
{
    for (;;) {
        const LibavDecoder::Found found = decoder_->receive();
        if (found == LibavDecoder::Found::Damage)
            return damaged();
        if (found != LibavDecoder::Found::Frame)
            return GST_FLOW_OK;
        const AVFrame& frame = decoder_->frame();
        if (!agree_on_form(frame))
            return GST_FLOW_NOT_NEGOTIATED;
        Buffer more(buffer_of(frame, form_));
        if (!more)
            return GST_FLOW_ERROR;
        sound.reset(sound ? gst_buffer_append(sound.release(), more.release()) : more.release());
    }
}

/// Tells the next element what the sound is like, if that has changed.
bool LibavAudio::agree_on_form(const AVFrame& frame)
{
    GstAudioInfo form;
    gst_audio_info_init(&form);
    if (!describe_sound(form, frame))
        return false;
    if (gst_audio_info_is_equal(&form, &form_))
        return true;
    form_ = form;
    return gst_audio_decoder_set_output_format(element_, &form_);
}

} // namespace

} // namespace qoro

// ------------------------------------------------------------------------------------------------------------ Element

struct QoroLibavAudio {
    GstAudioDecoder parent;
    qoro::LibavAudio* self;
};

struct QoroLibavAudioClass {
    GstAudioDecoderClass parent;
};

G_DEFINE_ABSTRACT_TYPE(QoroLibavAudio, qoro_libav_audio, GST_TYPE_AUDIO_DECODER)

namespace
{

qoro::LibavAudio& audio_of(void* element)
{
    return *static_cast<QoroLibavAudio*>(element)->self;
}

gboolean open_audio(GstAudioDecoder*)
{
    return qoro::libav() != nullptr;
}

gboolean stop_audio(GstAudioDecoder* element)
{
    audio_of(element).close();
    return TRUE;
}

gboolean set_audio_format(GstAudioDecoder* element, GstCaps* caps)
{
    return audio_of(element).set_format(caps);
}

GstFlowReturn handle_packet(GstAudioDecoder* element, GstBuffer* packet)
{
    return audio_of(element).decode(packet);
}

void flush_audio(GstAudioDecoder* element, gboolean)
{
    audio_of(element).flush();
}

void finalize_audio(GObject* object)
{
    delete static_cast<QoroLibavAudio*>(static_cast<void*>(object))->self;
    G_OBJECT_CLASS(qoro_libav_audio_parent_class)->finalize(object);
}

} // namespace

static void qoro_libav_audio_class_init(QoroLibavAudioClass* type)
{
    G_OBJECT_CLASS(type)->finalize = finalize_audio;
    GstAudioDecoderClass* const decoder = GST_AUDIO_DECODER_CLASS(type);
    decoder->open = open_audio;
    decoder->stop = stop_audio;
    decoder->set_format = set_audio_format;
    decoder->handle_frame = handle_packet;
    decoder->flush = flush_audio;
}

static void qoro_libav_audio_init(QoroLibavAudio* element)
{
    GstAudioDecoder* const decoder = GST_AUDIO_DECODER(element);
    element->self = new qoro::LibavAudio(decoder);
    gst_audio_decoder_set_needs_format(decoder, TRUE);
    gst_audio_decoder_set_use_default_pad_acceptcaps(decoder, TRUE);
    GST_PAD_SET_ACCEPT_TEMPLATE(GST_AUDIO_DECODER_SINK_PAD(decoder));
}

namespace qoro
{

GType libav_audio_type()
{
    return qoro_libav_audio_get_type();
}

} // namespace qoro
