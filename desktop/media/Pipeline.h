#pragma once

#include "desktop/media/VideoPictures.h"
#include "platform/Ports.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qoro
{

/// What a sound server asks of a stream.
enum class SoundRequest { Pause, Resume };

/// A GStreamer pipeline for one video. Everything that may block, on a server, a disk or the sound device, runs on a
/// worker thread: the functions here only set the wanted state, and the destructor returns at once. Main thread only.
class Pipeline
{
public:
    /// What to open, and how.
    struct Opening {
        /// Path of a file, or http or https address.
        std::string location;
        bool is_file = false;
        /// Whether the sound is discarded; it still paces the playback.
        bool silent = false;
        /// Initial volume of the sound stream, 0 to 1 on the slider's scale; absent: the sound server's choice.
        std::optional<float> volume;
        /// Seconds without data after which the server is contacted once more, and then given up.
        unsigned server_seconds = 10;
    };

    /// Notifications of a pipeline, each on the main loop as an event of its own. A handler may destroy the pipeline.
    class Listener
    {
    public:
        virtual ~Listener() = default;
        /// The first picture and sound are available.
        /// @param duration seconds
        virtual void loaded(double duration) = 0;
        /// The result of short_of_data() has changed.
        virtual void data_changed() = 0;
        /// The last seek has finished.
        /// @param reached false if the video is not seekable
        virtual void sought(bool reached) = 0;
        /// Everything has been played.
        virtual void ended() = 0;
        /// Playback cannot continue. Reported once, after everything before the fault has been played.
        virtual void failed(const std::string& reason) = 0;
        /// The sound cannot be played; a silent pipeline could take over.
        virtual void sound_failed() = 0;
        /// The sound server asks the stream to pause or to go on, for another application's sound, such as a call.
        virtual void sound_requested(SoundRequest request) = 0;
    };

    /// Starts to load at once; the pipeline is then paused.
    /// @param pictures receives the video's pictures
    /// @param loop its post() must accept calls from any thread
    /// @param listener must outlive the pipeline
    Pipeline(const Opening& opening, std::shared_ptr<VideoPictures> pictures, MainLoop& loop, Listener& listener);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    /// Replaces the listener; later notifications go to the new one.
    /// @param listener must outlive the pipeline
    void set_listener(Listener& listener);
    /// Plays or pauses. Before the video is loaded, the state takes effect as soon as it is.
    void run(bool playing);
    /// To be called only after loaded().
    /// @param time seconds, within the video
    void seek(double time);
    /// Whether a seek is pending.
    bool seeking() const;
    /// Seconds; absent before the video is loaded and while a seek is pending.
    std::optional<double> position() const;
    /// Whether the buffered data is below the resume threshold.
    bool short_of_data() const;
    /// Bytes received from the server so far; 0 for a file.
    std::uint64_t received_bytes() const;
    /// Bytes of the whole video; 0 while unknown, and for a file.
    std::uint64_t whole_bytes() const;

    /// Loads GStreamer and the elements that most videos need, once, in the background.
    static void warm_up();
    /// Number of frames that all pipelines have dropped so far because they were late. Any thread may call this.
    static std::uint64_t dropped_frames();
    /// Blocks until every destroyed pipeline has released its resources. Any thread may call this.
    /// @param seconds maximum time to wait
    static void wait_until_gone(double seconds);

private:
    struct Core;
    std::shared_ptr<Core> core_;
};

} // namespace qoro
