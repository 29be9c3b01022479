#include "workbench/report/VideoTrack.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/Simulation.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qoro
{

namespace
{

using Point = VideoTrack::Point;

/// Seconds. Positions are exact to a microsecond.
constexpr double Tolerance = 2e-6;

std::int64_t microseconds(double seconds)
{
    return std::llround(seconds * 1e6);
}

Playback state_of(const MPMoviePlayerController& player)
{
    if (!player)
        return Playback::Absent;
    const MPMovieLoadState load = player.loadState();
    if (load & MPMovieLoadStateStalled)
        return Playback::Stalled;
    switch (player.playbackState()) {
    case MPMoviePlaybackStatePlaying:
        return Playback::Playing;
    case MPMoviePlaybackStatePaused:
    case MPMoviePlaybackStateInterrupted:
        return Playback::Paused;
    default:
        return load & MPMovieLoadStatePlayable ? Playback::Stopped : Playback::Loading;
    }
}

double finite(double number)
{
    return std::isfinite(number) ? number : 0;
}

} // namespace

std::string_view name_of(Playback state)
{
    switch (state) {
    case Playback::Loading:
        return "loading";
    case Playback::Playing:
        return "playing";
    case Playback::Stalled:
        return "stalled";
    case Playback::Paused:
        return "paused";
    case Playback::Stopped:
        return "stopped";
    case Playback::Absent:
        break;
    }
    return "absent";
}

double VideoTrack::position_at(const Point& point, std::int64_t at) const
{
    const double since = static_cast<double>(at - point.at) / 1e6;
    return advances_ && point.state == Playback::Playing ? point.position + since : point.position;
}

std::size_t VideoTrack::source_of(const std::string& address)
{
    const auto known = std::ranges::find(sources_, address);
    const auto place = static_cast<std::size_t>(known - sources_.begin());
    if (known == sources_.end())
        sources_.push_back(address);
    return place;
}

void VideoTrack::look(const Simulation& simulation, std::int64_t now)
{
    const auto ad = simulation.living();
    Point point{.at = now, .source = points_.empty() ? 0 : points_.back().source};
    if (ad && ad->qoroMoviePlayer) {
        const MPMoviePlayerController& player = ad->qoroMoviePlayer;
        point.source = source_of(std::string(player.contentURL().absoluteString().text()));
        point.state = state_of(player);
        point.position = finite(player.currentPlaybackTime());
        point.duration = finite(player.duration());
    }
    const std::int64_t looked = std::exchange(looked_at_, now);
    if (points_.empty()) {
        points_.push_back(point);
        return;
    }
    const Point& last = points_.back();
    const double expected = position_at(last, now);
    const bool same_video = point.source == last.source;
    const bool as_expected = same_video && point.state == last.state && point.duration == last.duration &&
                             std::abs(point.position - expected) < Tolerance;
    if (as_expected)
        return;
    // The course has changed since the last look: when is known from where the video is.
    if (!same_video) {
        // Nothing is known of when the other one began.
    } else if (advances_ && last.state == Playback::Playing && point.state != Playback::Playing &&
               point.state != Playback::Absent) {
        const std::int64_t stopped = last.at + microseconds(point.position - last.position);
        if (stopped > looked && stopped < now)
            point.at = stopped;
    } else if (advances_ && last.state == Playback::Stalled && point.state == Playback::Playing) {
        const std::int64_t went_on = now - microseconds(point.position - last.position);
        if (went_on > looked && went_on < now) {
            point.at = went_on;
            point.position = last.position;
        }
    }
    if (points_.back().at == point.at)
        points_.back() = point;
    else
        points_.push_back(point);
}

std::optional<std::int64_t> VideoTrack::started() const
{
    const auto playing = std::ranges::find(points_, Playback::Playing, &Point::state);
    return playing == points_.end() ? std::nullopt : std::optional(playing->at);
}

template <typename Position>
std::vector<std::int64_t> VideoTrack::passings(const Position& position_in) const
{
    std::vector<std::int64_t> times;
    for (std::size_t i = 0; i < points_.size(); ++i) {
        const Point& from = points_[i];
        if (from.source != 0)
            continue;
        const std::int64_t end = i + 1 < points_.size() ? points_[i + 1].at : looked_at_;
        const std::optional<double> position = position_in(from);
        if (!advances_) {
            if (from.state == Playback::Playing && position && i > 0 && points_[i - 1].position < *position &&
                from.position >= *position)
                times.push_back(from.at);
            continue;
        }
        if (from.state != Playback::Playing || !position || *position < from.position - Tolerance)
            continue;
        const std::int64_t at = from.at + std::max<std::int64_t>(microseconds(*position - from.position), 0);
        if (at <= end && (times.empty() || times.back() != at))
            times.push_back(at);
    }
    return times;
}

std::vector<std::int64_t> VideoTrack::passed(double position) const
{
    return passings([position](const Point&) { return std::optional(position); });
}

std::vector<std::int64_t> VideoTrack::passed_part(double part) const
{
    return passings([part](const Point& point) {
        return point.duration > 0 ? std::optional(point.duration * part) : std::nullopt;
    });
}

} // namespace qoro
