#include "desktop/media/GstPlayer.h"

#include "desktop/media/Mailbox.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qoro
{

namespace
{
/// Seconds that the factory's destructor waits at most.
constexpr double ClosingPatience = 2.0;
/// Seconds of playback after which a failure no longer counts as a repetition of the previous one.
constexpr double Progress = 1.0;
/// Seconds by which the duration may differ after a reload for the video to count as the same.
constexpr double SameDuration = 0.5;
constexpr MPMovieLoadState Ready = MPMovieLoadStatePlayable | MPMovieLoadStatePlaythroughOK;

} // namespace

GstPlayer::GstPlayer(const NSURL& source, PlayerListener& listener, MainLoop& loop)
    : GstPlayer(source, listener, loop, Options{})
{
}

GstPlayer::GstPlayer(const NSURL& source, PlayerListener& listener, MainLoop& loop, Options options,
                     PreparedVideo* prepared)
    : loop_(loop), listener_(listener), options_(std::move(options)), mailbox_(std::make_shared<Mailbox>(loop))
{
    Pipeline::warm_up();
    silent_ = options_.silent;
    pictures_ = std::make_shared<VideoPictures>(nullptr);
    VideoSource found = video_source(source);
    location_ = std::move(found.location);
    is_file_ = found.is_file;
    if (prepared && prepared->is_good())
        take_over(*prepared);
    pictures_->set_announce([this, mailbox = mailbox_] {
        mailbox->post([this] {
            pictures_->fetched();
            if (!std::exchange(seen_, true))
                listener_.first_picture();
            if (on_frame)
                on_frame();
        });
    });
    if (!pipeline_)
        open();
}

/// The player reports the states of a new one, however far the video has been loaded.
void GstPlayer::take_over(PreparedVideo& prepared)
{
    PreparedVideo::Taken taken = prepared.take(*this);
    pictures_ = std::move(taken.pictures);
    pipeline_ = std::move(taken.pipeline);
    silent_ = taken.silent;
    if (taken.duration)
        mailbox_->post([this, duration = *taken.duration] { loaded(duration); });
    if (taken.sound_request)
        mailbox_->post([this, request = *taken.sound_request] { sound_requested(request); });
}

GstPlayer::~GstPlayer()
{
    mailbox_->close();
    if (options_.on_end)
        options_.on_end(*this);
}

void GstPlayer::open()
{
    if (location_.empty()) {
        vain_plays_ = MostVainPlays;
        mailbox_->post([this] { failed("it has no address that can be played"); });
        return;
    }
    Pipeline::Opening opening{location_, is_file_, silent_, {}, options_.server_seconds};
    if (options_.volume)
        opening.volume = options_.volume();
    Pipeline::Listener& self = *this;
    pipeline_ = std::make_unique<Pipeline>(std::move(opening), pictures_, loop_, self);
}

// ----------------------------------------------------------------------------------------------------- Commands

void GstPlayer::apply(const PlayerSettings& settings)
{
    settings_ = settings;
    pictures_->set_scaling_mode(settings.scaling_mode);
}

void GstPlayer::play()
{
    if (failed_) {
        load_anew();
        return;
    }
    if (!started_) {
        play_asked_ = true;
        return;
    }
    if (playback_state_ == MPMoviePlaybackStatePlaying || playback_state_ == MPMoviePlaybackStateInterrupted)
        return;
    if (stalled_) {
        set_playback(MPMoviePlaybackStateInterrupted);
        return;
    }
    if (at_end_)
        seek(0);
    set_playback(MPMoviePlaybackStatePlaying);
    run(true);
}

void GstPlayer::load_anew()
{
    if (vain_plays_ == MostVainPlays)
        return;
    failed_ = false;
    started_ = false;
    play_asked_ = true;
    reloading_ = duration_ > 0;
    place_sought_ = false;
    if (std::exchange(at_end_, false))
        time_ = 0;
    // Seconds; gives the server time to recover.
    const int pause = is_file_ ? 0 : vain_plays_;
    ++vain_plays_;
    ++loads_;
    if (pause == 0) {
        open();
        return;
    }
    loop_.start_timer(pause, false, [this, mailbox = mailbox_] {
        if (mailbox->is_open())
            open();
    });
}

void GstPlayer::pause()
{
    if (!started_)
        play_asked_ = false;
    if (playback_state_ != MPMoviePlaybackStatePlaying && playback_state_ != MPMoviePlaybackStateInterrupted)
        return;
    time_ = current_time();
    set_playback(MPMoviePlaybackStatePaused);
    run(false);
}

void GstPlayer::seek(double time)
{
    if (duration_ <= 0)
        return;
    time_ = std::isnan(time) ? 0 : std::clamp(time, 0.0, duration_);
    at_end_ = false;
    ends_on_play_ = false;
    if (failed_ || reloading_)
        farthest_ = std::max(farthest_, time_);
    // During a reload, loaded() performs the seek.
    if (!failed_ && (!reloading_ || place_sought_))
        pipeline_->seek(time_);
}

void GstPlayer::run(bool playing)
{
    if (playing && ends_on_play_) {
        mailbox_->post([this] { ended(); });
        return;
    }
    pipeline_->run(playing);
}

double GstPlayer::current_time() const
{
    const bool moves = playback_state_ == MPMoviePlaybackStatePlaying && !at_end_;
    if (!moves || !pipeline_)
        return time_;
    // Only at the end may the position equal the duration.
    if (const std::optional<double> position = pipeline_->position())
        time_ = std::max(time_, std::min(*position, std::nextafter(duration_, 0.0)));
    return time_;
}

// -------------------------------------------------------------------------------------------------- Notifications

void GstPlayer::set_load(MPMovieLoadState state)
{
    load_state_ = state;
    mailbox_->post([this] { listener_.load_state_changed(); });
}

void GstPlayer::set_playback(MPMoviePlaybackState state)
{
    playback_state_ = state;
    mailbox_->post([this] { listener_.playback_state_changed(); });
}

// Reports each state of the start before entering the next one.
void GstPlayer::announce_playable()
{
    set_load(MPMovieLoadStatePlayable);
    mailbox_->post([this, load = loads_] {
        if (failed_ || load != loads_)
            return;
        awaits_data_ = pipeline_->short_of_data();
        if (!awaits_data_)
            announce_playthrough();
    });
}

void GstPlayer::announce_playthrough()
{
    set_load(Ready);
    mailbox_->post([this, load = loads_] {
        if (!failed_ && load == loads_)
            start();
    });
}

void GstPlayer::start()
{
    started_ = true;
    const bool anew = std::exchange(reloading_, false);
    if (play_asked_ || (settings_.should_autoplay && !anew))
        play();
}

void GstPlayer::loaded(double duration)
{
    if (duration_ <= 0) {
        duration_ = duration;
        if (options_.on_duration)
            options_.on_duration(duration);
        announce_playable();
        return;
    }
    if (reloading_) {
        if (std::abs(duration - duration_) > SameDuration) {
            failed("it is another video than before");
            return;
        }
        awaits_data_ = true;
        place_sought_ = true;
    }
    // The new pipeline continues at the position of the previous one.
    if (time_ > 0)
        pipeline_->seek(time_);
    run(playback_state_ == MPMoviePlaybackStatePlaying);
    data_changed();
}

void GstPlayer::sought(bool reached)
{
    // If the video is not seekable, only a reload returns to its beginning.
    if (!reached && time_ <= 0) {
        open();
        return;
    }
    if (!reached)
        time_ = pipeline_->position().value_or(time_);
    if (reloading_)
        data_changed();
}

void GstPlayer::ended()
{
    if (failed_ || at_end_)
        return;
    if (playback_state_ != MPMoviePlaybackStatePlaying) {
        ends_on_play_ = true;
        return;
    }
    run(false);
    ends_on_play_ = false;
    at_end_ = true;
    vain_plays_ = 0;
    time_ = duration_;
    set_playback(MPMoviePlaybackStatePaused);
    mailbox_->post([this] { listener_.finished(MPMovieFinishReasonPlaybackEnded); });
}

void GstPlayer::failed(const std::string& reason)
{
    if (failed_)
        return;
    time_ = current_time();
    if (time_ >= farthest_ + Progress)
        vain_plays_ = 0;
    farthest_ = std::max(farthest_, time_);
    failed_ = true;
    stalled_ = false;
    awaits_data_ = false;
    ends_on_play_ = false;
    pipeline_.reset();
    // A failure after the end is not reported, because nothing was lost; the next play() reloads the video.
    if (at_end_)
        return;
    if (options_.on_failure)
        options_.on_failure(reason);
    set_playback(MPMoviePlaybackStateStopped);
    mailbox_->post([this] { listener_.finished(MPMovieFinishReasonPlaybackError); });
}

void GstPlayer::sound_failed()
{
    if (silent_ || failed_)
        return;
    time_ = current_time();
    silent_ = true;
    open();
    if (asked_to_pause_)
        sound_requested(SoundRequest::Resume);
}

void GstPlayer::sound_requested(SoundRequest request)
{
    asked_to_pause_ = request == SoundRequest::Pause;
    if (options_.on_sound_request)
        options_.on_sound_request(*this, request);
}

// ---------------------------------------------------------------------------------------------------- Lack of data

void GstPlayer::data_changed()
{
    if (pipeline_->short_of_data()) {
        stall();
    } else if (awaits_data_) {
        // Data buffered at the beginning says nothing about the position to continue from.
        if (reloading_ && pipeline_->seeking())
            return;
        awaits_data_ = false;
        if (load_state_ == Ready)
            start();
        else
            announce_playthrough();
    } else if (stalled_) {
        go_on();
    }
}

void GstPlayer::stall()
{
    if (playback_state_ != MPMoviePlaybackStatePlaying || at_end_)
        return;
    time_ = current_time();
    stalled_ = true;
    pipeline_->run(false);
    set_load(MPMovieLoadStateStalled);
    set_playback(MPMoviePlaybackStateInterrupted);
}

void GstPlayer::go_on()
{
    stalled_ = false;
    set_load(Ready);
    if (playback_state_ != MPMoviePlaybackStateInterrupted)
        return;
    set_playback(MPMoviePlaybackStatePlaying);
    run(true);
}

void GstPlayer::leave_app()
{
    if (playback_state_ == MPMoviePlaybackStatePlaying || playback_state_ == MPMoviePlaybackStateInterrupted ||
        reloading_)
        pause();
}

// ---------------------------------------------------------------------------------------------------- PictureSource

void GstPlayer::set_picture_size(int width, int height)
{
    pictures_->set_box(width, height);
}

VideoFrame GstPlayer::latest_frame() const
{
    return pictures_->latest();
}

// ---------------------------------------------------------------------------------------------------------- Factory

GstPlayerFactory::GstPlayerFactory(MainLoop& loop) : loop_(loop)
{
    Pipeline::warm_up();
}

GstPlayerFactory::~GstPlayerFactory()
{
    Pipeline::wait_until_gone(ClosingPatience);
}

std::unique_ptr<PlayerEngine> GstPlayerFactory::make_player(const NSURL& source, PlayerListener& listener)
{
    GstPlayer::Options with = options;
    with.on_end = [players = players_, also = options.on_end](const GstPlayer& gone) {
        std::erase(*players, &gone);
        if (also)
            also(gone);
    };
    const VideoSource wanted = video_source(source);
    const auto ready = std::ranges::find_if(*prepared_, [&](const PreparedVideo* each) {
        return each->is_good() && each->source().location == wanted.location;
    });
    auto player = std::make_unique<GstPlayer>(source, listener, loop_, std::move(with),
                                              ready == prepared_->end() ? nullptr : *ready);
    players_->push_back(player.get());
    return player;
}

std::unique_ptr<PreparedVideo> GstPlayerFactory::prepare(const NSURL& source,
                                                         std::function<void(const std::string& error)> done)
{
    PreparedVideo::Options how;
    how.silent = options.silent;
    how.server_seconds = options.server_seconds;
    if (options.volume)
        how.volume = options.volume();
    how.on_end = [prepared = prepared_](const PreparedVideo& gone) { std::erase(*prepared, &gone); };
    auto video = std::make_unique<PreparedVideo>(video_source(source), loop_, std::move(how), std::move(done));
    prepared_->push_back(video.get());
    return video;
}

bool GstPlayerFactory::are_starting() const
{
    return std::ranges::any_of(*players_, [](const GstPlayer* player) { return player->is_starting(); });
}

void GstPlayerFactory::leave_app()
{
    for (GstPlayer* player : *players_)
        player->leave_app();
}

} // namespace qoro
