#include "desktop/media/LibavElements.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/LibavPicture.h"

#include <gst/audio/audio.h>

#include <array>
#include <string_view>

namespace qoro
{

namespace
{

using Caps = Owned<GstCaps, gst_caps_unref>;

/// Above GST_RANK_PRIMARY, which GStreamer's plugin has.
constexpr guint Rank = GST_RANK_PRIMARY + 1;

struct Codec {
    AVCodecID id;
    bool is_video;
    /// Of the element and of its type.
    const char* name;
    /// What it decodes: whole pictures, and frames of sound, as the parsers pass them on.
    const char* caps;
};

constexpr std::array<Codec, 7> Codecs{{
    {AV_CODEC_ID_H264, true, "QoroH264", "video/x-h264, stream-format=(string){ avc, byte-stream }, alignment=au"},
    {AV_CODEC_ID_HEVC, true, "QoroHevc",
     "video/x-h265, stream-format=(string){ hvc1, hev1, byte-stream }, alignment=au"},
    {AV_CODEC_ID_MPEG4, true, "QoroMpeg4",
     "video/mpeg, mpegversion=4, systemstream=(boolean)false, parsed=(boolean)true"},
    {AV_CODEC_ID_AAC, false, "QoroAac",
     "audio/mpeg, mpegversion=(int){ 2, 4 }, stream-format=(string){ raw, adts }, framed=(boolean)true"},
    {AV_CODEC_ID_MP3, false, "QoroMp3", "audio/mpeg, mpegversion=1, layer=3, parsed=(boolean)true"},
    {AV_CODEC_ID_AC3, false, "QoroAc3", "audio/x-ac3, framed=(boolean)true, alignment=frame"},
    {AV_CODEC_ID_EAC3, false, "QoroEac3", "audio/x-eac3, framed=(boolean)true, alignment=frame"},
}};

GQuark codec_key()
{
    return g_quark_from_static_string("qoro-codec");
}

void add_pad(GstElementClass* type, const char* name, GstPadDirection direction, const Caps& caps)
{
    gst_element_class_add_pad_template(type, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps.get()));
}

void set_up_class(gpointer type, gpointer data)
{
    const Codec& codec = *static_cast<const Codec*>(data);
    auto* const element = static_cast<GstElementClass*>(type);
    gst_element_class_set_static_metadata(element, codec.name,
                                          codec.is_video ? "Codec/Decoder/Video" : "Codec/Decoder/Audio",
                                          "Decodes through libavcodec", "Qoro Video Ad");
    add_pad(element, "sink", GST_PAD_SINK, Caps(gst_caps_from_string(codec.caps)));
    add_pad(element, "src", GST_PAD_SRC,
            Caps(codec.is_video ? picture_caps()
                                : gst_caps_from_string(GST_AUDIO_CAPS_MAKE(GST_AUDIO_NE(F32)) ", layout=interleaved")));
}

GType derive(const Codec& codec)
{
    const GType parent = codec.is_video ? libav_video_type() : libav_audio_type();
    GTypeQuery sizes;
    g_type_query(parent, &sizes);
    GTypeInfo info{};
    info.class_size = static_cast<guint16>(sizes.class_size);
    info.instance_size = static_cast<guint16>(sizes.instance_size);
    info.class_init = set_up_class;
    info.class_data = &codec;
    const GType type = g_type_register_static(parent, codec.name, &info, static_cast<GTypeFlags>(0));
    g_type_set_qdata(type, codec_key(), const_cast<Codec*>(&codec));
    return type;
}

} // namespace

void register_libav_elements()
{
    for (const Codec& codec : Codecs)
        gst_element_register(nullptr, codec.name, Rank, derive(codec));
}

bool lacks_libav(GstElementFactory* factory)
{
    const GType type = gst_element_factory_get_element_type(factory);
    return (g_type_is_a(type, libav_video_type()) || g_type_is_a(type, libav_audio_type())) && !libav();
}

AVCodecID codec_of(gpointer element)
{
    return static_cast<const Codec*>(g_type_get_qdata(G_OBJECT_TYPE(element), codec_key()))->id;
}

} // namespace qoro
