#include "desktop/media/LibavPicture.h"

#include "desktop/glib/Owned.h"

#include <algorithm>
#include <array>

namespace qoro
{

namespace
{

using Buffer = Owned<GstBuffer, gst_buffer_unref>;

struct Format {
    AVPixelFormat libav;
    GstVideoFormat gst;
};

/// The J formats are the same with full range, which colour_range() reports.
constexpr std::array<Format, 16> Formats{{{AV_PIX_FMT_YUV420P, GST_VIDEO_FORMAT_I420},
                                          {AV_PIX_FMT_YUVJ420P, GST_VIDEO_FORMAT_I420},
                                          {AV_PIX_FMT_YUV422P, GST_VIDEO_FORMAT_Y42B},
                                          {AV_PIX_FMT_YUVJ422P, GST_VIDEO_FORMAT_Y42B},
                                          {AV_PIX_FMT_YUV444P, GST_VIDEO_FORMAT_Y444},
                                          {AV_PIX_FMT_YUVJ444P, GST_VIDEO_FORMAT_Y444},
                                          {AV_PIX_FMT_GRAY8, GST_VIDEO_FORMAT_GRAY8},
                                          {AV_PIX_FMT_GBRP, GST_VIDEO_FORMAT_GBR},
                                          {AV_PIX_FMT_YUV420P10LE, GST_VIDEO_FORMAT_I420_10LE},
                                          {AV_PIX_FMT_YUV422P10LE, GST_VIDEO_FORMAT_I422_10LE},
                                          {AV_PIX_FMT_YUV444P10LE, GST_VIDEO_FORMAT_Y444_10LE},
                                          {AV_PIX_FMT_GBRP10LE, GST_VIDEO_FORMAT_GBR_10LE},
                                          {AV_PIX_FMT_YUV420P12LE, GST_VIDEO_FORMAT_I420_12LE},
                                          {AV_PIX_FMT_YUV422P12LE, GST_VIDEO_FORMAT_I422_12LE},
                                          {AV_PIX_FMT_YUV444P12LE, GST_VIDEO_FORMAT_Y444_12LE},
                                          {AV_PIX_FMT_GBRP12LE, GST_VIDEO_FORMAT_GBR_12LE}}};

GstVideoColorRange colour_range(const AVFrame& frame)
{
    const bool full = frame.format == AV_PIX_FMT_YUVJ420P || frame.format == AV_PIX_FMT_YUVJ422P ||
                      frame.format == AV_PIX_FMT_YUVJ444P || frame.color_range == AVCOL_RANGE_JPEG;
    if (full)
        return GST_VIDEO_COLOR_RANGE_0_255;
    return frame.color_range == AVCOL_RANGE_MPEG ? GST_VIDEO_COLOR_RANGE_16_235 : GST_VIDEO_COLOR_RANGE_UNKNOWN;
}

GstVideoChromaSite chroma_site(AVChromaLocation location)
{
    switch (location) {
    case AVCHROMA_LOC_LEFT:
        return GST_VIDEO_CHROMA_SITE_MPEG2;
    case AVCHROMA_LOC_CENTER:
        return GST_VIDEO_CHROMA_SITE_JPEG;
    case AVCHROMA_LOC_TOPLEFT:
        return GST_VIDEO_CHROMA_SITE_DV;
    case AVCHROMA_LOC_TOP:
        return GST_VIDEO_CHROMA_SITE_V_COSITED;
    default:
        return GST_VIDEO_CHROMA_SITE_UNKNOWN;
    }
}

void describe_colours(GstVideoColorimetry& colours, const PictureForm& form, bool stated)
{
    if (!stated || colours.primaries == GST_VIDEO_COLOR_PRIMARIES_UNKNOWN)
        colours.primaries = form.colours.primaries;
    if (!stated || colours.transfer == GST_VIDEO_TRANSFER_UNKNOWN)
        colours.transfer = form.colours.transfer;
    if (!stated || colours.matrix == GST_VIDEO_COLOR_MATRIX_UNKNOWN)
        colours.matrix = form.colours.matrix;
    if (!stated || colours.range == GST_VIDEO_COLOR_RANGE_UNKNOWN)
        colours.range = form.colours.range;
}

/// A container's square pixels may only mean that it states nothing.
void describe_pixels(GstVideoInfo& info, const GstVideoInfo& input, const PictureForm& form)
{
    const bool stated = input.par_n > 0 && input.par_d > 0;
    const bool known = form.par_n > 0 && form.par_d > 0;
    const bool of_decoder = known && (!stated || input.par_n == input.par_d);
    info.par_n = of_decoder ? form.par_n : stated ? input.par_n : 1;
    info.par_d = of_decoder ? form.par_d : stated ? input.par_d : 1;
}

void describe_fields(GstVideoInfo& info, const GstVideoInfo& input, const PictureForm& form, bool stated, bool mixed)
{
    // The decoder returns the fields of an alternating stream as pictures of their own.
    if (stated && input.interlace_mode != GST_VIDEO_INTERLACE_MODE_ALTERNATE)
        info.interlace_mode = input.interlace_mode;
    else if (mixed)
        info.interlace_mode = GST_VIDEO_INTERLACE_MODE_MIXED;
    else if (form.interlaced)
        info.interlace_mode = GST_VIDEO_INTERLACE_MODE_INTERLEAVED;
    else
        info.interlace_mode = GST_VIDEO_INTERLACE_MODE_PROGRESSIVE;
}

void describe_rate(GstVideoInfo& info, const GstVideoInfo& input, AVRational rate)
{
    /// Pictures per second above which a rate is taken for an error.
    constexpr int MostRate = 1000;
    const bool stated =
        GST_VIDEO_INFO_FLAG_IS_SET(&input, GST_VIDEO_FLAG_VARIABLE_FPS) || (input.fps_n > 0 && input.fps_d > 0);
    const bool usable = rate.num > 0 && rate.den > 0 && gst_util_fraction_compare(rate.num, rate.den, MostRate, 1) <= 0;
    info.fps_n = stated ? input.fps_n : usable ? rate.num : 0;
    info.fps_d = stated ? input.fps_d : usable ? rate.den : 1;
}

void release(gpointer memory)
{
    auto* reference = static_cast<AVBufferRef*>(memory);
    libav()->av_buffer_unref(&reference);
}

/// The memory of one plane.
/// @param rows number of its rows, above 0
/// @param row_size bytes of a row that contain samples
GstMemory* plane_memory(const AVFrame& frame, int plane, int rows, int row_size)
{
    const int stride = frame.linesize[plane];
    const std::uint8_t* const data = frame.data[plane];
    const AVBufferRef* const owner = libav()->av_frame_get_plane_buffer(const_cast<AVFrame*>(&frame), plane);
    if (!owner || !data || stride < row_size || row_size <= 0 || data < owner->data)
        return nullptr;
    const auto available = static_cast<std::size_t>(owner->data + owner->size - data);
    const auto needed =
        static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows - 1) + static_cast<std::size_t>(row_size);
    if (available < needed)
        return nullptr;
    // With the rest of the last row where there is one: some elements copy whole rows.
    const std::size_t size = std::min(available, static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows));
    AVBufferRef* const kept = libav()->av_buffer_ref(owner);
    return kept ? gst_memory_new_wrapped(GST_MEMORY_FLAG_READONLY, const_cast<std::uint8_t*>(data), size, 0, size, kept,
                                         release)
                : nullptr;
}

} // namespace

GstVideoFormat picture_format(int libav_format)
{
    const auto* const found = std::ranges::find(Formats, libav_format, &Format::libav);
    return found == Formats.end() ? GST_VIDEO_FORMAT_UNKNOWN : found->gst;
}

GstCaps* picture_caps()
{
    std::array<GstVideoFormat, Formats.size()> names{};
    std::ranges::transform(Formats, names.begin(), &Format::gst);
    auto* const end = std::unique(names.begin(), names.end());
    return gst_video_make_raw_caps(names.data(), static_cast<guint>(end - names.begin()));
}

bool same_fields(const PictureForm& one, const PictureForm& other)
{
    return one.interlaced == other.interlaced && one.top_field_first == other.top_field_first &&
           one.repeats_fields == other.repeats_fields;
}

bool same_picture(const PictureForm& one, const PictureForm& other)
{
    return one.format == other.format && one.width == other.width && one.height == other.height &&
           one.par_n == other.par_n && one.par_d == other.par_d && one.chroma_site == other.chroma_site &&
           gst_video_colorimetry_is_equal(&one.colours, &other.colours);
}

PictureForm form_of(const AVFrame& frame)
{
    PictureForm form;
    form.format = picture_format(frame.format);
    form.width = frame.width;
    form.height = frame.height;
    form.par_n = frame.sample_aspect_ratio.num;
    form.par_d = frame.sample_aspect_ratio.den;
    form.interlaced = frame.interlaced_frame != 0;
    form.top_field_first = form.interlaced && frame.top_field_first != 0;
    form.repeats_fields = form.interlaced && frame.repeat_pict != 0;
    form.chroma_site = chroma_site(frame.chroma_location);
    form.colours = {colour_range(frame), gst_video_color_matrix_from_iso(static_cast<guint>(frame.colorspace)),
                    gst_video_transfer_function_from_iso(static_cast<guint>(frame.color_trc)),
                    gst_video_color_primaries_from_iso(static_cast<guint>(frame.color_primaries))};
    return form;
}

void describe_pictures(GstVideoInfo& info, const GstVideoCodecState& input, const PictureForm& form, AVRational rate,
                       bool mixed)
{
    const GstStructure* const stated = gst_caps_get_structure(input.caps, 0);
    describe_fields(info, input.info, form, gst_structure_has_field(stated, "interlace-mode"), mixed);
    if (info.interlace_mode == GST_VIDEO_INTERLACE_MODE_INTERLEAVED && !gst_structure_has_field(stated, "field-order"))
        GST_VIDEO_INFO_FIELD_ORDER(&info) =
            form.top_field_first ? GST_VIDEO_FIELD_ORDER_TOP_FIELD_FIRST : GST_VIDEO_FIELD_ORDER_BOTTOM_FIELD_FIRST;
    if (!gst_structure_has_field(stated, "chroma-site") && form.chroma_site != GST_VIDEO_CHROMA_SITE_UNKNOWN)
        info.chroma_site = form.chroma_site;
    describe_colours(info.colorimetry, form, gst_structure_has_field(stated, "colorimetry"));
    describe_rate(info, input.info, rate);
    describe_pixels(info, input.info, form);
}

GstBuffer* buffer_of(const AVFrame& frame, const GstVideoInfo& info)
{
    Buffer buffer(gst_buffer_new());
    std::array<gsize, GST_VIDEO_MAX_PLANES> offsets{};
    std::array<gint, GST_VIDEO_MAX_PLANES> strides{};
    gsize offset = 0;
    const auto planes = static_cast<int>(GST_VIDEO_INFO_N_PLANES(&info));
    for (int plane = 0; plane < planes; ++plane) {
        // In these formats, a plane is a component.
        const int component = plane;
        GstMemory* const memory =
            plane_memory(frame, plane, GST_VIDEO_INFO_COMP_HEIGHT(&info, component),
                         GST_VIDEO_INFO_COMP_WIDTH(&info, component) * GST_VIDEO_INFO_COMP_PSTRIDE(&info, component));
        if (!memory)
            return nullptr;
        const auto index = static_cast<std::size_t>(plane);
        offsets[index] = offset;
        strides[index] = frame.linesize[plane];
        offset += memory->size;
        gst_buffer_append_memory(buffer.get(), memory);
    }
    gst_buffer_add_video_meta_full(buffer.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_INFO_FORMAT(&info),
                                   static_cast<guint>(frame.width), static_cast<guint>(frame.height),
                                   static_cast<guint>(planes), offsets.data(), strides.data());
    return buffer.release();
}

} // namespace qoro
