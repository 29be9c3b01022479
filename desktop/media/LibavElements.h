#pragma once

#include "desktop/media/LibavLibrary.h"

#include <gst/gst.h>

namespace qoro
{

/// Registers this program's own decoders of video and sound in this process: H.264, HEVC, MPEG-4 part 2, AAC, MP3, AC-3
/// and E-AC-3 through libavcodec. They rank above GStreamer's plugin for libavcodec, which also loads libavfilter and
/// libavformat with some fifty libraries more. libavcodec is loaded when the first element becomes ready; if it is not
/// installed, the element does not become ready, and decodebin takes another one. GStreamer must be initialised.
void register_libav_elements();

/// Whether an element is one of those, and useless because libavcodec is not installed. Loads libavcodec.
bool lacks_libav(GstElementFactory* factory);

/// The codec that an element of this program decodes.
AVCodecID codec_of(gpointer element);

/// The abstract types that the elements derive from. max-threads, a property of the video's, is the number of decoding
/// threads, or 0 for one per processor; it applies from the next format on.
GType libav_video_type();
GType libav_audio_type();

} // namespace qoro
