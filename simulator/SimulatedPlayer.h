#pragma once

#include "platform/Ports.h"
#include "session/Steps.h"
#include "session/World.h"

#include <cstdint>
#include <vector>

namespace qoro
{

class SimulatedPlayer;
class VirtualLoop;

/// Makes the players of a simulated platform and brings them their events: an event of a player that has gone is lost.
class SimulatedPlayers final : public PlayerFactory
{
public:
    SimulatedPlayers(VirtualLoop& loop, const VideoSetup& video) : loop_(loop), video_(video) {}

    std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) override;
    /// The user leaves the app: players that play pause by themselves. Nothing in manual mode.
    void leave_app();

private:
    friend class SimulatedPlayer;

    /// The player of a serial, null when it is gone.
    SimulatedPlayer* find(std::uint32_t serial) const;

    VirtualLoop& loop_;
    const VideoSetup& video_;
    std::vector<SimulatedPlayer*> players_; // by serial; null for those that are gone
};

/// A player in virtual time. In manual mode it does nothing by itself; in automatic mode it behaves as a real one over
/// the video that its setup describes.
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
    int load_state() const override { return load_state_; }
    int playback_state() const override { return playback_state_; }

    /// Sets what the news name, and posts them in their order, inside the call.
    void take(const PlayerNews& news);
    /// As SimulatedPlayers::leave_app, for this one.
    void leave_app();

private:
    friend class SimulatedPlayers;
    /// What playing comes to next.
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

    void post(Event event) { after(0, event); }
    TimerId after(std::int64_t microseconds, Event event);
    bool manual() const { return players_.video_.manual; }
    bool playing() const { return playback_state_ == MPMoviePlaybackStatePlaying; }
    /// Where the video is, in microseconds.
    std::int64_t position() const;
    /// Puts the video at a position, and counts from there while it plays.
    void put(std::int64_t position);
    void set_playback_state(int state);
    void begin_playing();
    void fail();
    /// Waits anew for what lies ahead: an end, a stall or a failure.
    void look_ahead();

    void run(Event event);
    void loaded();
    void report_playable();
    void report_playthrough();
    /// Playing has reached what lay ahead.
    void come_to_it();
    void stall_over();

    SimulatedPlayers& players_;
    const std::uint32_t serial_;
    PlayerListener& listener_;
    const bool has_source_;
    PlayerSettings settings_;
    double duration_ = 0;
    int load_state_ = 0;
    int playback_state_ = MPMoviePlaybackStateStopped;

    double manual_time_ = 0;

    std::int64_t position_ = 0; // microseconds, when it was last put
    std::int64_t put_at_ = 0;   // microseconds of virtual time
    TimerId ahead_timer_ = 0;
    Ahead ahead_ = Ahead::End;
    std::size_t ahead_stall_ = 0;
    bool ready_ = false; // loading has been reported to its end
    bool wants_play_ = false;
    bool ended_ = false;
    bool stalled_ = false;
    bool failed_ = false;
    bool failed_for_good_ = false;
    /// Plays since it has failed for good.
    int vain_plays_ = 0;
    std::vector<bool> stalls_done_;
};

} // namespace qoro
