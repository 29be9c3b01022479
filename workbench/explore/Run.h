#pragma once

#include "formats/Scenario.h"
#include "workbench/explore/Move.h"
#include "workbench/explore/Signs.h"
#include "workbench/explore/StateHash.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// A move at a time, in microseconds.
struct TimedMove {
    std::int64_t at = 0;
    Move move = {};
};

/// What may break in a session.
enum class Fault : std::uint8_t {
    SoundAfterClose, ///< A player plays aloud after the close.
    LeftAfterClose,  ///< A window or an observer of the ad is left after the close.
    PlatformFault,   ///< An operation failed as the platform makes it fail.
};

/// A session at rest at a time at which something has changed.
struct Moment {
    std::int64_t at = 0;
    /// Of the session with the viewer; absent for a state that cannot be identified.
    std::optional<StateKey> key = {};
    bool open = false;
    /// Whether a close control can be tapped and closes the ad.
    bool close = false;
    bool closed = false;
    /// What can happen now; empty once the ad has closed.
    std::vector<Move> moves = {};
    /// Since the moment before.
    std::vector<Fault> faults = {};
    /// Since the moment before.
    Passage happened = {};
};

/// What stays the same in all courses of a search.
struct RunSetup {
    /// Beginnings: the ad in its surroundings, with the steps that happen in every course.
    std::vector<Scenario> starts;
    std::vector<std::string> start_names;
    PageCommands page;
    /// The ad's, for the signs of its sessions.
    std::vector<AddressPattern> position_trackers = {};
    /// Microseconds without a change after which nothing is expected any more.
    std::int64_t patience = 0;
    /// Whether moments get keys.
    bool identify = true;
    /// Name of a part that the states lack, for tests (state_key); empty: none.
    std::string leave_out = {};
};

/// A session of a search, from the moment of its last move on, as time passes.
struct CourseRun {
    std::vector<Moment> moments;
    /// Whether the last moment's state was already known, so that the run stopped there.
    bool merged = false;
    /// Since the last moment, unless the run has merged.
    Passage rest = {};
};

/// Moments of a run, at most: some sessions never end, and none of their states recurs.
constexpr std::size_t MostMoments = 1000;

/// Simulates a course and then lets time pass.
/// @param start index of the setup's beginning
/// @param known whether a state is known already: then the run stops there. Empty: none is
CourseRun run_course(const RunSetup& setup, std::size_t start, const std::vector<TimedMove>& course,
                     const std::function<bool(const StateKey&)>& known);

/// The steps of a course: those of the beginning and those of the moves.
std::vector<Step> steps_of(const Scenario& start, const std::vector<TimedMove>& course);

} // namespace qoro
