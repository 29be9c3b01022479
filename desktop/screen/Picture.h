#pragma once

#include "desktop/media/VideoFrame.h"
#include "platform/Geometry.h"

#include <memory>

typedef struct _cairo_surface cairo_surface_t;

namespace qoro
{

class GdkDecodedImage;

struct PictureEnd {
    void operator()(cairo_surface_t* picture) const;
};
/// Pixels in the form that is drawn without being converted: GTK's own textures go through floating point each time
/// that they are drawn in memory, which costs more than everything else about a frame.
using Picture = std::unique_ptr<cairo_surface_t, PictureEnd>;

/// The frame's own pixels, not copied. Null for an empty frame.
Picture picture_of(const VideoFrame& frame);
/// The image's pixels, converted once.
Picture picture_of(const GdkDecodedImage& image);

/// Pixels.
CGSize picture_size(const Picture& picture);

} // namespace qoro
