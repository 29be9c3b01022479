#pragma once

#include "desktop/media/PictureSource.h"
#include "desktop/media/Pipeline.h"
#include "desktop/media/PreparedVideo.h"
#include "desktop/media/VideoFrame.h"
#include "desktop/media/VideoPictures.h"
#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

class Mailbox;

/// A player over GStreamer, for http and https addresses and for files. A video from a server is stored as it arrives,
/// so a replay sends no request; a video from a file never lacks data. After a failure, play() loads the video again;
/// the second and third consecutive attempt are delayed by one and two seconds. If the reloaded video differs from the
/// first one, that is a failure too. Main thread only.
class GstPlayer : public PlayerEngine, public PictureSource, private Pipeline::Listener
{
public:
    /// Settings of a player.
    struct Options {
        /// Receives the reason of a failure, before the listener is notified. May be empty.
        std::function<void(const std::string& reason)> on_failure;
        /// Receives the duration in seconds as soon as it is known, once per player. May be empty.
        std::function<void(double duration)> on_duration = {};
        /// Initial volume of new sound streams, 0 to 1 on the slider's scale; absent: the sound server's choice.
        std::function<std::optional<float>()> volume;
        /// Whether the sound is discarded.
        bool silent = false;
        /// Seconds without data after which the server is contacted once more, and then given up.
        unsigned server_seconds = 10;
        /// Called when the sound server asks the player to pause or to go on; the player itself does neither. A sound
        /// that is lost meanwhile counts as a request to go on, because no other will follow. May be empty.
        std::function<void(const GstPlayer&, SoundRequest)> on_sound_request = {};
        /// Called from the destructor; the player must not be used any more.
        std::function<void(const GstPlayer&)> on_end = {};
    };

    /// @param loop its post() must accept calls from any thread
    GstPlayer(const NSURL& source, PlayerListener& listener, MainLoop& loop);
    /// @param prepared the same video, which the player takes over; null, and one that has failed: the video is loaded
    GstPlayer(const NSURL& source, PlayerListener& listener, MainLoop& loop, Options options,
              PreparedVideo* prepared = nullptr);
    ~GstPlayer() override;

    void apply(const PlayerSettings& settings) override;
    void play() override;
    void pause() override;
    void seek(double time) override;
    double current_time() const override;
    double duration() const override { return duration_; }
    MPMovieLoadState load_state() const override { return load_state_; }
    MPMoviePlaybackState playback_state() const override { return playback_state_; }
    PictureSource* pictures() override { return this; }

    // PictureSource

    /// Pictures are fitted into the box according to the scaling mode: with a mode that preserves the aspect ratio, a
    /// picture may be smaller than the box. A picture of the new size is available on return, even while paused.
    void set_picture_size(int width_px, int height_px) override;
    VideoFrame latest_frame() const override;

    /// The viewer leaves the application: pauses a video that plays, or that is being reloaded in order to play on.
    void leave_app();
    /// Whether the first picture is still due.
    bool is_starting() const { return !seen_ && !failed_; }

private:
    void loaded(double duration) override;
    void data_changed() override;
    void sought(bool reached) override;
    void ended() override;
    void failed(const std::string& reason) override;
    void sound_failed() override;
    void sound_requested(SoundRequest request) override;

    void open();
    void take_over(PreparedVideo& prepared);
    void load_anew();
    void announce_playable();
    void announce_playthrough();
    void start();
    void set_load(MPMovieLoadState state);
    void set_playback(MPMoviePlaybackState state);
    void run(bool playing);
    void stall();
    void go_on();

    MainLoop& loop_;
    PlayerListener& listener_;
    const Options options_;
    const std::shared_ptr<Mailbox> mailbox_;
    std::string location_;
    bool is_file_ = false;
    bool silent_ = false;
    /// Whether the sound server's last request was to pause.
    bool asked_to_pause_ = false;
    PlayerSettings settings_;
    std::shared_ptr<VideoPictures> pictures_;
    std::unique_ptr<Pipeline> pipeline_;

    MPMovieLoadState load_state_ = MPMovieLoadStateUnknown;
    MPMoviePlaybackState playback_state_ = MPMoviePlaybackStateStopped;
    double duration_ = 0;
    /// Position in seconds: the exact one while the video does not move; while it plays, the last one that was read, so
    /// that positions never decrease.
    mutable double time_ = 0;

    /// Whether a picture has arrived.
    bool seen_ = false;
    /// Whether play() was called before the video could start.
    bool play_asked_ = false;
    /// Whether the start waits for enough data.
    bool awaits_data_ = false;
    /// Whether autoplay and early calls of play() have been handled.
    bool started_ = false;
    bool at_end_ = false;
    /// Whether the end was reached just after a pause; the next play() reports it.
    bool ends_on_play_ = false;
    bool stalled_ = false;
    /// Whether the video has failed since it was last loaded.
    bool failed_ = false;
    /// Number of reloads.
    unsigned loads_ = 0;
    /// Whether the video is being reloaded to continue from the position of its failure; and whether that seek has been
    /// requested.
    bool reloading_ = false;
    bool place_sought_ = false;
    /// Consecutive plays after failures without progress, and the furthest position reached, in seconds.
    int vain_plays_ = 0;
    double farthest_ = 0;
};

/// Creates players over GStreamer.
class GstPlayerFactory : public PlayerFactory
{
public:
    /// Loads GStreamer in the background.
    /// @param loop its post() must accept calls from any thread
    explicit GstPlayerFactory(MainLoop& loop);
    /// Waits up to two seconds until the pipelines of destroyed players are closed.
    ~GstPlayerFactory() override;

    std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) override;
    /// Loads a video ahead of its player. While the returned object exists, the next player of the same address takes
    /// the video over.
    /// @param done called once as an event of its own when the first picture is decoded and the video could start, or
    ///        with the reason of a failure; not after the video was taken over; not null
    std::unique_ptr<PreparedVideo> prepare(const NSURL& source, std::function<void(const std::string& error)> done);

    /// Passed to all players created from now on.
    GstPlayer::Options options;

    /// The viewer leaves the application: playing players pause and report it.
    void leave_app() override;
    /// Whether the first picture of a player is still due.
    bool are_starting() const;

private:
    MainLoop& loop_;
    const std::shared_ptr<std::vector<GstPlayer*>> players_ = std::make_shared<std::vector<GstPlayer*>>();
    const std::shared_ptr<std::vector<PreparedVideo*>> prepared_ = std::make_shared<std::vector<PreparedVideo*>>();
};

} // namespace qoro
