#include "simulator/SimulatedWebEngine.h"

#include "simulator/VirtualLoop.h"

#include <utility>

namespace qoro
{

namespace
{
constexpr std::int64_t LoadMicroseconds = 100'000;
} // namespace

std::unique_ptr<WebEngine> SimulatedWebEngines::make_web_engine(WebListener& listener, PageKind)
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
    by_address_ = false;
    begin(base);
}

void SimulatedWebEngine::load_address(const NSURL& address)
{
    if (!address.is_web())
        return;
    // A new page discards the forward history, as in a browser.
    if (!visited_.empty())
        visited_.resize(place_ + 1);
    visited_.push_back(address);
    visit(visited_.size() - 1);
}

void SimulatedWebEngine::go_back()
{
    if (page_state().can_go_back)
        visit(place_ - 1);
}

void SimulatedWebEngine::go_forward()
{
    if (page_state().can_go_forward)
        visit(place_ + 1);
}

void SimulatedWebEngine::reload()
{
    if (!visited_.empty())
        visit(place_);
}

PageState SimulatedWebEngine::page_state() const
{
    PageState state;
    state.address = address_;
    state.secure = has_content_ && address_.parts().has_scheme("https");
    state.loading = loading_;
    state.progress = loading_ ? 0.1 : has_content_ ? 1 : 0;
    state.has_content = has_content_;
    state.can_go_back = place_ > 0;
    state.can_go_forward = place_ + 1 < visited_.size();
    return state;
}

void SimulatedWebEngine::visit(std::size_t place)
{
    place_ = place;
    by_address_ = true;
    begin(visited_[place]);
}

void SimulatedWebEngine::watch_responsiveness(bool watch)
{
    watched_ = watch;
    silent_ = silent_ && watch;
    if (watched_ && fault_ == PageFault::Hangs && !silent_)
        after(0, Report::Silence);
}

void SimulatedWebEngine::break_page(PageFault fault)
{
    if (fault_ == PageFault::Dies)
        return;
    fault_ = fault;
    if (fault == PageFault::Hangs) {
        deliver(Report::Silence);
        return;
    }
    ++load_;
    loading_ = false;
    has_content_ = false;
    silent_ = false;
    listener_.died("the page's process was ended");
}

void SimulatedWebEngine::mend_page()
{
    fault_.reset();
    if (std::exchange(silent_, false))
        listener_.responsiveness_changed(true);
}

void SimulatedWebEngine::begin(const NSURL& address)
{
    mend_page();
    address_ = address;
    loading_ = true;
    ++load_;
    after(0, Report::Start);
}

/// The network's answer for the address being loaded; null when the world does not define one.
const NetAnswer* SimulatedWebEngine::answer() const
{
    const auto known = engines_.world_.net.find(address_.absoluteString().text());
    return by_address_ && known != engines_.world_.net.end() ? &known->second : nullptr;
}

void SimulatedWebEngine::after(std::int64_t microseconds, Report report)
{
    engines_.loop_.after(microseconds, Due{&engines_, serial_, load_, report});
}

void SimulatedWebEngine::Due::operator()() const
{
    SimulatedWebEngine* engine = engines->engines_[serial];
    if (engine && engine->load_ == load)
        engine->deliver(report);
}

void SimulatedWebEngine::deliver(Report report)
{
    if (report == Report::Silence) {
        if (watched_ && fault_ == PageFault::Hangs && !std::exchange(silent_, true))
            listener_.responsiveness_changed(false);
        return;
    }
    const NetAnswer* net = answer();
    if (report == Report::Start) {
        after(LoadMicroseconds + (net ? to_microseconds(net->after) : 0), Report::End);
        listener_.did_start_load();
        return;
    }
    loading_ = false;
    if (net && !net->ok)
        return listener_.did_fail_load(net->error);
    has_content_ = true;
    listener_.did_finish_load();
}

} // namespace qoro
