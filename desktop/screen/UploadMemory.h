#pragma once

#include <memory>

typedef struct _GdkDisplay GdkDisplay;
typedef struct _cairo_surface cairo_surface_t;

namespace qoro
{

/// Prevents the reallocation of the memory that transfers pictures to an X server. The memory is a Cairo pool that is
/// freed whenever it is empty, which would be after every frame; allocating it again costs both sides more than drawing
/// a frame of a phone's size. One image that stays allocated keeps the pool alive. Has no effect on other displays.
class UploadMemory
{
public:
    /// @param width, height of the largest picture to be drawn, in pixels
    UploadMemory(GdkDisplay* display, int width, int height);
    ~UploadMemory();
    UploadMemory(const UploadMemory&) = delete;
    UploadMemory& operator=(const UploadMemory&) = delete;

private:
    cairo_surface_t* kept_ = nullptr;
};

} // namespace qoro
