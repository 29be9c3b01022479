#pragma once

#include "desktop/GlibLoop.h"
#include "desktop/media/GstPlayer.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qoro::test
{

/// Owns a player and records its notifications, each with the value it is about.
class PlayerWatch : public PlayerListener
{
public:
    /// Seconds that only a hang reaches.
    static constexpr double Patience = 60;

    explicit PlayerWatch(GlibLoop& loop) : loop_(loop), factory_(loop)
    {
        factory_.options.on_failure = [this](const std::string& reason) { failure = reason; };
    }

    GstPlayer& open(const NSURL& source, bool autoplay = true)
    {
        player_ = factory_.make_player(source, *this);
        PlayerSettings settings;
        settings.should_autoplay = autoplay;
        player_->apply(settings);
        return player();
    }
    GstPlayer& player() { return dynamic_cast<GstPlayer&>(*player_); }
    GstPlayerFactory& factory() { return factory_; }
    void drop() { player_.reset(); }

    /// Runs the loop until this report is recorded.
    /// @return false if the time is up
    bool until(const std::string& report, double seconds = Patience)
    {
        return loop_.run_until([&] { return has(report); }, seconds);
    }
    bool until(const std::function<bool()>& condition, double seconds = Patience)
    {
        // run_until() evaluates its condition after each iteration only, and a hidden player causes none.
        const TimerId turns = loop_.start_timer(0.01, true, [] {});
        const bool holds = loop_.run_until(condition, seconds);
        loop_.stop_timer(turns);
        return holds;
    }
    /// Runs the loop for some seconds.
    void let_pass(double seconds)
    {
        loop_.run_until([] { return false; }, seconds);
    }
    bool has(const std::string& report) const
    {
        for (const std::string& one : reports)
            if (one == report)
                return true;
        return false;
    }

    std::vector<std::string> reports;
    /// The player's duration at each report.
    std::vector<double> durations;
    /// The reason of the last failure.
    std::string failure;
    /// Called from within each notification. May be empty.
    std::function<void()> on_report;

private:
    void load_state_changed() override { note("load ", player_->load_state()); }
    void playback_state_changed() override { note("state ", player_->playback_state()); }
    void finished(MPMovieFinishReason reason) override { note("finished ", reason); }
    void note(const char* what, int value)
    {
        durations.push_back(player_->duration());
        reports.push_back(what + std::to_string(value));
        if (on_report)
            on_report();
    }

    GlibLoop& loop_;
    GstPlayerFactory factory_;
    std::unique_ptr<PlayerEngine> player_;
};

} // namespace qoro::test
