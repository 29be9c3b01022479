#include "desktop/media/VideoPictures.h"

#include "desktop/glib/StartupTrace.h"
#include "platform/Ports.h"

#include <gst/gst.h>

#include <algorithm>
#include <utility>

namespace qoro
{

VideoPictures::VideoPictures(std::function<void()> announce)
    : announce_(std::move(announce)), scaling_mode_(MPMovieScalingModeAspectFit)
{
}

VideoPictures::~VideoPictures() = default;

void VideoPictures::set_announce(std::function<void()> announce)
{
    std::scoped_lock lock(making_);
    announce_ = std::move(announce);
}

void VideoPictures::put(GstSample* decoded)
{
    std::scoped_lock lock(making_);
    // The last frame before a pause is delivered again when the playback continues.
    if (decoded_ && gst_sample_get_buffer(decoded_.get()) == gst_sample_get_buffer(decoded))
        return;
    decoded_.reset(gst_sample_ref(decoded), gst_sample_unref);
    make_picture();
}

void VideoPictures::set_box(int width, int height)
{
    std::scoped_lock lock(making_);
    width = std::max(width, 0);
    height = std::max(height, 0);
    if (width == width_ && height == height_)
        return;
    width_ = width;
    height_ = height;
    make_picture();
}

void VideoPictures::set_scaling_mode(MPMovieScalingMode mode)
{
    std::scoped_lock lock(making_);
    if (mode == scaling_mode_)
        return;
    scaling_mode_ = mode;
    make_picture();
}

void VideoPictures::make_picture()
{
    VideoFrame picture;
    if (decoded_ && width_ > 0 && height_ > 0)
        picture = scaler_.scale(decoded_.get(), width_, height_, scaling_mode_);
    const bool made = static_cast<bool>(picture);
    if (made)
        startup_point("first picture decoded");
    {
        std::scoped_lock lock(taking_);
        // The previous picture is destroyed outside the lock.
        std::swap(latest_, picture);
    }
    if (made && announce_ && !announced_.exchange(true))
        announce_();
}

VideoFrame VideoPictures::latest() const
{
    std::scoped_lock lock(taking_);
    return latest_;
}

} // namespace qoro
