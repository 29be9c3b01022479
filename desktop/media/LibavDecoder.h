#pragma once

#include "desktop/media/LibavLibrary.h"

#include <gst/gst.h>

#include <cstdint>
#include <memory>

namespace qoro
{

/// One opened decoder of libavcodec. One thread at a time; the pictures and sound that it returns may outlive it.
class LibavDecoder
{
public:
    struct Setup {
        AVCodecID codec = AV_CODEC_ID_NONE;
        /// Its "codec_data", "rate" and "channels" are used; the size of pictures is stated by their stream.
        const GstCaps* caps = nullptr;
        /// Number of decoding threads; above 0.
        int threads = 1;
    };
    /// What receive() found.
    enum class Found { Frame, Nothing, End, Damage };

    /// @return null if libavcodec, or its decoder of this codec, is not installed, or the caps are unusable
    static std::unique_ptr<LibavDecoder> open(const Setup& setup);

    /// Decodes one packet. All frames must have been received before.
    /// @param number identifies the packet; its frame carries it as pts
    /// @return false if the packet is damaged
    bool send(GstBuffer* coded, std::int64_t number);
    /// The frames that are still missing follow; then flush() is required.
    void end();
    /// Takes the next frame; valid until the next call.
    Found receive();
    const AVFrame& frame() const { return *frame_; }
    /// Forgets all packets, for a seek or another start.
    void flush();
    /// Whether pictures that no other picture needs are left out.
    void set_hurried(bool hurried);
    const AVCodecContext& context() const { return *context_; }

private:
    struct Free {
        void operator()(AVCodecContext* context) const { libav()->avcodec_free_context(&context); }
        void operator()(AVFrame* frame) const { libav()->av_frame_free(&frame); }
        void operator()(AVPacket* packet) const { libav()->av_packet_free(&packet); }
    };
    LibavDecoder() = default;
    bool set_up(const Setup& setup);
    bool take_header(const GValue* value);

    std::unique_ptr<AVCodecContext, Free> context_;
    std::unique_ptr<AVFrame, Free> frame_;
};

} // namespace qoro
