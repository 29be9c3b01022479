#pragma once

#include "desktop/media/VideoFrame.h"
#include "platform/Geometry.h"

#include <memory>

typedef struct _cairo_surface cairo_surface_t;

namespace qoro
{

class GdkDecodedImage;

/// Deleter of Picture.
struct PictureEnd {
    void operator()(cairo_surface_t* picture) const;
};
/// Pixels in the format that Cairo draws without conversion. Drawing GTK's own textures in memory converts them through
/// floating point every time, which costs more than the rest of a frame.
using Picture = std::unique_ptr<cairo_surface_t, PictureEnd>;

/// Shares the frame's pixels without copying. Null for an empty frame.
Picture picture_of(const VideoFrame& frame);
/// Converts the image's pixels.
Picture picture_of(const GdkDecodedImage& image);

/// Pixels; 0 by 0 for null.
CGSize picture_size(const Picture& picture);

} // namespace qoro
