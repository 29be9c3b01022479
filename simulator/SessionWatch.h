#pragma once

#include "simulator/Simulation.h"
#include "simulator/Summary.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// Watches a simulated session for its summary, between the platform and the trace. It costs nothing while nothing
/// happens: it looks only after something on the screen has changed, until the close button was seen, and after a
/// close.
class SessionWatch final : public Witness
{
public:
    /// Becomes the simulation's witness.
    /// @param ad whose trackers are counted
    /// @param trace is told everything, unchanged
    SessionWatch(Simulation& simulation, const QoroVideoAd& ad, Witness& trace);
    /// Stops watching.
    ~SessionWatch() override;

    void tell(std::string_view what, std::initializer_list<Field> fields) override;

    /// After the last step.
    Summary finish();

private:
    /// A tracker's address between its macros, each of which stands for any text.
    using Pieces = std::vector<std::string>;

    void find_trackers(const QoroVideoAd& ad);
    void count_tracker(std::string_view url);
    /// Looks at the end of the moment, when everything that is due now has run.
    void look_later();
    void look();
    bool close_button_is_reachable() const;
    LeftBehind left_behind() const;

    Simulation& simulation_;
    SimulatedPlatform& platform_;
    Witness& trace_;
    Summary summary_;
    /// Of the ad's own trackers, at the same index as in the summary.
    std::vector<Pieces> patterns_;
    std::optional<std::int64_t> close_began_;
    bool will_look_ = false;
};

} // namespace qoro
