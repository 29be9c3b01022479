#include "workbench/explore/Novelty.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace qoro
{

std::size_t count_of_moves(const FoundCourse& course)
{
    return course.moves.size() + (course.start == 0 ? 0 : 1);
}

bool is_shorter(const FoundCourse& one, const FoundCourse& other)
{
    const auto length = [](const FoundCourse& course) {
        return std::pair(count_of_moves(course), course.moves.empty() ? 0 : course.moves.back().at);
    };
    return length(one) < length(other);
}

void Novelty::add(const FoundCourse& course, std::span<const Sign> signs)
{
    std::optional<std::size_t> place;
    for (const Sign sign : signs) {
        const auto [known, is_new] = shortest_.try_emplace(sign, courses_.size());
        if (!is_new && (known->second == place || !is_shorter(course, courses_[known->second])))
            continue;
        if (!place) {
            place = courses_.size();
            courses_.push_back(course);
        }
        known->second = *place;
    }
}

std::vector<FoundCourse> Novelty::courses() const
{
    std::set<std::size_t> places;
    for (const auto& [sign, place] : shortest_)
        places.insert(place);
    std::vector<FoundCourse> all;
    all.reserve(places.size());
    for (const std::size_t place : places)
        all.push_back(courses_[place]);
    std::ranges::stable_sort(all, is_shorter);
    return all;
}

} // namespace qoro
