#pragma once

#include "formats/AddressPattern.h"
#include "simulator/Simulation.h"
#include "simulator/Summary.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// Watches a simulated session for its summary, between the platform and the trace. It examines the session only after
/// a visible change, until the close button could be tapped, and after a close.
class SessionWatch final : public EventSink
{
public:
    /// Becomes the simulation's event sink.
    /// @param ad whose trackers are counted
    /// @param trace receives every event, unchanged
    SessionWatch(Simulation& simulation, const QoroVideoAd& ad, EventSink& trace);
    /// Stops watching.
    ~SessionWatch() override;

    void receive(const Event& event) override;

    /// After the last step.
    Summary finish();

private:
    void note(const event::Requested& request);
    void note(const event::VastTracked& request);
    void note(const event::StepBegun& step);
    void note(const event::Released&);
    void note(const event::ExtraViewRemoved&);
    void note(const event::AdClosed&);
    /// Every other event leaves the summary as it is.
    template <typename Other>
    void note(const Other&)
    {
    }

    void find_trackers(const QoroVideoAd& ad);
    void count_tracker(std::string_view url);
    /// Looks at the end of the moment, when everything that is due now has run.
    void look_later();
    void look();
    bool close_button_is_reachable() const;
    LeftBehind left_behind() const;

    Simulation& simulation_;
    SimulatedPlatform& platform_;
    EventSink& trace_;
    Summary summary_;
    /// Of the ad's own trackers, at the same index as in the summary.
    std::vector<AddressPattern> patterns_;
    bool will_look_ = false;
};

} // namespace qoro
