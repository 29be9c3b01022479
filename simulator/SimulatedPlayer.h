#pragma once

#include "formats/Steps.h"
#include "formats/World.h"
#include "platform/Ports.h"
#include "simulator/MediaTime.h"

#include <cstdint>
#include <vector>

namespace qoro
{

class SimulatedPlayer;
class VirtualLoop;

/// Creates the players of a simulated platform and delivers their events. Events of a destroyed player are dropped.
class SimulatedPlayers final : public PlayerFactory
{
public:
    SimulatedPlayers(VirtualLoop& loop, const World& world) : loop_(loop), world_(world) {}

    std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) override;
    /// The user leaves the app: running players pause. No effect in manual mode.
    void leave_app() override;

private:
    friend class SimulatedPlayer;
    friend class StateReader; // workbench/explore/StateHash.cpp

    /// How the video at a source behaves.
    const VideoSetup& video_at(const NSURL& source) const;
    /// The player with a serial number; null once destroyed.
    SimulatedPlayer* find(std::uint32_t serial) const;

    VirtualLoop& loop_;
    const World& world_;
    std::vector<SimulatedPlayer*> players_; // indexed by serial; null once destroyed
};

/// A player in virtual time. In manual mode it changes only on news from steps; in automatic mode it behaves as a real
/// player of the video that the setup describes.
class SimulatedPlayer final : public PlayerEngine
{
public:
    SimulatedPlayer(SimulatedPlayers& players, const NSURL& source, PlayerListener& listener);
    ~SimulatedPlayer() override;

    void apply(const PlayerSettings& settings) override { settings_ = settings; }
    void play() override;
    void pause() override;
    void seek(double time) override;
    double current_time() const override;
    double duration() const override { return duration_; }
    MPMovieLoadState load_state() const override { return load_state_; }
    MPMoviePlaybackState playback_state() const override { return playback_state_; }

    /// Applies player news and posts them in order, inside the call.
    void take(const PlayerNews& news);
    /// As SimulatedPlayers::leave_app, for this player.
    void leave_app();

private:
    friend class SimulatedPlayers;
    friend class StateReader; // workbench/explore/StateHash.cpp
    /// The next event of playback.
    enum class Ahead { End, Stall, Error, ErrorForGood };
    enum class Event : std::uint32_t {
        Loaded,
        ReportPlayable,
        ReportPlaythrough,
        ReportLoad,
        ReportPlayback,
        ReportEnd,
        ReportFailure,
        ComeToIt,
        StallOver,
    };

    /// The work of the main loop: a pointer and two small integers, which std::function stores without allocating.
    struct Due {
        SimulatedPlayers* players;
        std::uint32_t serial;
        Event event;
        void operator()() const;
    };

    void post(Event event) { after(0, event); }
    TimerId after(std::int64_t microseconds, Event event);
    bool manual() const { return video_.manual; }
    bool playing() const { return playback_state_ == MPMoviePlaybackStatePlaying; }
    MediaTime position() const;
    void set_duration(double seconds);
    /// Sets the position, and counts from there while playing.
    void put(const MediaTime& position);
    void set_playback_state(MPMoviePlaybackState state);
    void begin_playing();
    void fail();
    /// Restarts the timer for the next event of playback: end, stall or error.
    void look_ahead();

    void run(Event event);
    void loaded();
    void report_playable();
    void report_playthrough();
    /// Playback has reached the next event.
    void come_to_it();
    void stall(double seconds);
    void stall_over();

    SimulatedPlayers& players_;
    const std::uint32_t serial_;
    PlayerListener& listener_;
    const VideoSetup& video_;
    const bool has_source_;
    PlayerSettings settings_;
    double duration_ = 0;
    MediaTime end_; // the duration as a position
    MPMovieLoadState load_state_ = MPMovieLoadStateUnknown;
    MPMoviePlaybackState playback_state_ = MPMoviePlaybackStateStopped;

    double manual_time_ = 0;

    MediaTime position_;      // when last set
    std::int64_t put_at_ = 0; // microseconds of virtual time
    TimerId ahead_timer_ = 0;
    Ahead ahead_ = Ahead::End;
    MediaTime ahead_at_;
    std::size_t ahead_stall_ = 0;
    bool ready_ = false; // loading is complete and reported
    bool wants_play_ = false;
    bool ended_ = false;
    bool stalled_ = false;
    bool failed_ = false;
    bool failed_for_good_ = false;
    /// play() calls since the permanent failure.
    int vain_plays_ = 0;
    std::vector<bool> stalls_done_;
};

} // namespace qoro
