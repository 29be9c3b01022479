#pragma once

#include "desktop/media/FrameScaler.h"
#include "desktop/media/VideoFrame.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

typedef struct _GstSample GstSample;

namespace qoro
{

/// The newest picture of one video. The decoder's thread puts frames in, the main thread takes pictures out.
/// Pictures are made on the decoder's thread; only when the size changes does the main thread make one, of the frame
/// that is held for that: so a paused video follows a turn of the device too.
class VideoPictures
{
public:
    /// @param announce called on any thread when there is a picture to fetch, and not again before fetched()
    explicit VideoPictures(std::function<void()> announce);
    ~VideoPictures();
    VideoPictures(const VideoPictures&) = delete;
    VideoPictures& operator=(const VideoPictures&) = delete;

    /// The decoder's thread.
    void put(GstSample* decoded);

    /// The box that pictures are fitted into, in device pixels; 0 for none: then no pictures are made.
    void set_box(int width, int height);
    /// @param mode MPMovieScalingMode
    void set_scaling_mode(int mode);
    /// Lets the next picture be announced.
    void fetched() { announced_ = false; }
    /// The newest picture; empty when there is none for the box.
    VideoFrame latest() const;

private:
    void make_picture();

    const std::function<void()> announce_;
    std::atomic<bool> announced_ = false;

    std::mutex making_;
    // Under making_.
    FrameScaler scaler_;
    std::shared_ptr<GstSample> decoded_;
    int width_ = 0;
    int height_ = 0;
    int scaling_mode_;

    mutable std::mutex taking_;
    // Under taking_.
    VideoFrame latest_;
};

} // namespace qoro
