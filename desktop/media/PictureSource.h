#pragma once

#include "desktop/media/VideoFrame.h"

#include <functional>

namespace qoro
{

/// Interface of a player to the screen: its picture, already scaled to device pixels. Main thread only.
class PictureSource
{
public:
    virtual ~PictureSource() = default;
    /// Sets the box on the screen that pictures are fitted into, in device pixels. 0 by 0 while the video is not shown;
    /// no pictures are made then.
    virtual void set_picture_size(int width_px, int height_px) = 0;
    /// The latest picture for the box, to be centred in it; empty if there is none.
    virtual VideoFrame latest_frame() const = 0;

    /// Called on the main loop when there is a new picture, at most once per picture. May be empty.
    std::function<void()> on_frame;
};

} // namespace qoro
