#include "desktop/media/LibavDecoder.h"

#include <utility>

namespace qoro
{

namespace
{

/// The largest picture of H.264's and HEVC's level 6.2, in pixels. Larger ones are refused.
constexpr std::int64_t MostPixels = std::int64_t{8192} * 4352;
/// Bytes; libavcodec's own limit for what a container stores for a decoder.
constexpr gsize MostHeader = 1U << 28;

} // namespace

std::unique_ptr<LibavDecoder> LibavDecoder::open(const Setup& setup)
{
    if (!libav())
        return nullptr;
    std::unique_ptr<LibavDecoder> decoder(new LibavDecoder);
    return decoder->set_up(setup) ? std::move(decoder) : nullptr;
}

bool LibavDecoder::set_up(const Setup& setup)
{
    const AVCodec* const codec = libav()->avcodec_find_decoder(setup.codec);
    frame_.reset(libav()->av_frame_alloc());
    context_.reset(codec ? libav()->avcodec_alloc_context3(codec) : nullptr);
    if (!context_ || !frame_)
        return false;
    AVCodecContext& context = *context_;
    const GstStructure* const caps = gst_caps_get_structure(setup.caps, 0);
    gst_structure_get_int(caps, "rate", &context.sample_rate);
    int channels = 0;
    if (gst_structure_get_int(caps, "channels", &channels) && channels > 0)
        libav()->av_channel_layout_default(&context.ch_layout, channels);
    context.err_recognition = AV_EF_CRCCHECK;
    context.thread_count = setup.threads;
    context.thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    if (codec->type == AVMEDIA_TYPE_VIDEO) {
        context.max_pixels = MostPixels;
        // Damaged pictures are shown. Also crops the left edge where that leaves rows at odd addresses.
        context.flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT | AV_CODEC_FLAG_UNALIGNED;
        // Waits for as many pictures as the standard permits before the first one of a stream that does not state its
        // order; otherwise its first pictures could appear in the wrong order.
        context.strict_std_compliance = FF_COMPLIANCE_STRICT;
    }
    return take_header(gst_structure_get_value(caps, "codec_data")) &&
           libav()->avcodec_open2(&context, codec, nullptr) == 0;
}

bool LibavDecoder::take_header(const GValue* value)
{
    GstBuffer* const header = value && GST_VALUE_HOLDS_BUFFER(value) ? gst_value_get_buffer(value) : nullptr;
    if (!header)
        return true;
    const gsize size = gst_buffer_get_size(header);
    if (size >= MostHeader - AV_INPUT_BUFFER_PADDING_SIZE)
        return false;
    // The context frees it.
    context_->extradata = static_cast<std::uint8_t*>(libav()->av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!context_->extradata)
        return false;
    context_->extradata_size = static_cast<int>(gst_buffer_extract(header, 0, context_->extradata, size));
    return true;
}

bool LibavDecoder::send(GstBuffer* coded, std::int64_t number)
{
    const gsize size = gst_buffer_get_size(coded);
    // An empty packet would mean the end.
    if (size == 0 || size > static_cast<gsize>(G_MAXINT32))
        return false;
    const std::unique_ptr<AVPacket, Free> packet(libav()->av_packet_alloc());
    if (!packet || libav()->av_new_packet(packet.get(), static_cast<int>(size)) != 0)
        return false;
    gst_buffer_extract(coded, 0, packet->data, size);
    packet->pts = number;
    return libav()->avcodec_send_packet(context_.get(), packet.get()) == 0;
}

void LibavDecoder::end()
{
    libav()->avcodec_send_packet(context_.get(), nullptr);
}

LibavDecoder::Found LibavDecoder::receive()
{
    const int result = libav()->avcodec_receive_frame(context_.get(), frame_.get());
    if (result == 0)
        return Found::Frame;
    if (result == AVERROR(EAGAIN))
        return Found::Nothing;
    return result == AVERROR_EOF ? Found::End : Found::Damage;
}

void LibavDecoder::flush()
{
    libav()->avcodec_flush_buffers(context_.get());
}

void LibavDecoder::set_hurried(bool hurried)
{
    context_->skip_frame = hurried ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
}

} // namespace qoro
