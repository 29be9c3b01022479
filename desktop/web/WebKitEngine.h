#pragma once

#include "desktop/glib/Liveness.h"
#include "desktop/glib/Owned.h"
#include "desktop/screen/WidgetSource.h"
#include "desktop/web/LaunchTrial.h"
#include "desktop/web/LoopTurn.h"
#include "desktop/web/PageBridge.h"
#include "desktop/web/PagePulse.h"
#include "desktop/web/PageWatch.h"
#include "desktop/web/TextEntry.h"
#include "kit/MessageLoad.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

typedef struct _WebKitNavigationAction WebKitNavigationAction;
typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitPolicyDecision WebKitPolicyDecision;
typedef struct _WebKitResponsePolicyDecision WebKitResponsePolicyDecision;
typedef struct _WebKitUserContentManager WebKitUserContentManager;
typedef struct _WebKitUserMessage WebKitUserMessage;
typedef struct _WebKitWebContext WebKitWebContext;
typedef struct _WebKitWebView WebKitWebView;
struct _GError;
struct _GVariant;

namespace qoro
{

class PageReach;

/// A web view over WebKitGTK. Pages are untrusted: they store nothing, read no local files, open no windows, download
/// nothing, get no permissions, and communicate with the ad only through the bridge, which browsed pages lack. Main
/// thread only.
class WebKitEngine : public WebEngine, public WidgetSource
{
public:
    /// @param platform dispatches every event; must outlive the engine
    /// @param listener must outlive the engine
    WebKitEngine(Platform& platform, WebListener& listener, PageKind kind, WebKitWebContext* context,
                 WebKitNetworkSession* session, std::shared_ptr<PageReach> reach, std::shared_ptr<PageWatch> watch);
    ~WebKitEngine() override;
    WebKitEngine(const WebKitEngine&) = delete;
    WebKitEngine& operator=(const WebKitEngine&) = delete;

    /// Unless the base is an http or https address, the page has an opaque origin.
    void load_html(const NSString& html, const NSURL& base) override;
    void load_address(const NSURL& address) override;
    void go_back() override;
    void go_forward() override;
    void reload() override;
    PageState page_state() const override;
    void call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) override;
    NSURL current_address() const override;
    /// If true, a page that is wider than the view is scaled down to the view's width once it has loaded.
    void set_scales_page_to_fit(bool scales) override;
    double page_scale() const override;
    void watch_responsiveness(bool watch) override { pulse_.watch(watch); }
    void find_element(const std::string& selector, std::function<void(std::optional<PageTouch>)> found) override;
    void aim_touch(CGPoint point, std::function<void(PageTouch)> found) override;
    void touch_page() override;

    /// Opens WebKit's inspector, in a window of its own, with the first page.
    void inspect();

    /// Cancels all downloads of a session and reports each to the engine of its page as refused.
    static void refuse_downloads(WebKitNetworkSession* session);

    WidgetSource* widget_source() override { return this; }
    GtkWidget* widget() const override;
    void set_transparent(bool transparent) override;
    bool takes_text() const override { return text_entry_.active(); }

private:
    struct Signals;
    struct Resources;
    enum class News { Started, Finished, Failed };

    /// The engine of a view; null once destroyed.
    static WebKitEngine* of(WebKitWebView* view);
    void guard_spoke(WebKitUserMessage* message);
    void take_report(_GVariant* content);
    /// Ends the page if its messages leave the main loop no time.
    void weigh_messages();
    void watch_resources();
    /// Calls a function in a script world of the engine's own.
    /// @param done receives the function's result, a text; null for any other result, and for a page without a process
    void run_in_page(const char* body, _GVariant* arguments, std::function<void(const char*)> done);
    void load_changed(int event);
    void load_failed(const _GError& error);
    void state_changed();
    /// Calls WebKit on the engine's own behalf; WebKit may emit signals during the call.
    template <typename F>
    void ask(F&& call);
    /// Starts a load as soon as the page's process is known to start; replaces a load that still waits for that.
    void begin_load(std::function<void()> load);
    void end_wait();
    void forget_load();
    /// Notifies the listener that something was refused to the page, as an event of its own.
    void refuse(const char* what, const std::string& detail);
    bool may_be_shown(WebKitResponsePolicyDecision* decision);
    bool moves_within(WebKitNavigationAction* action, const std::string& address) const;
    bool may_move(WebKitNavigationAction* action, const std::string& address, bool link);
    bool decide_policy(WebKitPolicyDecision* decision, int type);
    bool listener_allows(const char* address, int navigation_type);
    void process_ended(int reason);
    void fit_page();
    /// Notifies the listener, as an event of its own.
    /// @param reason of a failure, in words
    void report(News news, const std::string& reason = "");

    Platform& platform_;
    WebListener& listener_;
    const PageKind kind_;
    const std::shared_ptr<PageReach> reach_;
    const std::shared_ptr<PageWatch> watch_;
    /// The page's process in watch_; 0 if there is none.
    PageWatch::Page process_ = 0;
    ObjectRef<WebKitUserContentManager> content_;
    ObjectRef<WebKitWebView> view_;
    PageBridge bridge_;
    LoopTurn turn_;
    MessageLoad load_;
    TextEntry text_entry_{content_.get()};
    PagePulse pulse_;
    /// For work posted to the main loop, replies of the page's process, and calls from WebKit that destroy the engine.
    Liveness<WebKitEngine> liveness_{*this};

    /// Whether a page process was requested and has not ended.
    bool has_process_ = false;
    bool lost_process_ = false;
    /// The load that waits for a trial, and the timer that polls the trial; null and 0 if there is none.
    std::function<void()> waiting_load_;
    TimerId waiting_ = 0;
    LaunchTrial trial_;
    bool has_page_ = false;
    /// Whether any content of a page has arrived.
    bool has_content_ = false;
    /// Whether a part of the page came over an insecure connection.
    bool has_insecure_parts_ = false;
    /// The last address passed to load_address, until its page is shown; empty otherwise.
    std::string wanted_;
    /// The address of a load that the engine itself has requested, until the load begins. The listener is not asked
    /// about it.
    std::string own_load_;
    /// Whether a load that the engine itself has requested has begun, but has received nothing.
    bool own_answer_due_ = false;
    /// The address that the current page was loaded from, whatever its script changes it to.
    std::string document_;
    /// Whether a start was reported whose end is due.
    bool loading_ = false;
    /// Whether the next page opens the inspector.
    bool inspects_ = false;
    /// Whether the engine itself is calling WebKit (ask()).
    bool asking_ = false;
    bool scales_page_to_fit_ = false;
    /// Number of active calls from WebKit into the engine.
    int inside_ = 0;
    Connections connections_;
};

} // namespace qoro
