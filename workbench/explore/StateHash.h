#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

class Simulation;

/// Identifies a state of a session among those of the same ad, scenario and build: 128 bits.
struct StateKey {
    std::uint64_t first = 0;
    std::uint64_t second = 0;

    friend auto operator<=>(const StateKey&, const StateKey&) = default;
};

/// How much of a state is read.
enum class StateDetail {
    /// Everything that can influence a later trace line.
    Whole,
    /// What does not change by the mere passing of time: without positions, counters, timers and the texts of clocks.
    Shape,
    /// What the viewer sees: the windows, whether the video and the page have a picture, and how the device is held;
    /// without the texts of clocks.
    Picture,
};

/// The key of a session's state, between two of its events and with nothing due now. Times are relative to now, except
/// where an object keeps absolute ones (the close guard, a budget that is not full): then the state includes the time,
/// so that it equals only states of the same moment.
/// @param leave_out name of a part that is ignored, for tests of this function; empty: nothing
/// @return absent when the queue holds work that this function cannot identify: such states are never equal
std::optional<StateKey> state_key(Simulation& simulation, StateDetail detail = StateDetail::Whole,
                                  std::string_view leave_out = {});

/// The same state as text, a line for each part: to compare two states by eye.
std::string state_text(Simulation& simulation);

} // namespace qoro

template <>
struct std::hash<qoro::StateKey> {
    std::size_t operator()(const qoro::StateKey& key) const { return static_cast<std::size_t>(key.first); }
};
