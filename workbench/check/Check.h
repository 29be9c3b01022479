#pragma once

#include "workbench/BaseScenario.h"
#include "workbench/check/Courses.h"
#include "workbench/check/Finding.h"

#include <cstddef>
#include <vector>

namespace qoro
{

/// What a check has found.
struct CheckResult {
    /// The worst first, then in the order of the rules.
    std::vector<Finding> findings;
    /// Sessions that were simulated.
    std::size_t sessions = 0;
};

/// Puts an ad through every course of events and asks every rule.
/// @throws InputError for an invalid scenario
CheckResult check_ad(const BaseScenario& base, const CheckOptions& options);

} // namespace qoro
