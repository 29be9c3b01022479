#include "workbench/explore/Reach.h"

#include <cstdint>
#include <set>

namespace qoro
{

using Index = CourseGraph::Index;
constexpr Index None = CourseGraph::None;

std::vector<bool> with_way_out(const CourseGraph& graph)
{
    const auto& nodes = graph.nodes();
    std::vector<std::vector<Index>> back(nodes.size());
    std::vector<Index> open;
    std::vector<bool> out(nodes.size());
    for (Index index = 0; index < nodes.size(); ++index) {
        for (const CourseGraph::Edge& way : nodes[index].ways)
            if (way.helps)
                back[way.to].push_back(index);
        if (nodes[index].close || nodes[index].closed || !nodes[index].open) {
            out[index] = true;
            open.push_back(index);
        }
    }
    while (!open.empty()) {
        const Index index = open.back();
        open.pop_back();
        for (const Index before : back[index])
            if (!out[before]) {
                out[before] = true;
                open.push_back(before);
            }
    }
    return out;
}

std::vector<Index> within_reach(const CourseGraph& graph, Index from)
{
    std::vector<Index> found{from};
    std::set<Index> seen{from};
    for (std::size_t n = 0; n < found.size(); ++n)
        for (const CourseGraph::Edge& way : graph.nodes()[found[n]].ways)
            if (way.helps && seen.insert(way.to).second)
                found.push_back(way.to);
    return found;
}

std::vector<std::optional<std::int64_t>> waits(const CourseGraph& graph)
{
    const auto& nodes = graph.nodes();
    std::vector<std::optional<std::int64_t>> wait(nodes.size());
    std::vector<std::uint8_t> known(nodes.size());
    for (Index index = 0; index < nodes.size(); ++index) {
        std::vector<Index> chain;
        Index each = index;
        while (each != None && known[each] == 0) {
            known[each] = 1;
            chain.push_back(each);
            if (nodes[each].close || nodes[each].closed) {
                wait[each] = 0;
                known[each] = 2;
                chain.pop_back();
                break;
            }
            each = nodes[each].next;
        }
        std::optional<std::int64_t> ahead = each != None && known[each] == 2 ? wait[each] : std::nullopt;
        for (auto back = chain.rbegin(); back != chain.rend(); ++back) {
            if (ahead)
                ahead = *ahead + nodes[*back].wait;
            wait[*back] = ahead;
            known[*back] = 2;
        }
    }
    return wait;
}

} // namespace qoro
