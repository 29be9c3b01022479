#pragma once

#include "desktop/screen/WidgetSource.h"
#include "desktop/web/LoopTurn.h"
#include "desktop/web/PageBridge.h"
#include "desktop/web/PagePulse.h"
#include "desktop/web/PageWatch.h"
#include "desktop/web/TextEntry.h"
#include "kit/MessageLoad.h"
#include "platform/Platform.h"

#include <functional>
#include <future>
#include <memory>
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

namespace qoro
{

class PageReach;

/// One web view, drawn by WebKitGTK. Pages are other people's code: they keep nothing, read no local file, open no
/// window, download nothing, are granted no permission, and reach the ad through the bridge alone; browsed pages have
/// none.
class WebKitEngine : public WebEngine, public WidgetSource
{
public:
    /// The platform dispatches every event, and outlives the engine, as the listener does.
    WebKitEngine(Platform& platform, WebListener& listener, PageKind kind, WebKitWebContext* context,
                 WebKitNetworkSession* session, std::shared_ptr<PageReach> reach, std::shared_ptr<PageWatch> watch);
    ~WebKitEngine() override;
    WebKitEngine(const WebKitEngine&) = delete;
    WebKitEngine& operator=(const WebKitEngine&) = delete;

    /// A base that is neither http nor https gives the page no origin at all.
    void load_html(const NSString& html, const NSURL& base) override;
    void load_address(const NSURL& address) override;
    void go_back() override;
    void go_forward() override;
    void reload() override;
    PageState page_state() const override;
    void call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) override;
    NSURL current_address() const override;
    /// A page wider than the view is shrunk to its width once it has loaded.
    void set_scales_page_to_fit(bool scales) override;
    double page_scale() const override;
    void watch_responsiveness(bool watch) override { pulse_.watch(watch); }

    /// Cancels every download of the session's pages, and tells it as what they were refused.
    static void refuse_downloads(WebKitNetworkSession* session);

    GtkWidget* widget() const override;
    void set_transparent(bool transparent) override;
    bool takes_text() const override { return text_entry_.active(); }

private:
    struct Signals;
    enum class News { Started, Finished, Failed };

    void guard_spoke(WebKitUserMessage* message);
    void load_changed(int event);
    void load_failed(const _GError& error);
    void state_changed();
    /// What the engine itself asks of WebKit, whose news may come inside the call.
    template <typename F>
    void ask(F&& call);
    /// Loads, once it is known that the page's process starts; replaces a load that still waits for that.
    void begin_load(std::function<void()> load);
    void end_wait();
    void forget_load();
    /// Tells the listener what the page has not got, as an event of its own.
    void refuse(const char* what, const std::string& detail);
    bool may_be_shown(WebKitResponsePolicyDecision* decision);
    bool moves_within(WebKitNavigationAction* action, const std::string& address) const;
    bool may_move(WebKitNavigationAction* action, const std::string& address, bool link);
    bool decide_policy(WebKitPolicyDecision* decision, int type);
    bool listener_allows(const char* address, int navigation_type);
    void process_ended(int reason);
    void fit_page();
    /// Tells the listener, as an event of its own.
    /// @param reason in words, of a failure
    void report(News news, const std::string& reason = "");

    Platform& platform_;
    WebListener& listener_;
    const PageKind kind_;
    const std::shared_ptr<PageReach> reach_;
    const std::shared_ptr<PageWatch> watch_;
    /// The page's process as the watch knows it; 0 for none.
    PageWatch::Page process_ = 0;
    WebKitUserContentManager* const content_;
    WebKitWebView* const view_;
    PageBridge bridge_;
    LoopTurn turn_;
    MessageLoad load_;
    TextEntry text_entry_{content_};
    PagePulse pulse_;
    /// Dies with the engine; what waits for the main loop or for the page's process watches it.
    const std::shared_ptr<WebKitEngine*> self_;

    /// A process was asked for, and has not ended.
    bool has_process_ = false;
    bool lost_process_ = false;
    /// The load that waits, and the timer that looks whether it may begin; null and 0 for none.
    std::function<void()> waiting_load_;
    TimerId waiting_ = 0;
    std::shared_future<std::string> trial_;
    bool has_page_ = false;
    /// Something of a page has arrived.
    bool has_content_ = false;
    /// A part of the page came over a connection that others can change.
    bool has_insecure_parts_ = false;
    /// The last address that was asked for by load_address and has not been shown yet; empty for none.
    std::string wanted_;
    /// The address of a load that the engine itself asked for and that has not begun: nobody is asked about it.
    std::string own_load_;
    /// A load that the engine itself asked for has begun, and nothing of it has come.
    bool own_answer_due_ = false;
    /// The address of the page that is there, whatever its script calls itself.
    std::string document_;
    /// A start was reported and its end is due.
    bool loading_ = false;
    /// The engine itself is asking something of WebKit.
    bool asking_ = false;
    bool scales_page_to_fit_ = false;
    /// How many of WebKit's calls are running into us.
    int inside_ = 0;
};

} // namespace qoro
