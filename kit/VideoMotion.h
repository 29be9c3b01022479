#pragma once

#include "platform/MediaPlayer.h"

#include <algorithm>
#include <cstddef>

namespace qoro
{

/// Whether a video gets on before its viewer, from looks at it. What is skipped or sought back over is no motion, and a
/// video that is paused again and again does not move either, however often it starts: it moves once a second of it has
/// run at half its speed or more. All moments are seconds that only grow.
class VideoMotion
{
public:
    /// One more look at the player that is there; a null one does not move.
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
    /// What was not looked at does not count as standing still.
    void begin_anew(double now) { still_since_ = now; }
    /// Since when the video has not moved.
    double still_since() const { return still_since_; }
    /// Seconds of the player's video that have run, repeats counted again.
    double played() const { return played_; }

private:
    /// Of a video's own.
    static constexpr double LeastSpeed = 0.5;
    /// Seconds of media; less than the interval of looks, or nothing would ever run so long in one piece.
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
