#pragma once

#include "formats/Steps.h"
#include "host/SessionControls.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace qoro
{

class QoroVideoWebViewController;

/// Steps that run while an ad is open, for programs that test ads.
struct Rehearsal {
    /// Performed at their times, in seconds of MainLoop::now(); at once if the time has passed. The first OpenStep
    /// opens the ad; without an OpenStep, the ad opens as the loop's first event.
    std::vector<Step> steps;
    /// Carries out the steps that affect the ad's surroundings; outlives the ad.
    SessionControls& controls;
    /// Called once, after the controller has been created and before the ad opens. May be empty.
    std::function<void()> prepared;
    /// Index of the first step in the whole list, of which these may be the rest.
    std::size_t first = 0;
    /// As prepared, with the controller; null if it could not be initialised. May be empty.
    std::function<void(const std::shared_ptr<QoroVideoWebViewController>&)> created = {};
};

} // namespace qoro
