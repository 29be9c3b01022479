#pragma once

#include "workbench/BaseScenario.h"
#include "workbench/check/CheckedSession.h"
#include "workbench/check/Rules.h"

#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// What a rule finds in one session, to look for it in others.
class ShownFault
{
public:
    /// @param rule outlives the fault
    /// @param policy_seconds seconds after which the viewer must be able to close the ad
    ShownFault(const Rule& rule, const ScenarioText& scenario, double policy_seconds);

    /// A sentence without a full stop; absent if the rule finds nothing in the session, or examines more than that.
    std::optional<std::string> sentence() const;
    /// Whether the rule finds the same fault in another session: one about the same control, tracker or setting.
    bool is_in(const ScenarioText& scenario) const;

private:
    std::vector<Suspicion> suspicions_in(const ScenarioText& scenario) const;

    const Rule& rule_;
    const double policy_seconds_;
    std::optional<Suspicion> shown_;
};

} // namespace qoro
