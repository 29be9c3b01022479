#pragma once

#include "formats/Steps.h"
#include "host/SessionControls.h"

#include <functional>
#include <vector>

namespace qoro
{

/// Steps that run while an ad is open, for programs that test ads.
struct Rehearsal {
    /// Performed at their times, in seconds of the loop's clock. With an OpenStep among them, the first of them opens
    /// the ad; otherwise the ad opens as a first event of the loop.
    std::vector<Step> steps;
    /// Carries out the steps that affect the ad's surroundings; outlives the ad.
    SessionControls& controls;
    /// Called when the controller exists and the ad is not open yet. May be empty.
    std::function<void()> prepared;
};

} // namespace qoro
