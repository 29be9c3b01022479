#pragma once

#include <cstddef>
#include <memory>

typedef struct _GBytes GBytes;

namespace qoro
{

/// One picture of a video, ready for display.
struct VideoFrame {
    /// Device pixels.
    int width = 0;
    int height = 0;
    /// Bytes per row.
    std::size_t stride = 0;
    /// Rows of four-byte pixels: blue, green, red, 255 (GDK_MEMORY_DEFAULT on a little-endian machine, opaque). Shared
    /// and immutable. Null if there is no picture.
    std::shared_ptr<GBytes> pixels;

    explicit operator bool() const { return pixels != nullptr; }
};

} // namespace qoro
