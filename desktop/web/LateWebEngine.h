#pragma once

#include "desktop/glib/Liveness.h"
#include "desktop/glib/Owned.h"
#include "desktop/screen/WidgetSource.h"
#include "desktop/web/WebKitEngine.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// An engine that creates its web view for its first page, as soon as that is permitted, and then repeats the calls
/// that it has received before: starting WebKit takes time that the ad's first picture needs. If the view cannot be
/// created, every load fails with the reason and the ad continues without the page. Main thread only.
class LateWebEngine final : public WebEngine, public WidgetSource
{
public:
    /// Creates the view.
    /// @throws std::runtime_error with the reason if no page can be shown
    using Maker = std::function<std::unique_ptr<WebKitEngine>()>;

    /// @param platform must outlive the engine
    /// @param listener of the pages; must outlive the engine
    /// @param may_begin whether the view may be created; asked with the first load, then repeatedly until it returns
    /// true
    LateWebEngine(Platform& platform, WebListener& listener, Maker make, std::function<bool()> may_begin);
    ~LateWebEngine() override;
    LateWebEngine(const LateWebEngine&) = delete;
    LateWebEngine& operator=(const LateWebEngine&) = delete;

    void load_html(const NSString& html, const NSURL& base) override;
    void load_address(const NSURL& address) override;
    void go_back() override;
    void go_forward() override;
    void reload() override;
    PageState page_state() const override;
    void call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) override;
    NSURL current_address() const override;
    void set_scales_page_to_fit(bool scales) override;
    double page_scale() const override;
    void watch_responsiveness(bool watch) override;
    void find_element(const std::string& selector, std::function<void(std::optional<PageTouch>)> found) override;
    void aim_touch(CGPoint point, std::function<void(PageTouch)> found) override;
    void touch_page() override;
    WidgetSource* widget_source() override { return this; }

    /// A container, empty until the view exists.
    GtkWidget* widget() const override { return frame_.get(); }
    void set_transparent(bool transparent) override;
    bool takes_text() const override;

private:
    void begin();
    /// Calls the engine now or as soon as it exists.
    void when_begun(std::function<void(WebKitEngine&)> call);
    void load(std::function<void(WebKitEngine&)> call);
    void report_failure();

    Platform& platform_;
    WebListener& listener_;
    const Maker make_;
    const std::function<bool()> may_begin_;
    const ObjectRef<GtkWidget> frame_;
    std::unique_ptr<WebKitEngine> engine_;
    /// Why there will be no engine; empty unless that is so.
    std::string reason_;
    /// Calls that wait for the engine.
    std::vector<std::function<void(WebKitEngine&)>> waiting_;
    /// The timer that asks whether the view may be created; 0 when none runs.
    TimerId asking_ = 0;
    /// The address of the last load; null for a page from its source.
    NSURL address_;
    /// Absent: WebKit's own default.
    std::optional<bool> transparent_;
    Liveness<LateWebEngine> liveness_{*this};
};

} // namespace qoro
