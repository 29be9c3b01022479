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

/// The latest picture of one video. The sink's thread puts frames in, the main thread takes pictures out. Pictures are
/// made on the sink's thread, before they are due. Only when the size or scaling mode changes does the main thread make
/// one, from the last frame, so that a paused video is redrawn too when the device is rotated.
class VideoPictures
{
public:
    /// @param announce called when a new picture is available, and not again before fetched(); on any thread; null: not
    ///        called
    explicit VideoPictures(std::function<void()> announce);
    ~VideoPictures();
    VideoPictures(const VideoPictures&) = delete;
    VideoPictures& operator=(const VideoPictures&) = delete;

    /// Replaces the function to announce pictures with.
    void set_announce(std::function<void()> announce);
    /// Makes the picture of a frame that is not due yet, so that put() takes no time. One frame is prepared at most:
    /// the next one replaces it. Called by the sink's thread.
    void prepare(GstSample* decoded);
    /// The frame is due: its picture becomes the latest. A picture that was not prepared is made. Called by the
    /// sink's thread.
    /// @return whether the picture was announced
    bool put(GstSample* decoded);

    /// Sets the box that pictures are fitted into, in device pixels. 0: no pictures are made.
    void set_box(int width, int height);
    void set_scaling_mode(MPMovieScalingMode mode);
    /// Enables the announcement of the next picture.
    void fetched() { announced_ = false; }
    /// The latest picture; empty if there is none for the box. Any thread may call this.
    VideoFrame latest() const;

private:
    struct Ahead {
        std::shared_ptr<GstSample> decoded;
        VideoFrame picture;
    };

    VideoFrame picture_of(GstSample* decoded);
    bool make_picture();
    bool show(VideoFrame picture);

    std::atomic<bool> announced_ = false;

    std::mutex making_;
    // Guarded by making_.
    std::function<void()> announce_;
    FrameScaler scaler_;
    std::shared_ptr<GstSample> decoded_;
    /// Its frame is null while there is none, its picture empty if the frame has none or the box has changed.
    Ahead ahead_;
    /// Whether the last prepared frame was not put.
    bool behind_ = false;
    int width_ = 0;
    int height_ = 0;
    MPMovieScalingMode scaling_mode_;

    mutable std::mutex taking_;
    // Guarded by taking_.
    VideoFrame latest_;
};

} // namespace qoro
