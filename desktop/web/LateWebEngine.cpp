#include "desktop/web/LateWebEngine.h"
#include "desktop/glib/StartupTrace.h"

#include <gtk/gtk.h>

#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds between two checks whether the view may be created.
constexpr double AskInterval = 0.005;

GtkWidget* make_frame()
{
    auto* frame = GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "accessible-role", GTK_ACCESSIBLE_ROLE_GENERIC, nullptr));
    gtk_widget_set_layout_manager(frame, gtk_bin_layout_new());
    return frame;
}

} // namespace

LateWebEngine::LateWebEngine(Platform& platform, WebListener& listener, Maker make, std::function<bool()> may_begin)
    : platform_(platform), listener_(listener), make_(std::move(make)), may_begin_(std::move(may_begin)),
      frame_(sink_ref(make_frame()))
{
}

LateWebEngine::~LateWebEngine()
{
    liveness_.end();
    if (asking_ != 0)
        platform_.loop().stop_timer(asking_);
    engine_.reset(); // removes its widget
    if (gtk_widget_get_parent(frame_.get()))
        gtk_widget_unparent(frame_.get());
}

void LateWebEngine::begin()
{
    startup_point("page begun");
    try {
        engine_ = make_();
        startup_point("page's view created");
        if (transparent_)
            engine_->set_transparent(*transparent_);
        g_object_set(engine_->widget(), "accessible-role", GTK_ACCESSIBLE_ROLE_DOCUMENT, nullptr);
        gtk_widget_set_parent(engine_->widget(), frame_.get());
        if (on_view)
            on_view();
        for (const auto& call : std::exchange(waiting_, {}))
            call(*engine_);
    } catch (const std::runtime_error& unguarded) {
        reason_ = unguarded.what();
        waiting_.clear();
        report_failure();
    }
}

void LateWebEngine::when_begun(std::function<void(WebKitEngine&)> call)
{
    if (engine_)
        call(*engine_);
    else if (reason_.empty())
        waiting_.push_back(std::move(call));
}

void LateWebEngine::load(std::function<void(WebKitEngine&)> call)
{
    when_begun(std::move(call));
    if (!reason_.empty())
        return report_failure();
    if (engine_ || asking_ != 0)
        return;
    if (may_begin_())
        return begin();
    asking_ = platform_.loop().start_timer(AskInterval, true, [this] {
        if (!may_begin_())
            return;
        platform_.loop().stop_timer(std::exchange(asking_, 0));
        begin();
    });
}

/// As an event of its own. A page from its source makes no request that could fail: its process is reported as ended.
void LateWebEngine::report_failure()
{
    platform_.loop().post(liveness_.guard([](LateWebEngine& self) {
        if (self.address_)
            self.listener_.did_fail_load(self.reason_);
        else
            self.listener_.died(self.reason_);
    }));
}

void LateWebEngine::load_html(const NSString& html, const NSURL& base)
{
    address_ = NSURL();
    load([html, base](WebKitEngine& engine) { engine.load_html(html, base); });
}

void LateWebEngine::load_address(const NSURL& address)
{
    if (!address.is_web())
        return;
    address_ = address;
    load([address](WebKitEngine& engine) { engine.load_address(address); });
}

void LateWebEngine::go_back()
{
    when_begun([](WebKitEngine& engine) { engine.go_back(); });
}

void LateWebEngine::go_forward()
{
    when_begun([](WebKitEngine& engine) { engine.go_forward(); });
}

void LateWebEngine::reload()
{
    if (engine_)
        engine_->reload();
    else
        load_address(address_);
}

PageState LateWebEngine::page_state() const
{
    if (engine_)
        return engine_->page_state();
    PageState state;
    state.address = address_;
    state.loading = address_ && reason_.empty();
    return state;
}

void LateWebEngine::call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data)
{
    // No page has run yet, so none has a callback.
    if (engine_)
        engine_->call_listeners(event, callbacks, data);
}

NSURL LateWebEngine::current_address() const
{
    return engine_ ? engine_->current_address() : NSURL();
}

void LateWebEngine::set_scales_page_to_fit(bool scales)
{
    when_begun([scales](WebKitEngine& engine) { engine.set_scales_page_to_fit(scales); });
}

double LateWebEngine::page_scale() const
{
    return engine_ ? engine_->page_scale() : 1;
}

void LateWebEngine::watch_responsiveness(bool watch)
{
    when_begun([watch](WebKitEngine& engine) { engine.watch_responsiveness(watch); });
}

void LateWebEngine::find_element(const std::string& selector, std::function<void(std::optional<PageTouch>)> found)
{
    if (engine_)
        engine_->find_element(selector, std::move(found));
    else
        found(std::nullopt);
}

void LateWebEngine::aim_touch(CGPoint point, std::function<void(PageTouch)> found)
{
    if (engine_)
        engine_->aim_touch(point, std::move(found));
    else
        found({point});
}

void LateWebEngine::touch_page()
{
    if (engine_)
        engine_->touch_page();
}

void LateWebEngine::set_transparent(bool transparent)
{
    transparent_ = transparent;
    if (engine_)
        engine_->set_transparent(transparent);
}

bool LateWebEngine::takes_text() const
{
    return engine_ && engine_->takes_text();
}

} // namespace qoro
