#include "simulator/SimulatedWebEngine.h"

#include "simulator/VirtualLoop.h"

namespace qoro
{

namespace
{
constexpr std::int64_t LoadMicroseconds = 100'000;
} // namespace

std::unique_ptr<WebEngine> SimulatedWebEngines::make_web_engine(WebListener& listener)
{
    return std::make_unique<SimulatedWebEngine>(*this, listener);
}

SimulatedWebEngine::SimulatedWebEngine(SimulatedWebEngines& engines, WebListener& listener)
    : engines_(engines), listener_(listener), serial_(static_cast<std::uint32_t>(engines.engines_.size()))
{
    engines_.engines_.push_back(this);
}

SimulatedWebEngine::~SimulatedWebEngine()
{
    engines_.engines_[serial_] = nullptr;
}

void SimulatedWebEngine::load_html(const NSString&, const NSURL& base)
{
    address_ = base;
    ++load_;
    after(0, Report::Start);
}

void SimulatedWebEngine::after(std::int64_t microseconds, Report report)
{
    engines_.loop_.after(microseconds, [engines = &engines_, serial = serial_, load = load_, report] {
        SimulatedWebEngine* engine = engines->engines_[serial];
        if (engine && engine->load_ == load)
            engine->tell(report);
    });
}

void SimulatedWebEngine::tell(Report report)
{
    if (report == Report::Start) {
        after(LoadMicroseconds, Report::End);
        listener_.did_start_load();
    } else {
        listener_.did_finish_load();
    }
}

} // namespace qoro
