#pragma once

#include "desktop/media/VideoPictures.h"
#include "platform/Ports.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qoro
{

/// One video in GStreamer. Everything that may wait, for a server, a disk or the sound, happens on a thread of its own:
/// the calls here only say what is wanted, and destroying it at any moment takes no time.
/// To be used on the main thread.
class Pipeline
{
public:
    struct Opening {
        /// A file's path, or else an http or https address.
        std::string location;
        bool is_file = false;
        /// Whether the sound is thrown away; it still keeps time.
        bool silent = false;
        /// The volume that its sound stream begins with, 0 to 1 on the sliders' scale; absent for the sound server's.
        std::optional<float> volume;
        /// Seconds that the server may send nothing before it is asked once more, and then given up.
        unsigned server_seconds = 10;
    };

    /// Hears the news, each on the main loop as an event of its own. It may destroy the pipeline there.
    class Listener
    {
    public:
        virtual ~Listener() = default;
        /// The first picture and sound are there.
        /// @param duration seconds
        virtual void loaded(double duration) = 0;
        /// short_of_data() changed.
        virtual void data_changed() = 0;
        /// The last seek is done.
        /// @param reached false when the video can't be sought in
        virtual void sought(bool reached) = 0;
        /// Everything has been played.
        virtual void ended() = 0;
        /// It won't go on. Reported once; what stands before the fault has been played.
        virtual void failed(const std::string& reason) = 0;
        /// The sound can't be played; a silent pipeline could take over.
        virtual void sound_failed() = 0;
    };

    /// Begins to load at once, and then stands paused.
    Pipeline(Opening opening, std::shared_ptr<VideoPictures> pictures, MainLoop& loop, Listener& listener);
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    /// Plays, or stands paused. Before it is loaded it plays as soon as it is.
    void run(bool playing);
    /// To be called once it is loaded.
    /// @param time seconds, within the video
    void seek(double time);
    /// Whether a seek is under way.
    bool seeking() const;
    /// Seconds; absent before it is loaded and while a seek is under way.
    std::optional<double> position() const;
    /// Whether less is there than should be before playing goes on.
    bool short_of_data() const;

    /// Loads GStreamer and what most videos need, once; returns at once.
    static void warm_up();
    /// How many frames all pipelines have left out so far, because they would have come too late. Any thread.
    static std::uint64_t dropped_frames();
    /// Waits until every pipeline that was destroyed has let go of everything.
    /// @param seconds how long at most
    static void wait_until_gone(double seconds);

private:
    struct Core;
    std::shared_ptr<Core> core_;
};

} // namespace qoro
