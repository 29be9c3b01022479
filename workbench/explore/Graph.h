#pragma once

#include "workbench/explore/Run.h"
#include "workbench/explore/Search.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace qoro
{

/// The states that a search has found, and the ways between them.
class CourseGraph
{
public:
    using Index = std::uint32_t;
    static constexpr Index None = ~Index{};

    struct Edge {
        Index to = None;
        /// Whether time, the viewer, the page or the end of a call leads there.
        bool helps = false;
    };

    /// A state, as the first course reached it.
    struct Node {
        Index course = None;
        /// Absent for a state that cannot be identified.
        std::optional<StateKey> key = {};
        std::int64_t at = 0;
        std::uint32_t depth = 0;
        bool open = false;
        bool close = false;
        bool closed = false;
        /// A close has been reachable earlier in the course.
        bool had_close = false;
        /// Trackers of positions in the video that the course has sent, a bit for each.
        std::uint64_t sent = 0;
        /// What time alone leads to, and in how many microseconds.
        Index next = None;
        std::int64_t wait = 0;
        /// Possible moves, and which of them have been explored.
        std::vector<Move> moves = {};
        std::vector<bool> done = {};
        std::vector<Edge> ways = {};
    };

    /// A move in a state; in the beginning itself without a state.
    struct Task {
        Index node = None;
        std::size_t move = 0;
        std::size_t start = 0;
    };

    /// A course that reached a known state.
    struct Arrival {
        Task task;
        Index node = None;
        std::int64_t at = 0;
        /// A close has been reachable earlier in the course.
        bool had_close = false;
    };

    /// What a task's run has added.
    struct Added {
        /// Number of moments up to the first whose state was known.
        std::size_t moments = 0;
        /// Of the course from its last move on.
        std::vector<Sign> signs = {};
    };

    const std::vector<Node>& nodes() const { return nodes_; }
    const std::vector<Arrival>& arrivals() const { return arrivals_; }
    std::size_t unnamed() const { return unnamed_; }
    bool knows(const StateKey& key) const { return known_.contains(key); }

    /// The moves of a task's course.
    FoundCourse course_of(const Task& task) const;
    /// Those of a state's.
    FoundCourse course_of(Index node) const;
    /// Adds what a task's run has found.
    Added add(const Task& task, const CourseRun& run, bool recognise);
    void mark(const Task& task);

private:
    struct Course {
        /// The course that it continues; None for a beginning.
        Index before = None;
        std::size_t start = 0;
        TimedMove last = {};
    };

    FoundCourse moves_of(Index course) const;

    std::vector<Node> nodes_;
    std::vector<Course> courses_;
    std::vector<Arrival> arrivals_;
    std::unordered_map<StateKey, Index> known_;
    std::size_t unnamed_ = 0;
};

} // namespace qoro
