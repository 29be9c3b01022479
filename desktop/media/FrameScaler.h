#pragma once

#include "desktop/media/PictureFit.h"
#include "desktop/media/PlanarScaler.h"
#include "desktop/media/VideoFrame.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

typedef struct _GstSample GstSample;
typedef struct _GstBuffer GstBuffer;
typedef struct _GstCaps GstCaps;

namespace qoro
{

/// Converts decoded frames to pictures for the screen, without another copy. Frames in the usual format are scaled by
/// PlanarScaler, which takes a third to two thirds of the time of GStreamer's converter. All others are first scaled in
/// their own colour format, which has half as many bytes and uses the converter's fast path; only the small picture is
/// converted to the screen's format.
class FrameScaler
{
public:
    FrameScaler();
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    /// @param box_width, box_height device pixels, above 0
    /// @return an empty frame if the sample contains no readable picture
    VideoFrame scale(GstSample* sample, int box_width, int box_height, MPMovieScalingMode scaling_mode);

private:
    struct Input;
    struct Step;

    void prepare(GstCaps* caps, int box_width, int box_height, MPMovieScalingMode scaling_mode);
    void plan_steps();
    bool convert(GstBuffer* decoded, void* pixels, std::size_t size) const;
    bool scale_planes(GstBuffer* decoded, void* pixels, std::size_t stride);

    std::unique_ptr<Input> input_;
    /// One of these, for the last input; neither if it cannot be converted.
    std::optional<PlanarScaler> planar_;
    std::vector<Step> steps_;
    PictureFit fit_;
};

} // namespace qoro
