#pragma once

#include "desktop/media/VideoFrame.h"

#include <functional>

namespace qoro
{

/// What a player offers to the screen: its picture, already scaled to the pixels that are shown.
class PictureSource
{
public:
    virtual ~PictureSource() = default;
    /// The box on the screen that pictures are fitted into, in device pixels; 0 by 0 while the video is not shown, and
    /// costs nothing then.
    virtual void set_picture_size(int width_px, int height_px) = 0;
    /// The newest picture for the box, to be shown in its middle; empty when there is none.
    virtual VideoFrame latest_frame() const = 0;

    /// Called on the main loop when there is a new picture, at most once for each.
    std::function<void()> on_frame;
};

} // namespace qoro
