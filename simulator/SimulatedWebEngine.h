#pragma once

#include "formats/Steps.h"
#include "formats/World.h"
#include "platform/Ports.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace qoro
{

class SimulatedWebEngine;
class VirtualLoop;

/// Creates the web engines of a simulated platform. A page's script does not run; steps issue its commands.
class SimulatedWebEngines final : public WebEngineFactory
{
public:
    SimulatedWebEngines(VirtualLoop& loop, const World& world) : loop_(loop), world_(world) {}
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) override;

private:
    friend class SimulatedWebEngine;
    friend class StateReader; // workbench/explore/StateHash.cpp
    VirtualLoop& loop_;
    const World& world_;
    std::vector<SimulatedWebEngine*> engines_; // indexed by serial; null once destroyed
};

/// Reports the start of a load as a separate event, and its end 0.1 s later plus the delay of the address's answer. A
/// load fails when the network answers the address with an error. A new load supersedes the one before it, whose end is
/// not reported.
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

    /// Ends the page's process, or hangs its script, inside the call. A new load mends the page.
    void break_page(PageFault fault);
    bool script_runs() const { return !fault_; }

private:
    friend class SimulatedWebEngines;
    friend class StateReader; // workbench/explore/StateHash.cpp
    enum class Report : std::uint16_t { Start, End, Silence };
    /// The work of the main loop, which std::function stores without allocating.
    struct Due {
        SimulatedWebEngines* engines;
        std::uint32_t serial;
        std::uint16_t load;
        Report report;
        void operator()() const;
    };
    void begin(const NSURL& address);
    void visit(std::size_t place);
    void after(std::int64_t microseconds, Report report);
    void deliver(Report report);
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
    /// The hang has been reported.
    bool silent_ = false;
    /// The history of addresses; pages loaded as HTML text are not in it.
    std::vector<NSURL> visited_;
    /// Index in visited_ of the page shown or loading; 0 while the history is empty.
    std::size_t place_ = 0;
    /// Whether the current load is of an address, not of HTML text.
    bool by_address_ = false;
};

} // namespace qoro
