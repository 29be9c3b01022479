#pragma once

#include "platform/Ports.h"

#include <cstdint>
#include <vector>

namespace qoro
{

class SimulatedWebEngine;
class VirtualLoop;

/// Makes the web engines of a simulated platform. A page's script does not run: what it would do are steps.
class SimulatedWebEngines final : public WebEngineFactory
{
public:
    explicit SimulatedWebEngines(VirtualLoop& loop) : loop_(loop) {}
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener) override;

private:
    friend class SimulatedWebEngine;
    VirtualLoop& loop_;
    std::vector<SimulatedWebEngine*> engines_; // by serial; null for those that are gone
};

/// Reports the start of a page's load as an event of its own, and its end 0.1 s later. A further page ends the load
/// before it, whose end is then not reported.
class SimulatedWebEngine final : public WebEngine
{
public:
    SimulatedWebEngine(SimulatedWebEngines& engines, WebListener& listener);
    ~SimulatedWebEngine() override;

    void load_html(const NSString& html, const NSURL& base) override;
    void call_listeners(const std::string&, const NSArray&, const NSDictionary&) override {}
    NSURL current_address() const override { return address_; }
    void set_scales_page_to_fit(bool) override {}

private:
    friend class SimulatedWebEngines;
    enum class Report : std::uint16_t { Start, End };
    void after(std::int64_t microseconds, Report report);
    void tell(Report report);

    SimulatedWebEngines& engines_;
    WebListener& listener_;
    const std::uint32_t serial_;
    std::uint16_t load_ = 0;
    NSURL address_;
};

} // namespace qoro
