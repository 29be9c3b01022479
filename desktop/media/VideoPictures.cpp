#include "desktop/media/VideoPictures.h"

#include "desktop/glib/StartupTrace.h"
#include "platform/Ports.h"

#include <gst/gst.h>

#include <algorithm>
#include <utility>

namespace qoro
{

namespace
{

std::shared_ptr<GstSample> held(GstSample* sample)
{
    return {gst_sample_ref(sample), gst_sample_unref};
}

bool is_same_frame(const std::shared_ptr<GstSample>& one, GstSample* other)
{
    return one && gst_sample_get_buffer(one.get()) == gst_sample_get_buffer(other);
}

} // namespace

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

void VideoPictures::prepare(GstSample* decoded)
{
    std::scoped_lock lock(making_);
    // A frame that is still here was too late and dropped, or flushed. Until a frame is put again, no time is spent on
    // pictures that may be dropped, too.
    behind_ |= static_cast<bool>(std::exchange(ahead_, {}).decoded);
    if (!behind_)
        ahead_ = {held(decoded), picture_of(decoded)};
}

bool VideoPictures::put(GstSample* decoded)
{
    std::scoped_lock lock(making_);
    Ahead ahead = std::exchange(ahead_, {});
    behind_ = false;
    // The last frame before a pause is delivered again when the playback continues.
    if (is_same_frame(decoded_, decoded))
        return false;
    decoded_ = held(decoded);
    return is_same_frame(ahead.decoded, decoded) && ahead.picture ? show(std::move(ahead.picture)) : make_picture();
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
    ahead_.picture = {};
    make_picture();
}

void VideoPictures::set_scaling_mode(MPMovieScalingMode mode)
{
    std::scoped_lock lock(making_);
    if (mode == scaling_mode_)
        return;
    scaling_mode_ = mode;
    ahead_.picture = {};
    make_picture();
}

VideoFrame VideoPictures::picture_of(GstSample* decoded)
{
    return decoded && width_ > 0 && height_ > 0 ? scaler_.scale(decoded, width_, height_, scaling_mode_) : VideoFrame();
}

bool VideoPictures::make_picture()
{
    return show(picture_of(decoded_.get()));
}

/// @return whether it was announced
bool VideoPictures::show(VideoFrame picture)
{
    const bool made = static_cast<bool>(picture);
    if (made)
        startup_point("first picture decoded");
    {
        std::scoped_lock lock(taking_);
        // The previous picture is destroyed outside the lock.
        std::swap(latest_, picture);
    }
    if (!made || !announce_ || announced_.exchange(true))
        return false;
    announce_();
    return true;
}

VideoFrame VideoPictures::latest() const
{
    std::scoped_lock lock(taking_);
    return latest_;
}

} // namespace qoro
