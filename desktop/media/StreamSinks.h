#pragma once

#include "desktop/media/VideoPictures.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace qoro
{

/// Where the streams of one video go: its pictures to whoever shows them, its sound to the sound server. Outlives the
/// pipeline that it is put into. Called by GStreamer's threads, unless it says otherwise.
class StreamSinks
{
public:
    /// @param silent whether the sound is thrown away; it still keeps time
    /// @param volume that the sound begins with, 0 to 1 on the sliders' scale; absent for the sound server's
    StreamSinks(std::shared_ptr<VideoPictures> pictures, bool silent, std::optional<float> volume);

    /// Gives a decoded stream its sink, unless its kind has one already.
    /// @return false when GStreamer lacks what that takes
    bool add(GstBin* pipeline, GstPad* pad);
    bool has_any() const { return picture_ || sound_; }
    /// Whether a picture or sound has come since the start, or since the last seek.
    bool got_any() const { return got_any_; }
    /// Whether something is reported by the sound's sink or a part of it.
    bool is_of_sound(GstObject* from) const;

    /// Any thread: how long the sound server has been asked to take the sound; 0 while it is not.
    std::chrono::duration<double> opening_sound_since() const;

private:
    using Clock = std::chrono::steady_clock;

    bool add_picture(GstBin* pipeline, GstPad* pad);
    void add_sound(GstBin* pipeline, GstPad* pad);
    GstElement* open_sound();

    void watch(GstPad* entry);

    static GstPadProbeReturn on_data(GstPad*, GstPadProbeInfo* info, gpointer sinks);
    static GstFlowReturn on_preroll(GstAppSink* sink, gpointer sinks);
    static GstFlowReturn on_sample(GstAppSink* sink, gpointer sinks);

    const std::shared_ptr<VideoPictures> pictures_;
    const bool silent_;
    const std::optional<float> volume_;
    std::atomic<GstElement*> picture_ = nullptr;
    std::atomic<GstElement*> sound_ = nullptr;
    std::atomic<bool> got_any_ = false;
    /// When opening the sound began; 0 when it is not being opened.
    std::atomic<Clock::rep> sound_opening_ = 0;
};

} // namespace qoro
