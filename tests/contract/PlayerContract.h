#pragma once

#include "tests/contract/ContractPlatform.h"

namespace qoro::test
{

/// A player of the platform's video; records each report together with the state it is about.
class PlayerContract : public ContractTest, private PlayerListener
{
protected:
    using Reports = std::vector<std::string>;

    ~PlayerContract() override { player_.reset(); }

    /// @param source null for the platform's video
    PlayerEngine& open(bool autoplay = true, const std::optional<NSURL>& source = {})
    {
        player_ = platform().players().make_player(source.value_or(world().video()), *this);
        PlayerSettings settings;
        settings.should_autoplay = autoplay;
        player_->apply(settings);
        return *player_;
    }
    void drop() { player_.reset(); }
    /// For a player that has failed permanently.
    void expect_three_vain_plays(PlayerEngine& player);
    bool heard(const std::string& report) const
    {
        for (const std::string& one : reports)
            if (one == report)
                return true;
        return false;
    }
    bool until_heard(const std::string& report)
    {
        return until([&] { return heard(report); });
    }

    Reports reports;
    /// The player's time and duration at each report.
    std::vector<double> times;
    std::vector<double> durations;

private:
    void load_state_changed() override { note("load ", player_->load_state()); }
    void playback_state_changed() override { note("state ", player_->playback_state()); }
    void finished(MPMovieFinishReason reason) override { note("finished ", reason); }
    void note(const char* what, int value)
    {
        times.push_back(player_->current_time());
        durations.push_back(player_->duration());
        reports.push_back(what + std::to_string(value));
    }

    std::unique_ptr<PlayerEngine> player_;
};

} // namespace qoro::test
