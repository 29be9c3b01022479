#pragma once

#include "desktop/glib/Owned.h"
#include "desktop/media/VideoPictures.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace qoro
{

/// Sinks for the streams of one video: pictures are passed to VideoPictures, sound to the sound server. Must outlive
/// the pipeline that contains the sinks. Called by GStreamer's threads unless stated otherwise.
class StreamSinks
{
public:
    /// @param silent whether the sound is discarded; it still paces the playback
    /// @param volume initial volume, 0 to 1 on the slider's scale; absent: the sound server's choice
    StreamSinks(std::shared_ptr<VideoPictures> pictures, bool silent, std::optional<float> volume);

    /// Links a decoded stream to a new sink, unless its kind already has one.
    /// @return false if GStreamer lacks a required element
    bool add(GstBin* pipeline, GstPad* pad);
    /// Whether any stream has a sink.
    bool has_any() const { return picture_ || sound_; }
    /// Whether a picture or sound has arrived since the start or the last seek.
    bool got_any() const { return got_any_; }
    /// Duration of the decoded frames that wait for the sink, in seconds. To be called while the pipeline exists.
    double seconds_ahead() const;
    /// Whether a message comes from the sound sink or one of its parts.
    bool is_of_sound(GstObject* from) const;

    /// Time since the sound server was asked to open the stream; 0 while no such call is pending. Any thread may call
    /// this.
    std::chrono::duration<double> opening_sound_since() const;

private:
    using Clock = std::chrono::steady_clock;

    bool add_picture(GstBin* pipeline, GstPad* pad);
    void add_sound(GstBin* pipeline, GstPad* pad);
    ObjectRef<GstElement> open_sound();

    void watch(GstPad* entry);

    static GstPadProbeReturn on_data(GstPad*, GstPadProbeInfo* info, gpointer sinks);
    static GstPadProbeReturn on_frame(GstPad* pad, GstPadProbeInfo* info, gpointer sinks);
    static GstFlowReturn on_preroll(GstAppSink* sink, gpointer sinks);
    static GstFlowReturn on_sample(GstAppSink* sink, gpointer sinks);

    const std::shared_ptr<VideoPictures> pictures_;
    const bool silent_;
    const std::optional<float> volume_;
    /// Holds decoded frames for the sink of the picture.
    std::atomic<GstElement*> ahead_ = nullptr;
    std::atomic<GstElement*> picture_ = nullptr;
    std::atomic<GstElement*> sound_ = nullptr;
    std::atomic<bool> got_any_ = false;
    /// When the last frame arrived and its picture, if any, was made. The sink's thread only.
    Clock::time_point frame_ready_;
    /// Start of the pending attempt to open the sound; 0 if there is none.
    std::atomic<Clock::rep> sound_opening_ = 0;
};

} // namespace qoro
