#pragma once

#include <gst/gst.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qoro::test
{

/// What GStreamer, with this program's decoders, makes of a file.
struct DecodedFile {
    /// The samples without padding: the planes of each picture, or interleaved sound.
    std::string samples;
    /// Of each buffer, in nanoseconds.
    std::vector<GstClockTime> times;
    /// Of the first buffer.
    std::string caps;
    /// The type of the element that made the last buffers.
    std::string decoder;
    /// Number of pictures that were reported as dropped.
    std::size_t dropped = 0;
    /// Why it ended early; empty if it did not.
    std::string error;
};

struct Decoding {
    /// "video" or "audio".
    std::string kind = "video";
    int threads = 1;
    /// Whether the receiver reads GstVideoMeta, so that pictures need not be copied.
    bool rows_anywhere = false;
    /// Seconds to begin at, by a seek after the first picture.
    double from = 0;
    /// How often the file is decoded, each time after a seek to the beginning; the samples of all follow each other.
    int times = 1;
    /// Called with each buffer and the sink that it has reached. May be null.
    std::function<void(GstSample*, GstElement* sink)> on_sample = nullptr;
};

/// Decodes a file until its end or an error.
DecodedFile decode(const std::string& path, const Decoding& how = {});

/// Appends the samples of a picture or of sound, without padding.
void append_samples(std::string& samples, GstSample* sample);

/// Calls ffmpeg's program.
/// @return whether it has succeeded
bool run_ffmpeg(const std::string& arguments);

} // namespace qoro::test
