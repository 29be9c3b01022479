#pragma once

#include "platform/Ports.h"
#include "session/Steps.h"
#include "session/World.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace qoro
{

class SimulatedWebEngine;
class VirtualLoop;

/// Makes the web engines of a simulated platform. A page's script does not run: what it would do are steps.
class SimulatedWebEngines final : public WebEngineFactory
{
public:
    SimulatedWebEngines(VirtualLoop& loop, const World& world) : loop_(loop), world_(world) {}
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) override;

private:
    friend class SimulatedWebEngine;
    VirtualLoop& loop_;
    const World& world_;
    std::vector<SimulatedWebEngine*> engines_; // by serial; null for those that are gone
};

/// Reports the start of a page's load as an event of its own, and its end 0.1 s later, for an address that the network
/// answers late as much later. An address that the network fails to answer fails. A further page ends the load before
/// it, whose end is then not reported.
class SimulatedWebEngine final : public WebEngine
{
public:
    SimulatedWebEngine(SimulatedWebEngines& engines, WebListener& listener);
    ~SimulatedWebEngine() override;

    void load_html(const NSString& html, const NSURL& base) override;
    void load_address(const NSURL& address) override;
    void go_back() override;
    void go_forward() override;
    void reload() override;
    PageState page_state() const override;
    void call_listeners(const std::string&, const NSArray&, const NSDictionary&) override {}
    NSURL current_address() const override { return address_; }
    void set_scales_page_to_fit(bool) override {}
    void watch_responsiveness(bool watch) override;

    /// The page's process dies, or its script hangs, inside the call. A further page begins anew.
    void break_page(PageFault fault);
    bool script_runs() const { return !fault_; }

private:
    friend class SimulatedWebEngines;
    enum class Report : std::uint16_t { Start, End, Silence };
    void begin(const NSURL& address);
    void visit(std::size_t place);
    void after(std::int64_t microseconds, Report report);
    void tell(Report report);
    const NetAnswer* answer() const;
    void mend_page();

    SimulatedWebEngines& engines_;
    WebListener& listener_;
    const std::uint32_t serial_;
    std::uint16_t load_ = 0;
    NSURL address_;
    bool loading_ = false;
    bool has_content_ = false;
    std::optional<PageFault> fault_;
    bool watched_ = false;
    /// It was reported that the script does not answer.
    bool silent_ = false;
    /// The addresses that were visited; html stands in none of them.
    std::vector<NSURL> visited_;
    /// The place among them of what is shown, or on its way; past the end before the first.
    std::size_t place_ = 0;
    /// Whether what is loading is an address.
    bool by_address_ = false;
};

} // namespace qoro
