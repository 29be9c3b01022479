#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class Simulation;

/// What the video does.
enum class Playback { Absent, Loading, Playing, Stalled, Paused, Stopped };

/// "absent", "loading", "playing", "stalled", "paused" or "stopped".
std::string_view name_of(Playback state);

/// The course of a session's video. Between two of its points a playing video advances with the clock, unless its
/// player acts only on news; any other stays.
class VideoTrack
{
public:
    struct Point {
        /// Microseconds since the session's start.
        std::int64_t at = 0;
        Playback state = Playback::Absent;
        /// Seconds.
        double position = 0;
        /// Seconds; 0 while unknown.
        double duration = 0;
        /// Place in sources(); without a player that of the video before.
        std::size_t source = 0;
    };

    /// @param advances false for a player that acts only on news: its position is that of the last news
    explicit VideoTrack(bool advances = true) : advances_(advances) {}

    /// Looks at the player between two events of a session.
    void look(const Simulation& simulation, std::int64_t now);

    /// Those at which the course changes, in order of time.
    const std::vector<Point>& points() const { return points_; }
    /// Addresses of the session's videos, in the order in which they were first seen: the ads of a tag and a page may
    /// let others follow.
    const std::vector<std::string>& sources() const { return sources_; }
    /// When the video first played; absent if never.
    std::optional<std::int64_t> started() const;
    /// When playback of the first video passed a position, in seconds or as a part of the duration; each passing.
    /// @{
    std::vector<std::int64_t> passed(double position) const;
    std::vector<std::int64_t> passed_part(double part) const;
    /// @}
    /// When playback of the first video came to the end; each time.
    std::vector<std::int64_t> ended() const { return passed_part(1); }

private:
    template <typename Position>
    std::vector<std::int64_t> passings(const Position& position_in) const;

    /// The position of a video at a time after one of its points.
    double position_at(const Point& point, std::int64_t at) const;
    std::size_t source_of(const std::string& address);

    const bool advances_;
    std::vector<Point> points_;
    std::vector<std::string> sources_;
    /// The last look.
    std::int64_t looked_at_ = 0;
};

} // namespace qoro
