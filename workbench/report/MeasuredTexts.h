#pragma once

#include "platform/Geometry.h"
#include "platform/Ports.h"
#include "workbench/ScenarioText.h"

#include <cstdint>
#include <functional>
#include <string>

namespace qoro
{

enum class TextsToMeasure : std::uint8_t {
    /// Every text that a view shows.
    All,
    /// The titles of the action buttons and the brand text, which the ad gives.
    OfTheAd
};

/// Measures the texts that the session's views show, and writes their sizes into the scenario, so that it lays them out
/// as a display does. Sizes that the scenario already has stay. Simulates the session once.
/// @param measure the size of a text on one line
/// @throws InputError for an invalid scenario
void measure_texts(ScenarioText& scenario,
                   const std::function<CGSize(const std::string& text, const FontSpec& font)>& measure,
                   TextsToMeasure which = TextsToMeasure::All);

} // namespace qoro
