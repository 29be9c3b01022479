#pragma once

#include <memory>

typedef struct _GdkDisplay GdkDisplay;
typedef struct _cairo_surface cairo_surface_t;

namespace qoro
{

/// Keeps the memory that pictures share with an X server on their way to the screen. It is a pool of Cairo's, which
/// lets it go whenever nothing stands in it, that is after every frame; taking it anew costs both sides more than
/// drawing a frame of a phone's size. One small picture that stays in it keeps it. On other displays it does nothing.
class UploadMemory
{
public:
    /// @param width, height of the largest picture to come, in pixels
    UploadMemory(GdkDisplay* display, int width, int height);
    ~UploadMemory();
    UploadMemory(const UploadMemory&) = delete;
    UploadMemory& operator=(const UploadMemory&) = delete;

private:
    cairo_surface_t* kept_ = nullptr;
};

} // namespace qoro
