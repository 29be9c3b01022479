#pragma once

#include "workbench/ScenarioText.h"
#include "workbench/check/CheckedSession.h"
#include "workbench/check/Rules.h"

#include <cstddef>
#include <optional>
#include <string>

namespace qoro
{

/// How an ad could avoid a fault of its layout: "set portraitVideoPos to TOP".
/// @param course of the session that shows the fault
/// @param scenario of that session, or of one with the same touches where the layout decides at which points
/// @param sessions is increased by the number of sessions that were simulated; may be null
/// @return absent if every layout has the fault
std::optional<std::string> layout_without(const Rule& rule, const Course& course, const ScenarioText& scenario,
                                          const Suspicion& fault, std::size_t* sessions = nullptr);

} // namespace qoro
