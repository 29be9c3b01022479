#pragma once

#include "platform/Decorators.h"
#include "record/Tape.h"

#include <memory>

namespace qoro
{

/// Creates players past a tape.
class TapedPlayers final : public PlayerFactory
{
public:
    /// @param real null on a replay
    TapedPlayers(Tape& tape, PlayerFactory* real) : tape_(tape), real_(real) {}
    std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) override;
    void leave_app() override;

private:
    Tape& tape_;
    PlayerFactory* const real_;
};

} // namespace qoro
