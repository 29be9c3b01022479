#pragma once

#include "formats/Scenario.h"
#include "formats/Trace.h"
#include "host/Session.h"
#include "simulator/SimulatedPlatform.h"

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
    /// Null before run(), and for a scenario with a VAST tag.
    Session* session() { return session_.get(); }

private:
    void run_tag();

    const Scenario& scenario_;
    SimulatedPlatform platform_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<OpenedTag> tag_;
};

/// Runs a scenario and writes its trace to a sink.
/// @param log receives the lines of the ad's log, too; may be empty
void simulate(const Scenario& scenario, TraceFormat format, const LineSink& sink, const LogSink& log = {});

/// As above, as one text of JSON lines.
std::string simulate(const Scenario& scenario);

} // namespace qoro
