#include "desktop/web/WebKitEngine.h"

#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/StartupTrace.h"
#include "desktop/web/GuardMessages.h"
#include "desktop/web/PageReach.h"
#include "platform/Inbound.h"

#include "desktop/web/WebKitFunctions.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qoro
{

namespace
{

/// Key under which a view stores its engine.
constexpr const char* engine_key = "qoro-engine";
/// Polling interval for a running trial, in seconds.
constexpr double LaunchPoll = 0.01;

// ------------------------------------------------------------------------------------------------ Page restrictions

/// Features that bypass the page's guard (for a worker without a page, or before there is a request), features that end
/// this program where WebKit draws without OpenGL (view transitions; WebKit 2.50), and features that ads do not need
/// but that affect the machine: the desktop's media controls, the clipboard, the pointer, native dialogs, devices.
constexpr std::array<std::string_view, 12> Forbidden{
    "LinkPreconnect", "ServiceWorkers",    "SharedWorker",      "ViewTransitions",    "CrossDocumentViewTransitions",
    "MediaSession",   "AsyncClipboardAPI", "ScreenWakeLockAPI", "SpeechSynthesisAPI", "PointerLock",
    "Gamepads",       "InputTypeColor"};

void forbid_features(WebKitSettings* settings)
{
    const Owned<WebKitFeatureList, webkit_feature_list_unref> owned(webkit_settings_get_all_features());
    WebKitFeatureList* features = owned.get();
    for (gsize n = 0; n < webkit_feature_list_get_length(features); ++n) {
        WebKitFeature* feature = webkit_feature_list_get(features, n);
        if (std::ranges::find(Forbidden, webkit_feature_get_identifier(feature)) != Forbidden.end())
            webkit_settings_set_feature_enabled(settings, feature, FALSE);
    }
}

/// Windows opened by scripts are enabled, so that the engine receives, refuses and reports each of them.
ObjectRef<WebKitSettings> make_settings()
{
    return adopt(webkit_settings_new_with_settings(
        "enable-developer-extras", FALSE, "enable-fullscreen", FALSE, "enable-page-cache", FALSE,
        "enable-back-forward-navigation-gestures", FALSE, "enable-html5-database", FALSE, "enable-webrtc", FALSE,
        "enable-media-stream", FALSE, "enable-encrypted-media", FALSE, "allow-file-access-from-file-urls", FALSE,
        "allow-universal-access-from-file-urls", FALSE, "allow-modal-dialogs", FALSE, "javascript-can-access-clipboard",
        FALSE, "javascript-can-open-windows-automatically", TRUE, "media-playback-requires-user-gesture", FALSE,
        "media-playback-allows-inline", TRUE, nullptr));
}

/// An address in WebKit's normalised spelling.
std::string as_webkit_spells(const char* address)
{
    const auto request = adopt(webkit_uri_request_new(address));
    return webkit_uri_request_get_uri(request.get());
}

const char* words_for(WebKitWebProcessTerminationReason reason)
{
    switch (reason) {
    case WEBKIT_WEB_PROCESS_CRASHED:
        return "the page's process crashed";
    case WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT:
        return "the page's process used too much memory";
    default:
        return "the page's process was ended";
    }
}

} // namespace

// --------------------------------------------------------------------------------------------------------- Engine

struct WebKitEngine::Signals {
    /// Counts active calls from WebKit into the engine, which may be destroyed during a call.
    class Entry
    {
    public:
        explicit Entry(WebKitEngine* engine) : engine_(engine->liveness_.pointer()) { ++engine->inside_; }
        ~Entry()
        {
            if (WebKitEngine* engine = engine_.get())
                --engine->inside_;
        }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

    private:
        const Liveness<WebKitEngine>::Pointer engine_;
    };

    static void load_changed(WebKitWebView*, WebKitLoadEvent event, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->load_changed(event);
    }

    /// After a failed load the previous page stays, instead of WebKit's error page.
    static gboolean load_failed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->load_failed(*error);
        return TRUE;
    }

    static void state_changed(WebKitWebView*, GParamSpec*, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->state_changed();
    }

    static void insecure_part(WebKitWebView*, WebKitInsecureContentEvent, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->has_insecure_parts_ = true;
        engine->state_changed();
    }

    static gboolean decide_policy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                  WebKitEngine* engine)
    {
        const Entry entry(engine);
        if (engine->decide_policy(decision, type))
            webkit_policy_decision_use(decision);
        else
            webkit_policy_decision_ignore(decision);
        return TRUE;
    }

    static void process_ended(WebKitWebView*, WebKitWebProcessTerminationReason reason, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->text_entry_.end();
        engine->process_ended(reason);
    }

    static gboolean guard_spoke(WebKitWebView*, WebKitUserMessage* message, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->guard_spoke(message);
        return TRUE;
    }

    static void download_started(WebKitNetworkSession*, WebKitDownload* download, void*)
    {
        webkit_download_cancel(download);
        WebKitWebView* view = webkit_download_get_web_view(download);
        if (WebKitEngine* engine = view ? of(view) : nullptr)
            engine->refuse("download", webkit_uri_request_get_uri(webkit_download_get_request(download)));
    }

    /// Windows opened by a script arrive here, without a call of decide_policy.
    static GtkWidget* create_window(WebKitWebView*, WebKitNavigationAction* action, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->refuse("window", webkit_uri_request_get_uri(webkit_navigation_action_get_request(action)));
        return nullptr;
    }

    static gboolean deny_permission(WebKitWebView*, WebKitPermissionRequest* request, WebKitEngine* engine)
    {
        const Entry entry(engine);
        webkit_permission_request_deny(request);
        engine->refuse("permission", G_OBJECT_TYPE_NAME(request));
        return TRUE;
    }

    static gboolean suppress() { return TRUE; }

    static gboolean refuse_dialog(WebKitWebView*, WebKitScriptDialog* dialog, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->refuse("dialog", webkit_script_dialog_get_message(dialog));
        return TRUE;
    }

    static gboolean refuse_print(WebKitWebView*, WebKitPrintOperation*, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->refuse("dialog", "print");
        return TRUE;
    }

    static gboolean refuse_notification(WebKitWebView*, WebKitNotification* notification, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->refuse("notification", webkit_notification_get_title(notification));
        return TRUE;
    }

    static gboolean refuse_login(WebKitWebView*, WebKitAuthenticationRequest* request, WebKitEngine* engine)
    {
        const Entry entry(engine);
        engine->refuse("login", webkit_authentication_request_get_host(request));
        webkit_authentication_request_cancel(request);
        return TRUE;
    }

    static gboolean refuse_files(WebKitWebView*, WebKitFileChooserRequest* request, WebKitEngine* engine)
    {
        const Entry entry(engine);
        webkit_file_chooser_request_cancel(request);
        engine->refuse("file chooser", "");
        return TRUE;
    }
};

WebKitEngine::WebKitEngine(Platform& platform, WebListener& listener, PageKind kind, WebKitWebContext* context,
                           WebKitNetworkSession* session, std::shared_ptr<PageReach> reach,
                           std::shared_ptr<PageWatch> watch)
    : platform_(platform), listener_(listener), kind_(kind), reach_(std::move(reach)), watch_(std::move(watch)),
      content_(adopt(webkit_user_content_manager_new())), view_([&] {
          const ObjectRef<WebKitSettings> settings = make_settings();
          forbid_features(settings.get());
          return sink_ref(static_cast<WebKitWebView*>(
              g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "network-session", session,
                           "user-content-manager", content_.get(), "settings", settings.get(), nullptr)));
      }()),
      bridge_(platform, listener), pulse_(platform.loop(), view_.get(), [this](bool answers) {
          platform_.dispatch([&] { listener_.responsiveness_changed(answers); });
      })
{
    reach_->show(content_.get(), "");
    if (kind == PageKind::Browsed) {
        for (const char* shown : {"notify::uri", "notify::title", "notify::estimated-load-progress"})
            connections_.add(view_.get(), shown, Signals::state_changed, this);
        connections_.add(view_.get(), "insecure-content-detected", Signals::insecure_part, this);
    }
    connections_.add(view_.get(), "load-changed", Signals::load_changed, this);
    connections_.add(view_.get(), "load-failed", Signals::load_failed, this);
    connections_.add(view_.get(), "decide-policy", Signals::decide_policy, this);
    connections_.add(view_.get(), "web-process-terminated", Signals::process_ended, this);
    connections_.add(view_.get(), "create", Signals::create_window, this);
    connections_.add(view_.get(), "permission-request", Signals::deny_permission, this);
    connections_.add(view_.get(), "run-file-chooser", Signals::refuse_files, this);
    connections_.add(view_.get(), "authenticate", Signals::refuse_login, this);
    connections_.add(view_.get(), "user-message-received", Signals::guard_spoke, this);
    g_object_set_data(G_OBJECT(view_.get()), engine_key, this);
    connections_.add(view_.get(), "script-dialog", Signals::refuse_dialog, this);
    connections_.add(view_.get(), "print", Signals::refuse_print, this);
    connections_.add(view_.get(), "show-notification", Signals::refuse_notification, this);
    connections_.add(view_.get(), "context-menu", Signals::suppress, this);
    if (kind == PageKind::Creative)
        watch_resources();
}

WebKitEngine::~WebKitEngine()
{
    liveness_.end();
    watch_->leave(process_);
    forget_load();
    bridge_.leave_page();
    reach_->forget(content_.get());
    connections_.clear();
    g_object_set_data(G_OBJECT(view_.get()), engine_key, nullptr);
    // WebKit waits up to ten seconds for a process to end by itself.
    webkit_web_view_terminate_web_process(view_.get());
    auto* widget = GTK_WIDGET(view_.get());
    if (gtk_widget_get_parent(widget))
        gtk_widget_unparent(widget);
    if (inside_ == 0)
        return;
    // WebKit is still using the view: release it after WebKit has returned.
    for (void* object : {static_cast<void*>(view_.release()), static_cast<void*>(content_.release())})
        g_idle_add_full(
            G_PRIORITY_HIGH, [](void*) -> gboolean { return G_SOURCE_REMOVE; }, object, g_object_unref);
}

WebKitEngine* WebKitEngine::of(WebKitWebView* view)
{
    return static_cast<WebKitEngine*>(g_object_get_data(G_OBJECT(view), engine_key));
}

/// Content is untrusted: a compromised page process can send anything.
void WebKitEngine::guard_spoke(WebKitUserMessage* message)
{
    const char* name = webkit_user_message_get_name(message);
    GVariant* content = webkit_user_message_get_parameters(message);
    if (g_strcmp0(name, guard_refused) == 0 && content && g_variant_is_of_type(content, G_VARIANT_TYPE("(ss)"))) {
        const char* what = nullptr;
        const char* detail = nullptr;
        g_variant_get(content, "(&s&s)", &what, &detail);
        refuse(what, detail);
    }
    if (g_strcmp0(name, guard_process) == 0 && content && g_variant_is_of_type(content, G_VARIANT_TYPE("(tu)"))) {
        guint64 space = 0;
        guint32 number = 0;
        g_variant_get(content, "(tu)", &space, &number);
        watch_->leave(process_);
        process_ = watch_->begin(space, static_cast<int>(number));
    }
    if (g_strcmp0(name, guard_message) == 0 && content && g_variant_is_of_type(content, G_VARIANT_TYPE_STRING) &&
        kind_ == PageKind::Creative) {
        const auto still = liveness_.pointer();
        bridge_.answer(message);
        if (still.get())
            weigh_messages();
    }
    if (g_strcmp0(name, guard_report) == 0 && content && kind_ == PageKind::Creative)
        take_report(content);
}

void WebKitEngine::weigh_messages()
{
    if (load_.is_too_much(turn_.woke(), LoopTurn::now()))
        webkit_web_view_terminate_web_process(view_.get());
}

void WebKitEngine::refuse_downloads(WebKitNetworkSession* session)
{
    g_signal_connect(session, "download-started", G_CALLBACK(Signals::download_started), nullptr);
}

GtkWidget* WebKitEngine::widget() const
{
    return GTK_WIDGET(view_.get());
}

void WebKitEngine::set_transparent(bool transparent)
{
    const GdkRGBA color = transparent ? GdkRGBA{0, 0, 0, 0} : GdkRGBA{1, 1, 1, 1};
    webkit_web_view_set_background_color(view_.get(), &color);
}

template <typename F>
void WebKitEngine::ask(F&& call)
{
    asking_ = true;
    call();
    asking_ = false;
}

void WebKitEngine::report(News news, const std::string& reason)
{
    if (news == News::Finished)
        startup_point("page loaded");
    const auto notify = [news, reason](WebListener& listener) {
        if (news == News::Started)
            listener.did_start_load();
        else if (news == News::Finished)
            listener.did_finish_load();
        else
            listener.did_fail_load(reason);
    };
    if (!asking_) {
        // A call from WebKit is an event of its own, and messages of the page may follow immediately.
        platform_.dispatch([&] { notify(listener_); });
        return;
    }
    platform_.loop().post(liveness_.guard([notify](WebKitEngine& self) { notify(self.listener_); }));
}

// ---------------------------------------------------------------------------------------------------------- Loads

void WebKitEngine::load_html(const NSString& html, const NSURL& base)
{
    bridge_.leave_page(); // the callbacks belonged to the previous page
    has_page_ = true;
    own_load_ = as_webkit_spells(base.is_web() ? base.absoluteString().text().c_str() : "about:blank");
    document_ = own_load_;
    reach_->show(content_.get(), own_load_);
    loading_ = false;
    wanted_.clear();
    const std::string_view page = html.length() > 0 ? std::string_view(html.text()) : " "; // WebKit rejects empty data
    const std::shared_ptr<GBytes> bytes(g_bytes_new(page.data(), page.size()), g_bytes_unref);
    begin_load([this, bytes] {
        webkit_web_view_load_bytes(view_.get(), bytes.get(), "text/html", "UTF-8", own_load_.c_str());
    });
}

void WebKitEngine::load_address(const NSURL& address)
{
    if (!address.is_web())
        return;
    bridge_.leave_page();
    has_page_ = true;
    loading_ = false;
    wanted_ = own_load_ = as_webkit_spells(address.absoluteString().text().c_str());
    reach_->show(content_.get(), own_load_);
    begin_load([this] { webkit_web_view_load_uri(view_.get(), own_load_.c_str()); });
}

void WebKitEngine::go_back()
{
    begin_load([this] { webkit_web_view_go_back(view_.get()); });
}

void WebKitEngine::go_forward()
{
    begin_load([this] { webkit_web_view_go_forward(view_.get()); });
}

void WebKitEngine::reload()
{
    // A page that never arrived is not in the history.
    if (!wanted_.empty())
        load_address(NSURL::URLWithString(wanted_));
    else if (has_page_ && waiting_ == 0)
        begin_load([this] { webkit_web_view_reload(view_.get()); });
}

void WebKitEngine::begin_load(std::function<void()> load)
{
    forget_load();
    if (has_process_)
        return ask(load);
    trial_ = try_launch(WebProcess::Page, lost_process_ ? 0 : LaunchCounts);
    waiting_load_ = std::move(load);
    if (trial_.is_over() && trial_.outcome().empty())
        return end_wait();
    waiting_ = platform_.loop().start_timer(LaunchPoll, true, [this] {
        if (trial_.is_over())
            end_wait();
    });
}

void WebKitEngine::end_wait()
{
    const std::function<void()> load = std::move(waiting_load_);
    forget_load();
    const std::string reason = trial_.outcome();
    if (reason.empty()) {
        has_process_ = true;
        return ask(load);
    }
    const std::string words = "pages can't be shown here: " + reason;
    has_page_ = false;
    own_load_.clear();
    if (wanted_.empty())
        listener_.died(words);
    else
        listener_.did_fail_load(words);
}

void WebKitEngine::forget_load()
{
    waiting_load_ = nullptr;
    if (waiting_ != 0)
        platform_.loop().stop_timer(std::exchange(waiting_, 0));
}

PageState WebKitEngine::page_state() const
{
    PageState state;
    const char* shown = webkit_web_view_get_uri(view_.get());
    if (shown && AddressParts(shown).is_web())
        state.address = NSURL::URLWithString(shown);
    else if (!wanted_.empty())
        state.address = NSURL::URLWithString(wanted_);
    const char* title = webkit_web_view_get_title(view_.get());
    state.title = title ? title : "";
    GTlsCertificate* certificate = nullptr;
    GTlsCertificateFlags errors{};
    state.secure = has_content_ && !has_insecure_parts_ &&
                   webkit_web_view_get_tls_info(view_.get(), &certificate, &errors) && errors == 0;
    state.loading = waiting_ != 0 || webkit_web_view_is_loading(view_.get());
    state.progress = webkit_web_view_get_estimated_load_progress(view_.get());
    state.has_content = has_content_;
    state.can_go_back = webkit_web_view_can_go_back(view_.get());
    state.can_go_forward = webkit_web_view_can_go_forward(view_.get());
    return state;
}

void WebKitEngine::state_changed()
{
    // During a call of the engine's own, only the requested change has happened, so the event is posted.
    if (asking_)
        platform_.loop().post(liveness_.guard([](WebKitEngine& self) { self.listener_.page_state_changed(); }));
    else
        platform_.dispatch([&] { listener_.page_state_changed(); });
}

void WebKitEngine::refuse(const char* what, const std::string& detail)
{
    platform_.dispatch([&] { listener_.refused(what, detail); });
}

void WebKitEngine::load_changed(int event)
{
    if (event == WEBKIT_LOAD_STARTED && kind_ == PageKind::Creative && own_load_.empty()) {
        // An allowed move within the page turned out to replace it: a frameset has no fragments.
        refuse("navigation", webkit_web_view_get_uri(view_.get()));
        webkit_web_view_stop_loading(view_.get());
        return;
    }
    if (event == WEBKIT_LOAD_STARTED) {
        own_load_.clear();
        own_answer_due_ = true;
        loading_ = true;
        report(News::Started);
    }
    if (event == WEBKIT_LOAD_COMMITTED && !wanted_.empty() &&
        AddressParts(webkit_web_view_get_uri(view_.get())).has_scheme("about")) {
        // WebKit reports a blocked port in this way, without an error.
        loading_ = false;
        return report(News::Failed, "the address is not to be had");
    }
    if (event == WEBKIT_LOAD_COMMITTED) {
        has_content_ = true;
        own_answer_due_ = false;
        has_insecure_parts_ = false;
        wanted_.clear();
        document_ = webkit_web_view_get_uri(view_.get());
        pulse_.reset(true);
        reach_->show(content_.get(), document_);
        if (kind_ == PageKind::Browsed)
            state_changed();
        if (std::exchange(inspects_, false))
            webkit_web_inspector_show(webkit_web_view_get_inspector(view_.get()));
    }
    if (event == WEBKIT_LOAD_FINISHED && loading_) {
        loading_ = false;
        if (scales_page_to_fit_)
            fit_page();
        report(News::Finished);
    }
}

void WebKitEngine::load_failed(const GError& error)
{
    const bool superseded = error.domain == WEBKIT_NETWORK_ERROR && error.code == WEBKIT_NETWORK_ERROR_CANCELLED;
    if (kind_ != PageKind::Browsed || superseded || !loading_)
        return;
    loading_ = false;
    report(News::Failed, error.message);
}

void WebKitEngine::call_listeners(const std::string&, const NSArray& callbacks, const NSDictionary& data)
{
    if (has_page_)
        bridge_.call(callbacks, data);
}

NSURL WebKitEngine::current_address() const
{
    return has_page_ ? NSURL::URLWithString(document_) : NSURL();
}

void WebKitEngine::process_ended(int reason)
{
    if (kind_ == PageKind::Browsed && wanted_.empty())
        wanted_ = page_state().address.absoluteString().text(); // so that a reload restores the page
    has_process_ = false;
    lost_process_ = true;
    has_page_ = false;
    has_content_ = false;
    loading_ = false;
    pulse_.reset(false);
    own_load_.clear();
    bridge_.leave_page();
    std::string why = watch_->reason(process_);
    if (why.empty())
        why = words_for(static_cast<WebKitWebProcessTerminationReason>(reason));
    watch_->leave(std::exchange(process_, 0));
    platform_.dispatch([&] { listener_.died(why); });
}

void WebKitEngine::set_scales_page_to_fit(bool scales)
{
    scales_page_to_fit_ = scales;
    if (!scales)
        webkit_web_view_set_zoom_level(view_.get(), 1);
}

double WebKitEngine::page_scale() const
{
    return webkit_web_view_get_zoom_level(view_.get());
}

void WebKitEngine::fit_page()
{
    const auto shrink = liveness_.guard([](WebKitEngine& self, GObject*, GAsyncResult* result) {
        WebKitWebView* view = self.view_.get();
        const auto wide = adopt(webkit_web_view_evaluate_javascript_finish(view, result, nullptr));
        const double ratio = wide ? jsc_value_to_double(wide.get()) : 0;
        if (ratio > 0 && ratio < 1) {
            webkit_web_view_set_zoom_level(view, ratio);
            // Objects of the session watch the views.
            come_in(
                self.platform_, "scaled", [] { return Value(); }, [&] { self.platform_.views_changed(); });
        }
    });
    webkit_web_view_set_zoom_level(view_.get(), 1);
    webkit_web_view_evaluate_javascript(view_.get(), "innerWidth / document.documentElement.scrollWidth", -1, nullptr,
                                        nullptr, nullptr, async_done, async_data(shrink));
}

} // namespace qoro
