#pragma once

#include "platform/MediaPlayer.h"

#include <algorithm>
#include <cstddef>

namespace qoro
{

/// Measures whether a video makes progress, by sampling the player. Seeks do not count, and neither does a video that
/// is paused again and again: it makes progress once a second of media has played in one piece, at half speed or
/// faster. All times are monotonic, in seconds.
class VideoMotion
{
public:
    /// Samples the current player. A null player makes no progress.
    void look(const MPMoviePlayerController& player, double now)
    {
        const double position = player.currentPlaybackTime();
        const std::size_t seeks = player.seekCount();
        if (player.identity() != player_)
            played_ = run_ = 0;
        else if (seeks != seeks_ || position - position_ < LeastSpeed * (now - looked_))
            run_ = 0;
        if (player.identity() == player_ && seeks == seeks_) {
            const double ran = std::max(position - position_, 0.0);
            played_ += ran;
            run_ += ran;
        }
        if (run_ >= LeastRun)
            begin_anew(now);
        player_ = player.identity();
        seeks_ = seeks;
        position_ = position;
        looked_ = now;
    }
    /// Restarts the measurement, so that a period without samples does not count as standstill.
    void begin_anew(double now) { still_since_ = now; }
    /// Time since which the video has made no progress.
    double still_since() const { return still_since_; }
    /// Seconds of media played by the current player; repeated parts count again.
    double played() const { return played_; }

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    /// Minimum rate of playback, as a fraction of normal speed.
    static constexpr double LeastSpeed = 0.5;
    /// Seconds of media that must play in one piece, over one or more samples.
    static constexpr double LeastRun = 1;

    const void* player_ = nullptr;
    std::size_t seeks_ = 0;
    double position_ = 0;
    double looked_ = 0;
    double run_ = 0;
    double played_ = 0;
    double still_since_ = 0;
};

} // namespace qoro
