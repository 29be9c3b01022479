#pragma once

#include "workbench/explore/Graph.h"

#include <cstdint>
#include <optional>
#include <vector>

// What can be reached from the states that a search has found.

namespace qoro
{

/// For each state, whether a close or a close control can be reached from it.
std::vector<bool> with_way_out(const CourseGraph& graph);

/// Everything that time, the viewer and the page can lead to, as far as it has been explored; in order of discovery.
std::vector<CourseGraph::Index> within_reach(const CourseGraph& graph, CourseGraph::Index from);

/// For each state, the microseconds until time alone brings a close within reach; absent for never.
std::vector<std::optional<std::int64_t>> waits(const CourseGraph& graph);

} // namespace qoro
