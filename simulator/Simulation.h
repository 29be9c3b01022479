#pragma once

#include "formats/Scenario.h"
#include "formats/Trace.h"
#include "host/Session.h"
#include "simulator/SimulatedPlatform.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace qoro
{

class OpenedTag;

/// One session of a scenario in virtual time. Several simulations may share the scenario, also across threads.
class Simulation
{
public:
    /// @param scenario outlives the simulation
    explicit Simulation(const Scenario& scenario);
    ~Simulation();

    SimulatedPlatform& platform() { return platform_; }
    /// Sets up the host and the controller, then runs every step; nothing runs after the last one. Set the platform's
    /// event sink before the call.
    void run();
    /// As the beginning of run(): sets up the host and the controller. Not for a scenario with a tag.
    void begin();
    /// Runs everything due at or before a time, in microseconds. Before that, begin().
    void run_until(std::int64_t microseconds) { platform_.loop().run_until(microseconds); }
    /// Performs a step now, whatever its time.
    /// @param n the step's index, from 0
    void perform(const Step& step, std::size_t n) { session_->perform(step, n); }
    /// The controller of the ad that was opened last, while anything retains it; null once destroyed.
    std::shared_ptr<QoroVideoWebViewController> living() const;
    /// Whether the host retains that controller.
    bool holds_controller() const;
    /// The host's own window; null without one, as between the ads of a tag.
    std::shared_ptr<ViewNode> host_window() const;

private:
    void run_tag();

    const Scenario& scenario_;
    SimulatedPlatform platform_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<OpenedTag> tag_;
    /// Of the tag's last ad.
    /// @{
    std::weak_ptr<QoroVideoWebViewController> tag_controller_;
    std::weak_ptr<ViewNode> tag_window_;
    /// @}
};

/// Runs a scenario and writes its trace to a sink.
/// @param log receives the lines of the ad's log, too; may be empty
void simulate(const Scenario& scenario, TraceFormat format, const LineSink& sink, const LogSink& log = {});

/// As above, as one text of JSON lines.
std::string simulate(const Scenario& scenario);

} // namespace qoro
