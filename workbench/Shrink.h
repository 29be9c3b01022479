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
/// time, as long as a predicate holds. Deterministic. Scenarios that are invalid are not passed to the predicate.
/// @param scenario one for which the predicate holds
/// @return a scenario for which the predicate holds; if the limit was not reached, none of its parts can be removed
ScenarioText shrink(ScenarioText scenario, const std::function<bool(const ScenarioText&)>& shows,
                    const ShrinkLimits& limits = {});

} // namespace qoro
