#pragma once

#include "app/SimulatedAd.h"
#include "formats/AdInput.h"
#include "formats/AdScenario.h"
#include "workbench/BaseScenario.h"

#include <string>

namespace qoro
{

/// The scenario of an ad or a tag.
/// @param input no scenario
/// @throws InputError for an ad that cannot be played, and for a tag that cannot be resolved
AdScenario scenario_of(const AdInput& input, const SimulatedAdOptions& options);

/// Mends a recording that was cut off, and writes a line about it to standard error.
/// @param input a scenario; any other than such a recording stays as it is
/// @throws InputError for a recording of which nothing can be read
void mend_recording(AdInput& input);

/// @param input what a person names, as read
/// @throws InputError for unusable input
BaseScenario base_scenario_of(AdInput input, const SimulatedAdOptions& options);

/// Reads what a person names: an ad file, an ad's folder, a VAST tag, a scenario, or "-" for standard input.
/// @param options how the scenario of an ad or a tag is made; its file is ignored
/// @throws InputError for unusable input
BaseScenario read_base_scenario(const std::string& named, const SimulatedAdOptions& options);

} // namespace qoro
