#pragma once

#include "workbench/explore/Search.h"
#include "workbench/explore/Setup.h"

#include <span>
#include <string_view>

namespace qoro
{

/// Why a rule of a check is not asked in a course.
struct CourseExemption {
    /// Stable, in kebab case.
    std::string_view id;
    /// A sentence without a full stop.
    std::string_view what;
};

/// All of them.
std::span<const CourseExemption> course_exemptions();

/// Asks the rules of a check in the courses of a search that show something new, and adds a finding for each rule that
/// is violated, with the shortest course: no move of it can be left out.
void ask_rules(const SearchSetup& setup, const SearchOptions& options, SearchResult& result);

/// search(), then ask_rules() unless it was stopped.
SearchResult explore_ad(const SearchSetup& setup, const SearchOptions& options);

} // namespace qoro
