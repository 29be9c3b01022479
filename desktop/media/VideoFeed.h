#pragma once

#include "desktop/media/ServerWait.h"

#include <gst/gst.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace qoro
{

/// Where the bytes of one video come from: a file, or a server, whose bytes are all kept, so that a replay or a seek
/// asks it for nothing again. It outlives the pipeline that it is put into.
class VideoFeed
{
public:
    /// Called by GStreamer's threads.
    struct News {
        /// complete() changed.
        std::function<void()> changed;
        /// The bytes are of no use, in words.
        std::function<void(const std::string& reason)> failed;
    };

    /// @param location a file's path, or else an http or https address
    /// @param server_seconds how long its server may send nothing before it is asked once more, and then given up
    VideoFeed(std::string location, bool is_file, unsigned server_seconds, News news);

    /// Puts its elements into a pipeline.
    /// @return what a decoder is to be linked behind; null when that has failed
    GstElement* add_to(GstBin* pipeline);
    /// The element that reports what the server, or the file, fails with.
    bool is_source(const GstObject* object) const { return object == GST_OBJECT(source_); }

    /// To be called once the video's duration is known, in seconds.
    void learn_rate(double duration);
    /// Everything that the source has was read.
    bool complete() const { return complete_; }
    /// Whether reading on waits for data. To be asked again and again, by one thread.
    bool starved();
    /// Seconds of the video that lie ready, by its own rate.
    double seconds_ready();

private:
    GstElement* make(GstBin* pipeline, const char* name);
    bool keep(GstBin* pipeline);

    static void on_file(GstElement* keeper, GParamSpec*, gpointer);
    static GstPadProbeReturn on_event(GstPad*, GstPadProbeInfo* info, gpointer feed);
    static GstPadProbeReturn on_query(GstPad*, GstPadProbeInfo* info, gpointer);
    static GstPadProbeReturn on_data(GstPad*, GstPadProbeInfo* info, gpointer feed);

    const std::string location_;
    const bool is_file_;
    const unsigned server_seconds_;
    const News news_;
    GstElement* source_ = nullptr;
    /// Keeps what a server has sent; null for a file.
    GstElement* keeper_ = nullptr;
    ServerWait wait_;
    std::atomic<bool> complete_;
    /// Bytes that the source has sent.
    std::atomic<std::uint64_t> received_ = 0;
    /// Bytes a second.
    double rate_;
};

} // namespace qoro
