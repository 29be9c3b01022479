#pragma once

#include "formats/Scenario.h"
#include "workbench/SessionRecord.h"
#include "workbench/expression/Expression.h"

namespace qoro
{

/// Simulates a session until it is decided whether an expression holds.
/// @return false also if the session ended too early to tell
bool holds(const ExpressionNode& expression, const Scenario& scenario);

/// The same of a recorded session.
bool holds(const ExpressionNode& expression, const Scenario& scenario, const SessionRecord& record);

} // namespace qoro
