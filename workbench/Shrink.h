#pragma once

#include "workbench/ScenarioText.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qoro
{

/// Limits of a search for a smaller scenario.
struct ShrinkLimits {
    /// Scenarios that are tried.
    std::size_t trials = 400;
    /// JSON paths that are kept, with everything below them.
    std::vector<std::string> kept = {};
};

/// Removes steps, properties of the ad, answers of the network and everything else from a scenario, and shortens its
/// time, as long as a predicate holds. Deterministic. No scenario is tried twice, and none that is invalid.
///
/// If the limit was not reached, nothing more can go: the predicate fails if any step, any two steps, or any other
/// value is removed; if a step is replaced by one that does nothing (`"device": {}`); if a body of an answer is
/// emptied; and if the time before a step is left out or shortened to the next whole second, for this step or all that
/// follow as well.
/// @param scenario one for which the predicate holds
/// @return a scenario for which the predicate holds
ScenarioText shrink(ScenarioText scenario, const std::function<bool(const ScenarioText&)>& shows,
                    const ShrinkLimits& limits = {});

} // namespace qoro
