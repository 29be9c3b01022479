#pragma once

#include "desktop/media/Pipeline.h"
#include "desktop/media/VideoFrame.h"
#include "desktop/media/VideoPictures.h"
#include "desktop/screen/PictureSource.h"
#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

class Mailbox;

/// A player over GStreamer, for http and https addresses and files. A video from a server is kept as it comes
/// in, so a replay asks for nothing again; one from a file never lacks data. After a failure a play asks the server
/// again, the second and the third such play in a row a little later; another video than before is a failure too.
class GstPlayer : public PlayerEngine, public PictureSource, private Pipeline::Listener
{
public:
    struct Options {
        /// Told why a player fails, before the listener is.
        std::function<void(const std::string& reason)> on_failure;
        /// The volume that new sound streams begin with, 0 to 1 on the sliders' scale; absent for the sound server's.
        std::function<std::optional<float>()> volume;
        /// Whether its sound is thrown away.
        bool silent = false;
        /// Seconds that a server may send nothing before it is asked once more, and then given up.
        unsigned server_seconds = 10;
        /// Told as it is destroyed; it is a player no more then.
        std::function<void(const GstPlayer&)> on_end = {};
    };

    /// @param loop its post() may be called by any thread
    GstPlayer(const NSURL& source, PlayerListener& listener, MainLoop& loop);
    GstPlayer(const NSURL& source, PlayerListener& listener, MainLoop& loop, Options options);
    ~GstPlayer() override;

    void apply(const PlayerSettings& settings) override;
    void play() override;
    void pause() override;
    void seek(double time) override;
    double current_time() const override;
    double duration() const override { return duration_; }
    int load_state() const override { return load_state_; }
    int playback_state() const override { return playback_state_; }

    // The display's side.

    /// Pictures are fitted into the box by the settings' scaling mode: one that keeps its shape is smaller than the
    /// box. A picture of the new size is there when this returns, also while paused.
    void set_picture_size(int width_px, int height_px) override;
    VideoFrame latest_frame() const override;

    /// The user leaves the application: what plays, or is loaded anew to play on, pauses.
    void leave_app();

private:
    void loaded(double duration) override;
    void data_changed() override;
    void sought(bool reached) override;
    void ended() override;
    void failed(const std::string& reason) override;
    void sound_failed() override;

    void open();
    void load_anew();
    void announce_playable();
    void announce_playthrough();
    void start();
    void set_load(int state);
    void set_playback(int state);
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
    PlayerSettings settings_;
    std::shared_ptr<VideoPictures> pictures_;
    std::unique_ptr<Pipeline> pipeline_;

    int load_state_ = 0;
    int playback_state_ = MPMoviePlaybackStateStopped;
    double duration_ = 0;
    /// Where the video stands while it does not move, and never less than was read while it does.
    mutable double time_ = 0;

    /// Whether a play came before the video could start.
    bool play_asked_ = false;
    /// Whether it waits for enough data to start.
    bool awaits_data_ = false;
    /// Whether autoplay and early plays have had their say.
    bool started_ = false;
    bool at_end_ = false;
    /// Whether the end was reached by a video that had just been paused.
    bool ends_on_play_ = false;
    bool stalled_ = false;
    /// Whether it has failed since it was loaded last.
    bool failed_ = false;
    /// How often it was loaded anew.
    unsigned loads_ = 0;
    /// Whether it is loaded anew to go on from where it failed; and whether it has been sent there.
    bool reloading_ = false;
    bool place_sought_ = false;
    /// Plays after failures since it last got on, and the farthest that it had got then, in seconds.
    int vain_plays_ = 0;
    double farthest_ = 0;
};

/// Makes players over GStreamer.
class GstPlayerFactory : public PlayerFactory
{
public:
    /// Loads GStreamer in the background.
    /// @param loop its post() may be called by any thread
    explicit GstPlayerFactory(MainLoop& loop);
    /// Waits a moment for what the players have opened to be closed.
    ~GstPlayerFactory() override;

    std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) override;

    /// What players made from now on are given.
    GstPlayer::Options options;

    /// The user leaves the application: what plays pauses, and reports it.
    void leave_app();

private:
    MainLoop& loop_;
    const std::shared_ptr<std::vector<GstPlayer*>> players_ = std::make_shared<std::vector<GstPlayer*>>();
};

} // namespace qoro
