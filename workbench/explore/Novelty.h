#pragma once

#include "workbench/explore/Search.h"
#include "workbench/explore/Signs.h"

#include <cstddef>
#include <span>
#include <unordered_map>
#include <vector>

namespace qoro
{

/// Moves of a course; other surroundings from the start count as one.
std::size_t count_of_moves(const FoundCourse& course);

/// Whether a course has fewer moves than another, or as many and is earlier at its end.
bool is_shorter(const FoundCourse& one, const FoundCourse& other);

/// Selects, of many courses, those that show something for the first time: for each sign the shortest course.
class Novelty
{
public:
    void add(const FoundCourse& course, std::span<const Sign> signs);
    /// The shortest first.
    std::vector<FoundCourse> courses() const;

private:
    std::vector<FoundCourse> courses_;
    /// Places in courses_.
    std::unordered_map<Sign, std::size_t> shortest_;
};

} // namespace qoro
