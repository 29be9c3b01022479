#pragma once

namespace qoro
{

/// Which part of a decoded frame is shown, and how large.
struct PictureFit {
    /// The part of the frame, in its own pixels; offsets and sizes are even, so that they hold whole colour samples.
    int source_x = 0;
    int source_y = 0;
    int source_width = 0;
    int source_height = 0;
    /// The size at which the part is shown, in device pixels.
    int width = 0;
    int height = 0;

    friend bool operator==(const PictureFit&, const PictureFit&) = default;
};

/// Fits a frame into a box: all of it as large as the box allows (aspect fit, and no scaling), the middle of it over
/// the whole box (aspect fill), or all of it stretched over the box (fill).
/// @param frame_width, frame_height pixels
/// @param pixel_ratio how much wider than high a pixel of the frame is
/// @param box_width, box_height device pixels, above 0
/// @param scaling_mode MPMovieScalingMode
PictureFit fit_picture(int frame_width, int frame_height, double pixel_ratio, int box_width, int box_height,
                       int scaling_mode);

} // namespace qoro
