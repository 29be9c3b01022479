#pragma once

#include "workbench/BaseScenario.h"
#include "workbench/check/Courses.h"
#include "workbench/check/Finding.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
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

/// When a course shows each of some findings, in microseconds since its start; absent for a finding that it does not
/// show and for a fact that needs no session.
/// @throws InputError for an invalid scenario
std::vector<std::optional<std::int64_t>> moments_in(const Course& course, std::span<const Finding> findings);

} // namespace qoro
