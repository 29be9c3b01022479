#pragma once

#include "workbench/ScenarioText.h"
#include "workbench/explore/Run.h"
#include "workbench/explore/Search.h"

#include <vector>

namespace qoro
{

/// The beginnings of a search: the scenario itself, and with a page or a video that arrives late or never. Of its
/// steps, everything up to the first "open" remains, and what the page and the player do after it; the search takes the
/// place of the viewer.
struct SearchSetup {
    RunSetup run;
    /// The texts of the beginnings, in their order.
    std::vector<ScenarioText> texts;
};

/// @param guard whether the close guard and the request limit are on
/// @throws InputError for a scenario with a tag, and for one that is invalid
SearchSetup search_setup(const ScenarioText& scenario, bool guard);

/// A scenario that shows a course.
/// @param until microseconds: when it ends
ScenarioText scenario_of_course(const SearchSetup& setup, const FoundCourse& course, std::int64_t until);

} // namespace qoro
