#pragma once

#include "host/Session.h"
#include "tests/contract/ContractPlatform.h"

#include <sstream>

namespace qoro::test
{

/// A web engine and its load reports.
class PageContract : public ContractTest, private WebListener
{
protected:
    using Reports = std::vector<std::string>;

    ~PageContract() override { engine_.reset(); }

    WebEngine& engine()
    {
        if (!engine_)
            engine_ = platform().web_engines().make_web_engine(*this, kind);
        return *engine_;
    }
    void drop() { engine_.reset(); }
    bool until_reports(const Reports& expected)
    {
        return until([&] { return reports == expected; });
    }

    Reports reports;
    PageKind kind = PageKind::Creative;

private:
    void did_start_load() override { reports.emplace_back("start"); }
    void did_finish_load() override { reports.emplace_back("finish"); }
    bool should_start_load(const NSURL& address, int) override
    {
        reports.push_back("asks for " + address.absoluteString().text());
        return true;
    }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void did_fail_load(const std::string&) override { reports.emplace_back("fail"); }
    void died(const std::string& reason) override { reports.push_back("died: " + reason); }

    std::unique_ptr<WebEngine> engine_;
};

/// A web engine of the browser's kind.
class BrowserContract : public PageContract
{
protected:
    BrowserContract() { kind = PageKind::Browsed; }

    NSURL found() { return NSURL::URLWithString(world().address(Address::Found)); }
    NSURL other() { return NSURL::URLWithString(world().page_address()); }
    std::string shown() { return engine().page_state().address.absoluteString().text(); }
    /// Waits until the current load ends.
    bool until_end()
    {
        const bool came = until([&] { return !reports.empty() && reports.back() != "start" && idle(); });
        return came;
    }
    bool visit(const NSURL& address)
    {
        reports.clear();
        engine().load_address(address);
        return until_end();
    }

private:
    bool idle() { return !engine().page_state().loading; }
};

/// An ad with a page whose script uses the bridge; the test observes the player's commands.
class ScriptContract : public ContractTest, private EventSink
{
protected:
    using Lines = std::vector<std::string>;

    ScriptContract();
    ~ScriptContract() override;

    QoroVideoWebViewController& ad() { return *session_->controller(); }
    /// Sends an event to the script, as the controller does.
    void send(const std::string& event, const NSDictionary& result = nullptr)
    {
        platform().dispatch([&] { ad().sendEventToJS(event, result); });
    }
    bool until_heard(std::size_t count)
    {
        return until([&] { return world().script_heard(ad()).size() >= count; });
    }

    /// The player's commands since the ad opened.
    Lines commands;

private:
    void receive(const Event& event) override;

    std::unique_ptr<Session> session_;
};

} // namespace qoro::test
