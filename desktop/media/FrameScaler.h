#pragma once

#include "desktop/media/PictureFit.h"
#include "desktop/media/VideoFrame.h"

#include <memory>
#include <vector>

typedef struct _GstSample GstSample;
typedef struct _GstCaps GstCaps;

namespace qoro
{

/// Converts decoded frames to pictures for the screen. A frame is first scaled in its own colour format, which has half
/// as many bytes and uses the converter's fast path; only the small picture is converted to the screen's format. This
/// takes half the time of scaling and converting a whole frame in one pass, and makes no other copies.
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

    std::unique_ptr<Input> input_;
    std::vector<Step> steps_;
    PictureFit fit_;
};

} // namespace qoro
