#include "workbench/explore/Graph.h"

#include <algorithm>

namespace qoro
{

FoundCourse CourseGraph::moves_of(Index course) const
{
    FoundCourse found;
    for (; course != None; course = courses_[course].before) {
        found.start = courses_[course].start;
        if (courses_[course].before != None)
            found.moves.push_back(courses_[course].last);
    }
    std::ranges::reverse(found.moves);
    return found;
}

FoundCourse CourseGraph::course_of(Index node) const
{
    return moves_of(nodes_[node].course);
}

FoundCourse CourseGraph::course_of(const Task& task) const
{
    if (task.node == None)
        return {.start = task.start};
    FoundCourse found = course_of(task.node);
    const Node& node = nodes_[task.node];
    found.moves.push_back({node.at, node.moves[task.move]});
    return found;
}

void CourseGraph::mark(const Task& task)
{
    if (task.node != None)
        nodes_[task.node].done[task.move] = true;
}

CourseGraph::Added CourseGraph::add(const Task& task, const CourseRun& run, bool recognise)
{
    Index before = task.node;
    Index course = None;
    bool helps = task.node != None && nodes_[task.node].moves[task.move].helps();
    // Other surroundings from the start count as a move.
    const std::uint32_t depth = task.node != None ? nodes_[task.node].depth + 1 : task.start == 0 ? 0 : 1;
    std::uint64_t sent = task.node != None ? nodes_[task.node].sent : 0;
    Added added;
    const auto note = [&](const Passage& happened) {
        added.signs.insert(added.signs.end(), happened.signs.begin(), happened.signs.end());
        add_tracker_signs(sent, happened, added.signs);
        sent |= happened.sent;
    };
    for (const Moment& moment : run.moments) {
        ++added.moments;
        note(moment.happened);
        const bool first = &moment == &run.moments.front();
        Index node = None;
        if (recognise && moment.key)
            if (const auto known = known_.find(*moment.key); known != known_.end())
                node = known->second;
        const bool is_new = node == None;
        const bool had_close = before != None && (nodes_[before].had_close || nodes_[before].close);
        if (is_new) {
            if (course == None) {
                course = static_cast<Index>(courses_.size());
                Course made{.start = task.start};
                if (task.node != None)
                    made = {.before = nodes_[task.node].course,
                            .start = task.start,
                            .last = {nodes_[task.node].at, nodes_[task.node].moves[task.move]}};
                courses_.push_back(std::move(made));
            }
            node = static_cast<Index>(nodes_.size());
            if (!moment.key)
                ++unnamed_;
            else
                known_.emplace(*moment.key, node);
            nodes_.push_back({.course = course,
                              .key = moment.key,
                              .at = moment.at,
                              .depth = depth,
                              .open = moment.open,
                              .close = moment.close,
                              .closed = moment.closed,
                              .had_close = had_close,
                              .sent = sent,
                              .moves = moment.moves,
                              .done = std::vector<bool>(moment.moves.size())});
        } else {
            arrivals_.push_back({task, node, moment.at, had_close});
            if (const auto joins = sign_of_joining(sent, nodes_[node].sent))
                added.signs.push_back(*joins);
        }
        if (before != None) {
            nodes_[before].ways.push_back({node, helps});
            if (!first) {
                nodes_[before].next = node;
                nodes_[before].wait = moment.at - nodes_[before].at;
            }
        }
        if (!is_new)
            return added;
        before = node;
        helps = true;
    }
    note(run.rest);
    return added;
}

} // namespace qoro
