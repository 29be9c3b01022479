#include "simulator/Simulation.h"

#include "formats/AdFile.h"
#include "formats/LogLines.h"
#include "host/OpenedTag.h"
#include "host/Rehearsal.h"
#include "simulator/VirtualLoop.h"
#include "views/ViewNode.h"

#include <random>

namespace qoro
{

Simulation::Simulation(const Scenario& scenario) : scenario_(scenario), platform_(scenario.world)
{
}

Simulation::~Simulation()
{
    // Events of the teardown are not part of the session.
    platform_.set_event_sink(nullptr);
}

void Simulation::run()
{
    if (!scenario_.tag.empty())
        return run_tag();
    begin();
    for (std::size_t n = 0; n < scenario_.steps.size(); ++n) {
        const Step& step = scenario_.steps[n];
        platform_.run_until(step.at);
        session_->perform(step, n);
    }
}

void Simulation::begin()
{
    session_ = std::make_unique<Session>(platform_, platform_, scenario_.host, copy_of(*scenario_.ad));
}

/// The steps are events of the loop, since each ad of the tag has a session of its own.
void Simulation::run_tag()
{
    VirtualLoop& loop = platform_.loop();
    TagOptions options;
    options.clock = [&loop, start = scenario_.host.session] { return start + loop.now(); };
    options.random = [random = std::mt19937()]() mutable { return static_cast<std::uint32_t>(random()); };
    tag_ = std::make_unique<OpenedTag>(
        platform_, OpenedTag::Tag{.address = scenario_.tag}, nullptr, scenario_.host, options,
        Rehearsal{scenario_.steps, platform_, nullptr, 0, [this](const auto& controller) {
                      tag_controller_ = controller;
                      // The ad has no window yet.
                      const auto windows = platform_.shared<WindowList>().all();
                      tag_window_ = windows.empty() ? nullptr : windows.back();
                  }});
    if (!scenario_.steps.empty())
        platform_.run_until(scenario_.steps.back().at);
}

std::shared_ptr<QoroVideoWebViewController> Simulation::living() const
{
    return session_ ? session_->living() : tag_controller_.lock();
}

bool Simulation::holds_controller() const
{
    // An ad of a tag is held as long as its host has a window.
    return session_ ? session_->controller() != nullptr : living() && !tag_window_.expired();
}

std::shared_ptr<ViewNode> Simulation::host_window() const
{
    return session_ ? session_->host_window().node() : tag_window_.lock();
}

void simulate(const Scenario& scenario, TraceFormat format, const LineSink& sink, const LogSink& log)
{
    Simulation simulation(scenario);
    Trace trace(simulation.platform().loop(), format, sink);
    LogFilter filter(log, trace);
    simulation.platform().set_event_sink(&filter);
    simulation.run();
    simulation.platform().set_event_sink(nullptr);
}

std::string simulate(const Scenario& scenario)
{
    std::string lines;
    simulate(scenario, TraceFormat::Json, [&lines](std::string_view line) { lines += line; });
    return lines;
}

} // namespace qoro
