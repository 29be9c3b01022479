#pragma once

#include "desktop/media/LibavLibrary.h"

#include <gst/gst.h>
#include <gst/video/video.h>

namespace qoro
{

/// GStreamer's name of a pixel format; GST_VIDEO_FORMAT_UNKNOWN if it has none for it.
GstVideoFormat picture_format(int libav_format);
/// The pixel formats that picture_format() knows, as caps of raw video.
GstCaps* picture_caps();

/// What the caps of decoded pictures say, as far as the decoder knows it.
struct PictureForm {
    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
    int width = 0;
    int height = 0;
    /// Pixel aspect ratio; 0 while unknown.
    int par_n = 0;
    int par_d = 0;
    bool interlaced = false;
    bool top_field_first = false;
    bool repeats_fields = false;
    GstVideoChromaSite chroma_site = GST_VIDEO_CHROMA_SITE_UNKNOWN;
    GstVideoColorimetry colours = {GST_VIDEO_COLOR_RANGE_UNKNOWN, GST_VIDEO_COLOR_MATRIX_UNKNOWN,
                                   GST_VIDEO_TRANSFER_UNKNOWN, GST_VIDEO_COLOR_PRIMARIES_UNKNOWN};
};
PictureForm form_of(const AVFrame& frame);
/// Whether two forms agree in everything but their fields.
bool same_picture(const PictureForm& one, const PictureForm& other);
bool same_fields(const PictureForm& one, const PictureForm& other);

/// Completes the description of decoded pictures with what the decoder has found; what the container states takes
/// precedence.
/// @param input the decoder's input
/// @param rate pictures per second, for an input that does not state it; 0/1 if unknown
/// @param mixed whether progressive and interlaced pictures, or both orders of fields, occur
void describe_pictures(GstVideoInfo& info, const GstVideoCodecState& input, const PictureForm& form, AVRational rate,
                       bool mixed);

/// A buffer of the frame's own memory, without a copy: it keeps the memory, which the decoder may still read, and is
/// therefore read-only. Its rows lie as its GstVideoMeta says.
/// @return null if the frame's memory does not suffice for its size
GstBuffer* buffer_of(const AVFrame& frame, const GstVideoInfo& info);

} // namespace qoro
