#include "desktop/media/PictureFit.h"

#include "platform/Ports.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{
int even_part(int whole, double share)
{
    const int part = static_cast<int>(std::lround(whole * share / 2)) * 2;
    return std::clamp(part, std::min(2, whole), whole);
}

int shown(double length, int most)
{
    return std::clamp(static_cast<int>(std::lround(length)), 1, most);
}
} // namespace

PictureFit fit_picture(int frame_width, int frame_height, double pixel_ratio, int box_width, int box_height,
                       MPMovieScalingMode scaling_mode)
{
    PictureFit fit{0, 0, frame_width, frame_height, box_width, box_height};
    const double natural_width = frame_width * pixel_ratio;
    const double natural_height = frame_height;
    switch (scaling_mode) {
    case MPMovieScalingModeFill:
        return fit;
    case MPMovieScalingModeAspectFill: {
        const double scale = std::max(box_width / natural_width, box_height / natural_height);
        fit.source_width = even_part(frame_width, box_width / (natural_width * scale));
        fit.source_height = even_part(frame_height, box_height / (natural_height * scale));
        fit.source_x = (frame_width - fit.source_width) / 4 * 2;
        fit.source_y = (frame_height - fit.source_height) / 4 * 2;
        return fit;
    }
    default: {
        const double scale = std::min(box_width / natural_width, box_height / natural_height);
        fit.width = shown(natural_width * scale, box_width);
        fit.height = shown(natural_height * scale, box_height);
        return fit;
    }
    }
}

} // namespace qoro
