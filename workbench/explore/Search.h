#pragma once

#include "workbench/explore/Run.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

class SessionStore;

struct SearchOptions {
    /// Moves in a course, at most.
    std::size_t depth = 3;
    /// Sessions, at most.
    std::size_t sessions = 20'000;
    /// Seconds of real time; 0: no limit. A search that this ends is not repeatable.
    double seconds = 0;
    /// Threads. The result does not depend on it.
    unsigned jobs = 1;
    /// Seconds after the opening by which a close must be reachable.
    double policy_seconds = 15;
    /// Sessions that a single trap may cost until it is proven or a way out is found; 0: a tenth of all.
    std::size_t trap_sessions = 0;
    /// Whether equal states are explored once; off for comparison, and without traps then.
    bool recognise = true;
    /// Whether states are examined for traps.
    bool traps = true;
    /// Number of merged states that are explored again.
    std::size_t verify = 0;
    /// Of the longest courses, only every shards-th is simulated, from the shard-th on; those of fewer moves all.
    /// @{
    std::size_t shard = 0;
    std::size_t shards = 1;
    /// @}
    /// Sessions that have been simulated before; receives the others. Null: none are kept. Only where states are
    /// recognised.
    SessionStore* store = nullptr;
    /// Called between sessions, on the thread of the search; true ends it. Empty: nothing does.
    std::function<bool()> stop = {};
    /// Name of a part that the states lack, for tests (state_key).
    std::string_view leave_out = {};
};

/// What happens from a beginning on.
struct FoundCourse {
    std::size_t start = 0;
    std::vector<TimedMove> moves = {};
};

/// Something that no sound ad does.
struct SearchFinding {
    /// "trap", "close-late", "sound-after-close", "left-after-close", "fault", or a rule of a check.
    std::string rule;
    /// One sentence.
    std::string text;
    /// The shortest one that leads there.
    FoundCourse course;
    /// Microseconds: when it can be seen in a session of the course.
    std::int64_t until = 0;
    /// Courses besides that lead there too.
    std::size_t others = 0;
    /// How to mend it; one sentence without a full stop. Empty if nothing is known.
    std::string cure = {};
};

/// A state that two courses reach, but from which the session goes on differently.
struct WrongMerge {
    FoundCourse first;
    FoundCourse second;
    /// The first trace lines that differ; empty for none.
    std::string first_line;
    std::string second_line;
};

struct SearchResult {
    std::size_t sessions = 0;
    /// Those that were not in the store.
    std::size_t simulated = 0;
    /// Whether the search was stopped (SearchOptions::stop).
    bool stopped = false;
    std::size_t states = 0;
    /// Courses that led to a state already known.
    std::size_t merged = 0;
    /// States that cannot be identified, which are therefore never merged.
    std::size_t unnamed = 0;
    /// Moves of the longest courses that have all been explored.
    std::size_t complete_depth = 0;
    /// Sessions that courses of one move more would take.
    std::size_t next_sessions = 0;
    /// Longest time from the start until a close is reachable without a further move, in microseconds, and the course;
    /// absent if none was.
    std::optional<std::int64_t> worst_close = {};
    FoundCourse worst_course = {};
    std::vector<SearchFinding> findings = {};
    /// Those in which something happens or is seen that no shorter one shows; the shortest first.
    std::vector<FoundCourse> new_courses = {};
    /// A line each.
    std::vector<std::string> not_covered = {};
    std::size_t verified = 0;
    std::vector<WrongMerge> wrong_merges = {};
};

/// Explores an ad's courses, those with fewest moves first. Deterministic, unless time ends it.
SearchResult search(const RunSetup& setup, const SearchOptions& options);

/// Traps first, then those of the shortest courses.
void sort_findings(std::vector<SearchFinding>& findings);

/// "tap btnMute at 3.2 s, turn left at 5 s"; "nothing is done" without a move.
std::string in_words(const RunSetup& setup, const FoundCourse& course);

/// Whether two courses that reach the same state go on alike: as time passes, and after each move that is possible.
/// @return the first pair of lines that differ; absent if none do
std::optional<WrongMerge> compare_futures(const RunSetup& setup, const FoundCourse& first, std::int64_t first_at,
                                          const FoundCourse& second, std::int64_t second_at,
                                          const std::vector<Move>& moves);

} // namespace qoro
