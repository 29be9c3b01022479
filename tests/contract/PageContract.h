#pragma once

#include "session/Session.h"
#include "tests/contract/ContractPlatform.h"

#include <sstream>

namespace qoro::test
{

/// A web engine, and what it reports of its loads.
class PageContract : public ContractTest, private WebListener
{
protected:
    using Reports = std::vector<std::string>;

    ~PageContract() override { engine_.reset(); }

    WebEngine& engine()
    {
        if (!engine_)
            engine_ = platform().web_engines().make_web_engine(*this);
        return *engine_;
    }
    void drop() { engine_.reset(); }
    bool until_reports(const Reports& expected)
    {
        return until([&] { return reports == expected; });
    }

    Reports reports;

private:
    void did_start_load() override { reports.emplace_back("start"); }
    void did_finish_load() override { reports.emplace_back("finish"); }
    bool should_start_load(const NSURL& address, int) override
    {
        reports.push_back("asks for " + address.absoluteString().text());
        return true;
    }
    ScriptAnswer message(const ScriptMessage&) override { return {}; }
    void died(const std::string& reason) override { reports.push_back("died: " + reason); }

    std::unique_ptr<WebEngine> engine_;
};

/// An ad with a page, of which the script speaks and listens over the bridge; the test sees what the player is told.
class ScriptContract : public ContractTest, private Witness
{
protected:
    using Lines = std::vector<std::string>;

    ScriptContract();
    ~ScriptContract() override;

    QoroVideoWebViewController& ad() { return *session_->controller(); }
    /// An event to the script, as the controller sends it.
    void send(const std::string& event, const NSDictionary& result = nullptr)
    {
        platform().dispatch([&] { ad().sendEventToJS(event, result); });
    }
    bool until_heard(std::size_t count)
    {
        return until([&] { return world().script_heard(ad()).size() >= count; });
    }

    /// What the player was told, once the ad had opened.
    Lines told;

private:
    void tell(std::string_view what, std::initializer_list<Field> fields) override;

    std::unique_ptr<Session> session_;
};

} // namespace qoro::test
