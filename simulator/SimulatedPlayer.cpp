#include "simulator/SimulatedPlayer.h"

#include "simulator/VirtualLoop.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qoro
{

std::unique_ptr<PlayerEngine> SimulatedPlayers::make_player(const NSURL& source, PlayerListener& listener)
{
    return std::make_unique<SimulatedPlayer>(*this, source, listener);
}

void SimulatedPlayers::leave_app()
{
    for (SimulatedPlayer* each : players_)
        if (each)
            each->leave_app();
}

const VideoSetup& SimulatedPlayers::video_at(const NSURL& source) const
{
    const auto named = source ? world_.videos.find(source.absoluteString().text()) : world_.videos.end();
    return named == world_.videos.end() ? world_.video : named->second;
}

SimulatedPlayer* SimulatedPlayers::find(std::uint32_t serial) const
{
    return players_[serial];
}

SimulatedPlayer::SimulatedPlayer(SimulatedPlayers& players, const NSURL& source, PlayerListener& listener)
    : players_(players), serial_(static_cast<std::uint32_t>(players.players_.size())), listener_(listener),
      video_(players.video_at(source)), has_source_(source)
{
    players_.players_.push_back(this);
    stalls_done_.resize(video_.stalls.size());
    if (!manual())
        after(to_microseconds(video_.load_after), Event::Loaded);
}

SimulatedPlayer::~SimulatedPlayer()
{
    players_.players_[serial_] = nullptr;
}

// ---------------------------------------------------------------------------------------------------------- commands

void SimulatedPlayer::play()
{
    if (manual() || stalled_ || playing())
        return;
    if (failed_for_good_) {
        if (vain_plays_ == MostVainPlays)
            return;
        ++vain_plays_;
        fail();
    } else if (ready_)
        begin_playing();
    else
        wants_play_ = true;
}

void SimulatedPlayer::pause()
{
    if (manual() || stalled_)
        return;
    if (!ready_)
        wants_play_ = false;
    // A player that is not loaded may be playing because of a step's news.
    if (playing()) {
        set_playback_state(MPMoviePlaybackStatePaused);
        post(Event::ReportPlayback);
    }
}

void SimulatedPlayer::seek(double time)
{
    if (manual()) {
        manual_time_ = time;
    } else if (!stalled_) {
        ended_ = false;
        // A step's news may have set a negative duration.
        const MediaTime end = std::max(end_, MediaTime());
        put(std::clamp(MediaTime(time), MediaTime(), end));
    }
}

double SimulatedPlayer::current_time() const
{
    if (manual())
        return manual_time_;
    const MediaTime now = position();
    // A duration may be longer than a position can be.
    return now == end_ ? duration_ : now.seconds();
}

void SimulatedPlayer::take(const PlayerNews& news)
{
    const SimulatedPlayers& players = players_;
    const std::uint32_t serial = serial_;
    const MediaTime now = position();
    if (news.duration)
        set_duration(*news.duration);
    if (news.time) {
        manual_time_ = *news.time;
        ended_ = false;
    }
    put(news.time ? MediaTime(*news.time) : now);
    // A listener may destroy the player.
    if (news.load) {
        load_state_ = *news.load;
        listener_.load_state_changed();
    }
    if (news.state && players.find(serial)) {
        stalled_ = false;
        set_playback_state(*news.state);
        listener_.playback_state_changed();
    }
    if (news.finish && players.find(serial))
        listener_.finished(*news.finish);
    if (manual() || !players.find(serial))
        return;
    if (news.stall && playing())
        stall(*news.stall);
    if (news.broken && !failed_for_good_) {
        failed_for_good_ = true;
        fail();
    }
}

void SimulatedPlayer::leave_app()
{
    if (playing())
        pause();
}

// -------------------------------------------------------------------------------------------------------------- time

TimerId SimulatedPlayer::after(std::int64_t microseconds, Event event)
{
    return players_.loop_.after(microseconds, Due{&players_, serial_, event});
}

void SimulatedPlayer::Due::operator()() const
{
    if (SimulatedPlayer* player = players->find(serial))
        player->run(event);
}

void SimulatedPlayer::run(Event event)
{
    switch (event) {
    case Event::Loaded:
        return loaded();
    case Event::ReportPlayable:
        return report_playable();
    case Event::ReportPlaythrough:
        return report_playthrough();
    case Event::ReportLoad:
        return listener_.load_state_changed();
    case Event::ReportPlayback:
        return listener_.playback_state_changed();
    case Event::ReportEnd:
        return listener_.finished(MPMovieFinishReasonPlaybackEnded);
    case Event::ReportFailure:
        return listener_.finished(MPMovieFinishReasonPlaybackError);
    case Event::ComeToIt:
        return come_to_it();
    case Event::StallOver:
        return stall_over();
    }
}

MediaTime SimulatedPlayer::position() const
{
    if (!playing())
        return position_;
    const MediaTime now = position_.after(players_.loop_.now_microseconds() - put_at_);
    // The event ahead is due at a whole microsecond, perhaps just after its position.
    return ahead_timer_ != 0 && position_ <= ahead_at_ ? std::min(now, ahead_at_) : now;
}

void SimulatedPlayer::set_duration(double seconds)
{
    duration_ = seconds;
    end_ = MediaTime(seconds);
}

void SimulatedPlayer::put(const MediaTime& position)
{
    position_ = position;
    put_at_ = players_.loop_.now_microseconds();
    look_ahead();
}

void SimulatedPlayer::set_playback_state(MPMoviePlaybackState state)
{
    const MediaTime now = position();
    playback_state_ = state;
    put(now);
}

void SimulatedPlayer::begin_playing()
{
    if (std::exchange(ended_, false))
        position_ = MediaTime();
    // Posted first, so that it precedes any event of playback due immediately.
    post(Event::ReportPlayback);
    set_playback_state(MPMoviePlaybackStatePlaying);
}

void SimulatedPlayer::fail()
{
    set_playback_state(MPMoviePlaybackStateStopped);
    post(Event::ReportPlayback);
    post(Event::ReportFailure);
}

void SimulatedPlayer::look_ahead()
{
    players_.loop_.stop_timer(std::exchange(ahead_timer_, 0));
    if (manual() || !playing() || end_ <= MediaTime())
        return;
    ahead_at_ = end_;
    ahead_ = Ahead::End;
    if (video_.error && !failed_) {
        const MediaTime at(*video_.error);
        if (at >= position_ && at <= ahead_at_) {
            ahead_at_ = at;
            ahead_ = Ahead::Error;
        }
    }
    if (video_.error_for_good) {
        const MediaTime at(*video_.error_for_good);
        if (at >= position_ && at <= ahead_at_ && (at < ahead_at_ || ahead_ == Ahead::End)) {
            ahead_at_ = at;
            ahead_ = Ahead::ErrorForGood;
        }
    }
    for (std::size_t i = 0; i < video_.stalls.size(); ++i) {
        const MediaTime at(video_.stalls[i].at);
        if (!stalls_done_[i] && at >= position_ && at < end_ &&
            (at < ahead_at_ || (at == ahead_at_ && ahead_ != Ahead::Stall))) {
            ahead_at_ = at;
            ahead_ = Ahead::Stall;
            ahead_stall_ = i;
        }
    }
    ahead_timer_ = after(ahead_at_.microseconds_since(position_), Event::ComeToIt);
}

// ------------------------------------------------------------------------------------------------------------ events

void SimulatedPlayer::loaded()
{
    if (!has_source_) {
        // A player without a source may be playing because of a step's news; that state stays.
        post(Event::ReportPlayback);
        post(Event::ReportFailure);
        return;
    }
    if (video_.error_for_good && !(*video_.error_for_good > 0) && !playing()) {
        failed_for_good_ = true;
        post(Event::ReportPlayback);
        post(Event::ReportFailure);
        return;
    }
    set_duration(video_.duration);
    // A step's news may have started playback already; its end is known only now.
    put(position());
    load_state_ = MPMovieLoadStatePlayable;
    post(Event::ReportPlayable);
}

void SimulatedPlayer::report_playable()
{
    const SimulatedPlayers& players = players_;
    const std::uint32_t serial = serial_;
    listener_.first_picture();
    listener_.load_state_changed();
    if (!players.find(serial))
        return;
    load_state_ = MPMovieLoadStatePlayable | MPMovieLoadStatePlaythroughOK;
    post(Event::ReportPlaythrough);
}

void SimulatedPlayer::report_playthrough()
{
    const SimulatedPlayers& players = players_;
    const std::uint32_t serial = serial_;
    listener_.load_state_changed();
    if (!players.find(serial))
        return;
    ready_ = true;
    if ((settings_.should_autoplay || wants_play_) && !playing())
        begin_playing();
}

void SimulatedPlayer::come_to_it()
{
    ahead_timer_ = 0;
    position_ = ahead_at_;
    put_at_ = players_.loop_.now_microseconds();
    switch (ahead_) {
    case Ahead::End:
        ended_ = true;
        set_playback_state(MPMoviePlaybackStatePaused);
        post(Event::ReportPlayback);
        post(Event::ReportEnd);
        break;
    case Ahead::Stall:
        stalls_done_[ahead_stall_] = true;
        stall(video_.stalls[ahead_stall_].lasts);
        break;
    case Ahead::Error:
        failed_ = true;
        fail();
        break;
    case Ahead::ErrorForGood:
        failed_for_good_ = true;
        fail();
        break;
    }
}

void SimulatedPlayer::stall(double seconds)
{
    stalled_ = true;
    load_state_ = MPMovieLoadStateStalled;
    set_playback_state(MPMoviePlaybackStateInterrupted);
    post(Event::ReportLoad);
    post(Event::ReportPlayback);
    if (std::isfinite(seconds))
        after(to_microseconds(seconds), Event::StallOver);
}

void SimulatedPlayer::stall_over()
{
    if (!std::exchange(stalled_, false))
        return;
    load_state_ = MPMovieLoadStatePlayable | MPMovieLoadStatePlaythroughOK;
    post(Event::ReportLoad);
    post(Event::ReportPlayback);
    set_playback_state(MPMoviePlaybackStatePlaying);
}

} // namespace qoro
