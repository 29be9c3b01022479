#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

// The functions of libavcodec, and of libavutil, which it links. None is linked here: libavcodec brings some hundred
// libraries, which a program without a video never loads. Code that calls these functions calls libav() first.

namespace qoro
{

#define QORO_LIBAV_FUNCTIONS(X)                                                                                        \
    X(av_buffer_ref)                                                                                                   \
    X(av_buffer_unref)                                                                                                 \
    X(av_channel_layout_channel_from_index)                                                                            \
    X(av_channel_layout_default)                                                                                       \
    X(av_frame_alloc)                                                                                                  \
    X(av_frame_free)                                                                                                   \
    X(av_frame_get_plane_buffer)                                                                                       \
    X(av_log_get_level)                                                                                                \
    X(av_log_set_level)                                                                                                \
    X(av_mallocz)                                                                                                      \
    X(av_new_packet)                                                                                                   \
    X(av_packet_alloc)                                                                                                 \
    X(av_packet_free)                                                                                                  \
    X(avcodec_alloc_context3)                                                                                          \
    X(avcodec_find_decoder)                                                                                            \
    X(avcodec_flush_buffers)                                                                                           \
    X(avcodec_free_context)                                                                                            \
    X(avcodec_open2)                                                                                                   \
    X(avcodec_receive_frame)                                                                                           \
    X(avcodec_send_packet)

/// The functions by their own names: libav()->avcodec_open2(…).
struct LibavFunctions {
#define QORO_LIBAV_MEMBER(name) decltype(&::name) name; // NOLINT(bugprone-macro-parentheses): a name
    QORO_LIBAV_FUNCTIONS(QORO_LIBAV_MEMBER)
#undef QORO_LIBAV_MEMBER
};

/// Loads libavcodec, once. Any thread; takes tens of milliseconds the first time.
/// @return null if it is not installed, or is another version than this program was compiled for
const LibavFunctions* libav();

} // namespace qoro
