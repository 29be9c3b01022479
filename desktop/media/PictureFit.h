#pragma once

#include "platform/Ports.h"

namespace qoro
{

/// The visible part of a decoded frame and its size on the screen.
struct PictureFit {
    /// The visible part in the frame's own pixels. Offsets and sizes are even, so that the part covers whole chroma
    /// samples.
    int source_x = 0;
    int source_y = 0;
    int source_width = 0;
    int source_height = 0;
    /// Size of the part on the screen, in device pixels.
    int width = 0;
    int height = 0;

    friend bool operator==(const PictureFit&, const PictureFit&) = default;
};

/// Fits a frame into a box: the whole frame as large as the box permits (aspect fit, and no scaling), its middle over
/// the whole box (aspect fill), or the whole frame stretched over the box (fill).
/// @param frame_width, frame_height pixels
/// @param pixel_ratio width of a frame's pixel divided by its height
/// @param box_width, box_height device pixels, above 0
PictureFit fit_picture(int frame_width, int frame_height, double pixel_ratio, int box_width, int box_height,
                       MPMovieScalingMode scaling_mode);

} // namespace qoro
