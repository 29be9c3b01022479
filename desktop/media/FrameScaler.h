#pragma once

#include "desktop/media/PictureFit.h"
#include "desktop/media/VideoFrame.h"

#include <memory>
#include <vector>

typedef struct _GstSample GstSample;
typedef struct _GstCaps GstCaps;

namespace qoro
{

/// Makes pictures of decoded frames: scales them in their own colours first, where a frame has half as many bytes and
/// its planes take the fast path, then turns only the small picture into the colours of the screen.
/// That is half the work of scaling and converting a whole frame in one pass, and copies nothing else.
class FrameScaler
{
public:
    FrameScaler();
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    /// @param box_width, box_height device pixels, above 0
    /// @param scaling_mode MPMovieScalingMode
    /// @return an empty frame when the sample holds no picture that can be read
    VideoFrame scale(GstSample* sample, int box_width, int box_height, int scaling_mode);

private:
    struct Input;
    struct Step;

    void prepare(GstCaps* caps, int box_width, int box_height, int scaling_mode);

    std::unique_ptr<Input> input_;
    std::vector<Step> steps_;
    PictureFit fit_;
};

} // namespace qoro
