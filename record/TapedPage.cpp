#include "record/TapedPage.h"

#include "record/Values.h"

#include <string>
#include <utility>

namespace qoro
{

namespace
{

using detail::url_of;
using detail::value_of;

class TapedPage final : public WebDecorator, private WebListener
{
public:
    TapedPage(Tape& tape, WebEngineFactory* real, WebListener& listener, PageKind kind)
        : tape_(tape), listener_(listener),
          source_(tape.open("page", kind == PageKind::Browsed ? "browsed" : "creative", true,
                            [this](const Value& what) { report(what); }))
    {
        if (real)
            tape_.call("make_page", [&] { real_ = real->make_web_engine(*this, kind); });
    }
    ~TapedPage() override
    {
        tape_.close(source_);
        tape_.call("drop_page", [&] { real_.reset(); });
    }
    TapedPage(const TapedPage&) = delete;
    TapedPage& operator=(const TapedPage&) = delete;

    WebEngine* decorated() const override { return real_.get(); }

    void load_html(const NSString& html, const NSURL& base) override
    {
        tape_.call("load_html", [&] { real_->load_html(html, base); });
    }
    void load_address(const NSURL& address) override
    {
        tape_.call("load_address", [&] { real_->load_address(address); });
    }
    void go_back() override
    {
        tape_.call("go_back", [&] { real_->go_back(); });
    }
    void go_forward() override
    {
        tape_.call("go_forward", [&] { real_->go_forward(); });
    }
    void reload() override
    {
        tape_.call("reload", [&] { real_->reload(); });
    }
    PageState page_state() const override
    {
        return detail::page_state_of(read("pageState", [&] { return value_of(real_->page_state()); }));
    }
    void call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) override
    {
        tape_.call("call_listeners", [&] { real_->call_listeners(event, callbacks, data); });
    }
    NSURL current_address() const override
    {
        return url_of(read("pageAddress", [&] { return Value(real_->current_address().absoluteString()); }));
    }
    void set_scales_page_to_fit(bool scales) override
    {
        tape_.call("set_scales", [&] { real_->set_scales_page_to_fit(scales); });
    }
    double page_scale() const override
    {
        return read("pageScale", [&] { return Value(real_->page_scale()); }).doubleValue();
    }
    void watch_responsiveness(bool watch) override
    {
        tape_.call("watch", [&] { real_->watch_responsiveness(watch); });
    }
    void find_element(const std::string& selector, std::function<void(std::optional<PageTouch>)> found) override
    {
        if (!tape_.inside())
            return real_->find_element(selector, std::move(found));
        const auto id =
            tape_.open("find", selector, false, [found](const Value& what) { found(detail::page_touch_of(what)); });
        tape_.call("find", [&] {
            real_->find_element(selector, [&tape = tape_, id, found](const std::optional<PageTouch>& touch) {
                tape.arrive("found", id, value_of(touch), [&] { found(touch); });
            });
        });
    }
    void aim_touch(CGPoint point, std::function<void(PageTouch)> found) override
    {
        if (!tape_.inside())
            return real_->aim_touch(point, std::move(found));
        const auto id = tape_.open("aim", NSArray{point.x, point.y}, false, [found](const Value& what) {
            found(detail::page_touch_of(what).value_or(PageTouch{}));
        });
        tape_.call("aim", [&] {
            real_->aim_touch(point, [&tape = tape_, id, found](const PageTouch& touch) {
                tape.arrive("found", id, value_of(std::optional(touch)), [&] { found(touch); });
            });
        });
    }
    void touch_page() override
    {
        tape_.call("touch_page", [&] { real_->touch_page(); });
    }
    WidgetSource* widget_source() override { return real_ ? real_->widget_source() : nullptr; }

private:
    Value read(const char* name, const std::function<Value()>& real) const
    {
        return tape_.read(name, static_cast<std::int64_t>(source_), real);
    }
    void arrive(const NSDictionary& what, const std::function<void()>& deliver)
    {
        tape_.arrive("page", source_, what, deliver);
    }

    void did_start_load() override
    {
        arrive({{"news", "start"}}, [&] { listener_.did_start_load(); });
    }
    void did_finish_load() override
    {
        arrive({{"news", "finish"}}, [&] { listener_.did_finish_load(); });
    }
    bool should_start_load(const NSURL& address, int navigation_type) override
    {
        bool may = false;
        arrive({{"news", "navigation"}, {"address", address.absoluteString()}, {"type", navigation_type}},
               [&] { may = listener_.should_start_load(address, navigation_type); });
        return may;
    }
    ScriptAnswer message(const ScriptMessage& message) override
    {
        ScriptAnswer answer;
        arrive({{"news", "message"}, {"command", message.command}, {"arguments", message.arguments}},
               [&] { answer = listener_.message(message); });
        return answer;
    }
    void did_fail_load(const std::string& reason) override
    {
        arrive({{"news", "fail"}, {"reason", reason}}, [&] { listener_.did_fail_load(reason); });
    }
    void page_state_changed() override
    {
        arrive({{"news", "state"}}, [&] { listener_.page_state_changed(); });
    }
    void refused(const std::string& what, const std::string& detail) override
    {
        arrive({{"news", "refused"}, {"what", what}, {"detail", detail}}, [&] { listener_.refused(what, detail); });
    }
    void reported(const PageReport& report) override
    {
        arrive({{"news", "report"}, {"report", value_of(report)}}, [&] { listener_.reported(report); });
    }
    void died(const std::string& reason) override
    {
        arrive({{"news", "died"}, {"reason", reason}}, [&] { listener_.died(reason); });
    }
    void responsiveness_changed(bool responds) override
    {
        arrive({{"news", "responds"}, {"responds", responds}}, [&] { listener_.responsiveness_changed(responds); });
    }

    /// On a replay.
    void report(const Value& value)
    {
        const NSDictionary what = value.dictionary();
        const std::string& news = what["news"].text();
        if (news == "start")
            listener_.did_start_load();
        else if (news == "finish")
            listener_.did_finish_load();
        else if (news == "navigation")
            listener_.should_start_load(url_of(what["address"]), what["type"].intValue());
        else if (news == "message")
            listener_.message({what["command"].text(), what["arguments"].array()});
        else if (news == "fail")
            listener_.did_fail_load(what["reason"].text());
        else if (news == "state")
            listener_.page_state_changed();
        else if (news == "refused")
            listener_.refused(what["what"].text(), what["detail"].text());
        else if (news == "report")
            listener_.reported(detail::page_report_of(what["report"]));
        else if (news == "died")
            listener_.died(what["reason"].text());
        else if (news == "responds")
            listener_.responsiveness_changed(what["responds"].boolValue());
    }

    Tape& tape_;
    WebListener& listener_;
    const Tape::SourceId source_;
    std::unique_ptr<WebEngine> real_;
};

} // namespace

std::unique_ptr<WebEngine> TapedPages::make_web_engine(WebListener& listener, PageKind kind)
{
    return std::make_unique<TapedPage>(tape_, real_, listener, kind);
}

} // namespace qoro
