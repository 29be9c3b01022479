#pragma once

#include "platform/UIKit.h"

#include <cstddef>
#include <memory>

namespace qoro
{

/// Handle of a movie player. An empty handle is null; copies refer to the same player. The player posts its
/// notifications with identity() as the object. On a null handle getters return zero and setters have no effect.
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
    /// Object of the player's notifications; never reused by a later player of the same platform. Null for a null
    /// player.
    const void* identity() const;

    void play() const;
    void pause() const;
    MPMoviePlaybackState playbackState() const;
    MPMovieLoadState loadState() const;
    /// Seconds; 0 while unknown.
    double duration() const;
    /// Seconds from the start.
    double currentPlaybackTime() const;
    void setCurrentPlaybackTime(double seconds) const;
    /// Number of seeks so far; used by the kit.
    std::size_t seekCount() const;
    /// Null for a null player.
    UIView view() const;
    void setFullscreen(bool fullscreen) const;
    void setScalingMode(MPMovieScalingMode mode) const;
    void setShouldAutoplay(bool autoplay) const;
    void setRepeatMode(MPMovieRepeatMode mode) const;
    void setControlStyle(MPMovieControlStyle style) const;
    void setMovieSourceType(MPMovieSourceType type) const;
    PlayerSettings settings() const;
    /// The address that it plays; null for a null player.
    NSURL contentURL() const;
    /// The platform's engine; null for a null player. For displays, and for sessions that drive a simulated engine.
    PlayerEngine* engine() const;

private:
    friend class MPMoviePlayerViewController;
    struct State;
    std::shared_ptr<State> state_;
};

/// Handle of a controller that owns a movie player; its view is the player's. An empty handle is null.
class MPMoviePlayerViewController
{
public:
    MPMoviePlayerViewController() = default;
    MPMoviePlayerViewController(std::nullptr_t) {}
    /// Creates the player, and emits it as an event. With a null address the player fails.
    static MPMoviePlayerViewController initWithContentURL(const NSURL& address);

    explicit operator bool() const { return static_cast<bool>(player_); }
    UIView view() const { return player_.view(); }
    MPMoviePlayerController moviePlayer() const { return player_; }

private:
    MPMoviePlayerController player_;
};

/// The application music player. It has no state: a non-null handle marks the audio setup as done.
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
    /// Object of its notifications.
    static const void* sharedInstance();
    /// 0 to 1.
    static float outputVolume();
};

} // namespace qoro
