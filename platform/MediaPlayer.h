#pragma once

#include "platform/UIKit.h"

#include <cstddef>
#include <memory>

namespace qoro
{

/// The movie player: a handle, null when empty; a copy is the same player. Posts the player notifications with itself
/// (identity()) as the object.
class MPMoviePlayerController
{
public:
    MPMoviePlayerController() = default;
    MPMoviePlayerController(std::nullptr_t) {}

    explicit operator bool() const { return state_ != nullptr; }
    friend bool operator==(const MPMoviePlayerController& a, const MPMoviePlayerController& b)
    {
        return a.state_ == b.state_;
    }
    /// What its notifications carry as their object; no later player of the platform has the same. Null for a null
    /// player.
    const void* identity() const;

    void play() const;
    void pause() const;
    /// MPMoviePlaybackState
    int playbackState() const;
    /// MPMovieLoadState
    int loadState() const;
    double duration() const;
    double currentPlaybackTime() const;
    void setCurrentPlaybackTime(double seconds) const;
    /// How often a time was set; for the kit.
    std::size_t seekCount() const;
    /// Null for a null player.
    UIView view() const;
    void setFullscreen(bool fullscreen) const;
    void setScalingMode(int mode) const;
    void setShouldAutoplay(bool autoplay) const;
    void setRepeatMode(int mode) const;
    void setControlStyle(int style) const;
    void setMovieSourceType(int type) const;
    PlayerSettings settings() const;
    /// What it plays.
    NSURL contentURL() const;
    /// The platform's engine, null for a null player; for displays and for a session that drives a simulated one.
    PlayerEngine* engine() const;

private:
    friend class MPMoviePlayerViewController;
    struct State;
    std::shared_ptr<State> state_;
};

/// Owns a movie player and shows its view, which is the player's own. A handle, null when empty.
class MPMoviePlayerViewController
{
public:
    MPMoviePlayerViewController() = default;
    MPMoviePlayerViewController(std::nullptr_t) {}
    /// Told to the witness. A null address makes a player that fails.
    static MPMoviePlayerViewController initWithContentURL(const NSURL& address);

    explicit operator bool() const { return static_cast<bool>(player_); }
    UIView view() const { return player_.view(); }
    MPMoviePlayerController moviePlayer() const { return player_; }

private:
    MPMoviePlayerController player_;
};

/// The application music player; its presence marks the audio plumbing as built.
class MPMusicPlayerController
{
public:
    MPMusicPlayerController() = default;
    MPMusicPlayerController(std::nullptr_t) {}
    static MPMusicPlayerController applicationMusicPlayer();
    explicit operator bool() const { return present_; }

private:
    bool present_ = false;
};

/// AVAudioSession's shared instance.
struct AVAudioSession {
    /// What its notifications carry as their object.
    static const void* sharedInstance();
    /// 0 to 1.
    static float outputVolume();
};

} // namespace qoro
