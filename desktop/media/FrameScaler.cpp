#include "desktop/media/FrameScaler.h"

#include "desktop/glib/Owned.h"

#include <gst/gst.h>
#include <gst/video/video.h>

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

VideoFrame FrameScaler::scale(GstSample* sample, int box_width, int box_height, MPMovieScalingMode scaling_mode)
{
    GstBuffer* decoded = gst_sample_get_buffer(sample);
    GstCaps* caps = gst_sample_get_caps(sample);
    if (!decoded || !caps)
        return {};
    prepare(caps, box_width, box_height, scaling_mode);
    if (steps_.empty())
        return {};

    const GstVideoInfo& out = steps_.back().out;
    const std::size_t size = GST_VIDEO_INFO_SIZE(&out);
    gpointer pixels = g_malloc(size);
    const Buffer picture(
        gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels, size, 0, size, nullptr, nullptr));
    const GstVideoInfo* info = &input_->info;
    GstBuffer* from = decoded;
    bool made = true;
    for (const Step& step : steps_) {
        GstBuffer* to = step.scratch ? step.scratch.get() : picture.get();
        Mapped source(*info, from, GST_MAP_READ);
        Mapped target(step.out, to, GST_MAP_WRITE);
        if (!source || !target) {
            made = false;
            break;
        }
        gst_video_converter_frame(step.converter.get(), &source, &target);
        info = &step.out;
        from = to;
    }
    const std::shared_ptr<GBytes> bytes(g_bytes_new_take(pixels, size), g_bytes_unref);
    if (!made)
        return {};
    return {fit_.width, fit_.height, static_cast<std::size_t>(GST_VIDEO_INFO_PLANE_STRIDE(&out, 0)), bytes};
}

} // namespace qoro
