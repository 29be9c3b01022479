#include "desktop/media/FrameScaler.h"

#include "desktop/glib/Owned.h"

#include <gst/gst.h>
#include <gst/video/video.h>

#include <array>
#include <cmath>
#include <utility>

namespace qoro
{

namespace
{
using Buffer = Owned<GstBuffer, gst_buffer_unref>;
using Caps = Owned<GstCaps, gst_caps_unref>;
using Converter = Owned<GstVideoConverter, gst_video_converter_free>;

/// Maps a frame; the destructor unmaps it.
class Mapped
{
public:
    Mapped(const GstVideoInfo& info, GstBuffer* buffer, int how)
        // The buffer outlives the mapping, so the mapping takes no reference.
        : mapped_(
              gst_video_frame_map(&frame_, &info, buffer,
                                  static_cast<GstMapFlags>(how | static_cast<int>(GST_VIDEO_FRAME_MAP_FLAG_NO_REF))))
    {
    }
    ~Mapped()
    {
        if (mapped_)
            gst_video_frame_unmap(&frame_);
    }
    Mapped(const Mapped&) = delete;
    Mapped& operator=(const Mapped&) = delete;

    explicit operator bool() const { return mapped_; }
    GstVideoFrame* operator&() { return &frame_; }

private:
    GstVideoFrame frame_;
    bool mapped_;
};

/// The same video format with another size or pixel format.
GstVideoInfo resized(const GstVideoInfo& from, GstVideoFormat format, int width, int height)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, format, static_cast<guint>(width), static_cast<guint>(height));
    // GstVideoConverter requires both frames to agree in these.
    info.fps_n = from.fps_n;
    info.fps_d = from.fps_d;
    info.interlace_mode = from.interlace_mode;
    if (format == GST_VIDEO_INFO_FORMAT(&from)) {
        info.colorimetry = from.colorimetry;
        info.chroma_site = from.chroma_site;
    }
    return info;
}

constexpr GstVideoFormat ScreenFormat = GST_VIDEO_FORMAT_BGRA;

/// What the picture's luma and chroma mean; absent if it is not known.
std::optional<RowColours> colours_of(const GstVideoInfo& info)
{
    double red = 0;
    double blue = 0;
    if (!gst_video_color_matrix_get_Kr_Kb(info.colorimetry.matrix, &red, &blue))
        return {};
    const double green = 1 - red - blue;
    gint offsets[GST_VIDEO_MAX_COMPONENTS];
    gint ranges[GST_VIDEO_MAX_COMPONENTS];
    gst_video_color_range_offsets(info.colorimetry.range, info.finfo, offsets, ranges);
    // In steps of 1/32, from samples times 256.
    constexpr double fine = 32 * 256;
    const double luma = 255.0 / ranges[0] * fine;
    const double chroma = 255.0 / ranges[1] * 2 * fine;
    const auto factor = [](double exact) { return static_cast<std::int16_t>(std::lround(exact)); };
    RowColours colours{};
    colours.luma = static_cast<std::uint16_t>(std::lround(luma));
    colours.offset = factor(16 - offsets[0] * luma / 256); // half a step: results are rounded down
    colours.blue_of_cb = factor(chroma * (1 - blue));
    colours.green_of_cb = factor(-chroma * (1 - blue) * blue / green);
    colours.green_of_cr = factor(-chroma * (1 - red) * red / green);
    colours.red_of_cr = factor(chroma * (1 - red));
    return colours;
}

/// The form in which almost every decoder gives its frames, for PlanarScaler; absent for another.
std::optional<PlanarScaler::Layout> layout_of(const GstVideoInfo& info, const PictureFit& fit)
{
    const std::optional<RowColours> colours = colours_of(info);
    if (GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420 || GST_VIDEO_INFO_IS_INTERLACED(&info) || !colours)
        return {};
    const auto lies_at = [&](GstVideoChromaSite first) { return (info.chroma_site & first) != 0 ? 0.5 : 1.0; };
    const PlanarScaler::Plane luma{.width = fit.source_width, .height = fit.source_height};
    const PlanarScaler::Plane chroma{.width = (fit.source_width + 1) / 2,
                                     .height = (fit.source_height + 1) / 2,
                                     .first_x = lies_at(GST_VIDEO_CHROMA_SITE_H_COSITED),
                                     .first_y = lies_at(GST_VIDEO_CHROMA_SITE_V_COSITED),
                                     .step_x = 2,
                                     .step_y = 2};
    return PlanarScaler::Layout{fit.source_width, fit.source_height, {luma, chroma, chroma}, *colours};
}
} // namespace

struct FrameScaler::Input {
    Caps caps;
    GstVideoInfo info;
    int box_width;
    int box_height;
    MPMovieScalingMode scaling_mode;
};

struct FrameScaler::Step {
    GstVideoInfo out;
    Converter converter;
    /// Output of every step but the last; null for the last.
    Buffer scratch;
};

FrameScaler::FrameScaler() = default;
FrameScaler::~FrameScaler() = default;

void FrameScaler::prepare(GstCaps* caps, int box_width, int box_height, MPMovieScalingMode scaling_mode)
{
    if (input_ && input_->caps.get() == caps && input_->box_width == box_width && input_->box_height == box_height &&
        input_->scaling_mode == scaling_mode)
        return;
    steps_.clear();
    planar_.reset();
    input_ = std::make_unique<Input>();
    input_->caps.reset(gst_caps_ref(caps));
    input_->box_width = box_width;
    input_->box_height = box_height;
    input_->scaling_mode = scaling_mode;
    GstVideoInfo& in = input_->info;
    if (!gst_video_info_from_caps(&in, caps) || GST_VIDEO_INFO_WIDTH(&in) <= 0 || GST_VIDEO_INFO_HEIGHT(&in) <= 0)
        return;
    const double pixel_ratio =
        in.par_n > 0 && in.par_d > 0 ? static_cast<double>(in.par_n) / static_cast<double>(in.par_d) : 1.0;
    fit_ = fit_picture(in.width, in.height, pixel_ratio, box_width, box_height, scaling_mode);
    if (const auto layout = layout_of(in, fit_))
        planar_.emplace(*layout, fit_.width, fit_.height);
    else
        plan_steps();
}

void FrameScaler::plan_steps()
{
    const GstVideoInfo& in = input_->info;
    GstVideoInfo from = in;
    int width = fit_.source_width;
    int height = fit_.source_height;
    const auto add = [&](GstVideoFormat format, int to_width, int to_height) {
        Step step;
        step.out = resized(in, format, to_width, to_height);
        // Linear resampling with two taps. A frame that is more than twice too large is halved first, so that each step
        // averages four pixels: as cheap as a single pass, but as smooth as a filter that reads every pixel.
        GstStructure* options =
            gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
                              GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_RESAMPLER_OPT_MAX_TAPS, G_TYPE_INT, 2,
                              GST_VIDEO_CONVERTER_OPT_THREADS, G_TYPE_UINT, 1U, nullptr);
        if (steps_.empty())
            gst_structure_set(options, GST_VIDEO_CONVERTER_OPT_SRC_X, G_TYPE_INT, fit_.source_x,
                              GST_VIDEO_CONVERTER_OPT_SRC_Y, G_TYPE_INT, fit_.source_y,
                              GST_VIDEO_CONVERTER_OPT_SRC_WIDTH, G_TYPE_INT, fit_.source_width,
                              GST_VIDEO_CONVERTER_OPT_SRC_HEIGHT, G_TYPE_INT, fit_.source_height, nullptr);
        step.converter.reset(gst_video_converter_new(&from, &step.out, options));
        from = step.out;
        width = to_width;
        height = to_height;
        steps_.push_back(std::move(step));
    };
    const GstVideoFormat own = GST_VIDEO_INFO_FORMAT(&in);
    const auto halved = [](int length, int wanted) { return wanted * 2 <= length ? length / 2 : length; };
    while (fit_.width * 2 <= width || fit_.height * 2 <= height)
        add(own, halved(width, fit_.width), halved(height, fit_.height));
    if (width != fit_.width || height != fit_.height)
        add(own, fit_.width, fit_.height);
    add(ScreenFormat, fit_.width, fit_.height);
    for (Step& step : steps_) {
        if (&step != &steps_.back())
            step.scratch.reset(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&step.out), nullptr));
        if (!step.converter) {
            steps_.clear();
            break;
        }
    }
}

bool FrameScaler::convert(GstBuffer* decoded, gpointer pixels, std::size_t size) const
{
    const Buffer picture(
        gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels, size, 0, size, nullptr, nullptr));
    const GstVideoInfo* info = &input_->info;
    GstBuffer* from = decoded;
    for (const Step& step : steps_) {
        GstBuffer* to = step.scratch ? step.scratch.get() : picture.get();
        Mapped source(*info, from, GST_MAP_READ);
        Mapped target(step.out, to, GST_MAP_WRITE);
        if (!source || !target)
            return false;
        gst_video_converter_frame(step.converter.get(), &source, &target);
        info = &step.out;
        from = to;
    }
    return !steps_.empty();
}

bool FrameScaler::scale_planes(GstBuffer* decoded, gpointer pixels, std::size_t stride)
{
    Mapped frame(input_->info, decoded, GST_MAP_READ);
    if (!frame)
        return false;
    std::array<PlanarScaler::Samples, 3> planes;
    for (guint i = 0; i < planes.size(); ++i) {
        const int shift = i == 0 ? 0 : 1;
        const std::ptrdiff_t plane_stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, i);
        planes[i] = {static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, i)) +
                         (fit_.source_y >> shift) * plane_stride + (fit_.source_x >> shift),
                     plane_stride};
    }
    planar_->scale(planes, static_cast<std::uint8_t*>(pixels), stride);
    return true;
}

VideoFrame FrameScaler::scale(GstSample* sample, int box_width, int box_height, MPMovieScalingMode scaling_mode)
{
    GstBuffer* decoded = gst_sample_get_buffer(sample);
    GstCaps* caps = gst_sample_get_caps(sample);
    if (!decoded || !caps)
        return {};
    prepare(caps, box_width, box_height, scaling_mode);
    if (steps_.empty() && !planar_)
        return {};

    const std::size_t stride = static_cast<std::size_t>(fit_.width) * 4;
    const std::size_t size = stride * static_cast<std::size_t>(fit_.height);
    gpointer pixels = g_malloc(size);
    const std::shared_ptr<GBytes> bytes(g_bytes_new_take(pixels, size), g_bytes_unref);
    if (!(planar_ ? scale_planes(decoded, pixels, stride) : convert(decoded, pixels, size)))
        return {};
    return {fit_.width, fit_.height, stride, bytes};
}

} // namespace qoro
