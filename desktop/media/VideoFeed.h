#pragma once

#include "desktop/media/ServerWait.h"

#include <gst/gst.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace qoro
{

/// Source of the bytes of one video: a file, or a server, whose bytes are all stored so that a replay or a seek sends
/// no further request. Must outlive the pipeline that contains its elements.
class VideoFeed
{
public:
    /// Called by GStreamer's threads.
    struct News {
        /// The result of complete() has changed.
        std::function<void()> changed;
        /// The data is unusable, for a reason in words.
        std::function<void(const std::string& reason)> failed;
    };

    /// @param location path of a file, or http or https address
    /// @param server_seconds seconds without data after which the server is contacted once more, and then given up
    VideoFeed(std::string location, bool is_file, unsigned server_seconds, News news);

    /// Adds the feed's elements to a pipeline.
    /// @return the element to link a decoder to; null on failure
    GstElement* add_to(GstBin* pipeline);
    /// Whether an object is the element that reports errors of the server or file.
    bool is_source(const GstObject* object) const { return object == GST_OBJECT(source_); }

    /// To be called once the duration is known.
    /// @param duration seconds
    void learn_rate(double duration);
    /// Whether everything that the source has was read.
    bool complete() const { return complete_; }
    /// Whether reading is blocked by a lack of data. To be polled by one thread.
    bool starved();
    /// Buffered data in seconds, calculated from the video's average rate. Not for a file.
    double seconds_ready();
    /// Bytes received from the server; any thread may call this and size().
    std::uint64_t received() const { return received_; }
    /// Bytes of the whole video; 0 while unknown, and for a file.
    std::uint64_t size() const { return size_; }

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
    /// Stores what a server has sent; null for a file.
    GstElement* keeper_ = nullptr;
    ServerWait wait_;
    std::atomic<bool> complete_;
    /// Bytes received from the source.
    std::atomic<std::uint64_t> received_ = 0;
    std::atomic<std::uint64_t> size_ = 0;
    /// Bytes per second.
    double rate_;
};

} // namespace qoro
