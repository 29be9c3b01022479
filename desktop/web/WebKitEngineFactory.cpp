#include "desktop/web/WebKitEngineFactory.h"

#include "desktop/net/PageProxy.h"
#include "desktop/net/Reach.h"
#include "desktop/screen/DisplayWatch.h"
#include "desktop/web/GuardFolder.h"
#include "desktop/web/GuardMessages.h"
#include "desktop/web/LateWebEngine.h"
#include "desktop/web/LaunchTrial.h"
#include "desktop/web/PageReach.h"
#include "desktop/web/ScriptLibrary.h"
#include "desktop/web/SocketFilter.h"
#include "desktop/web/WebKitEngine.h"
#include "desktop/web/WebSandbox.h"

#include "desktop/web/WebKitFunctions.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds for which a page waits at most for the video's first picture.
constexpr double LongestHold = 0.5;

void serve_library(WebKitURISchemeRequest* request, void*)
{
    std::string address = webkit_uri_scheme_request_get_uri(request);
    if (!address.empty() && address.back() == '/')
        address.pop_back();
    if (address != script_library_address) {
        const Owned<GError, g_error_free> error(
            g_error_new(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "there is nothing at %s", address.c_str()));
        webkit_uri_scheme_request_finish_error(request, error.get());
        return;
    }
    const std::string_view source = script_library();
    const auto stream =
        adopt(g_memory_input_stream_new_from_data(source.data(), static_cast<gssize>(source.size()), nullptr));
    const auto response = adopt(webkit_uri_scheme_response_new(stream.get(), static_cast<gint64>(source.size())));
    webkit_uri_scheme_response_set_content_type(response.get(), "text/javascript; charset=utf-8");
    // For pages that load the library with a crossorigin attribute (Fetch, CORS protocol).
    SoupMessageHeaders* headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
    soup_message_headers_append(headers, "Access-Control-Allow-Origin", "*");
    webkit_uri_scheme_response_set_http_headers(response.get(), headers);
    webkit_uri_scheme_request_finish_with_response(request, response.get());
}

} // namespace

WebKitEngineFactory::WebKitEngineFactory(Platform& platform, const PageLimits& limits, bool inspects)
    : platform_(platform), limits_(limits), inspects_(inspects), watch_(std::make_shared<PageWatch>(limits))
{
}

WebKitEngineFactory::~WebKitEngineFactory() = default;

std::unique_ptr<WebEngine> WebKitEngineFactory::make_web_engine(WebListener& listener, PageKind kind)
{
    return std::make_unique<LateWebEngine>(
        platform_, listener, [this, &listener, kind] { return make_engine(listener, kind); },
        [this, kind, first = FirstLoad()]() mutable { return may_begin(first, kind); });
}

/// The trials take as much of the processor as a video's first picture, so they begin after it, beside WebKit's
/// loading.
bool WebKitEngineFactory::may_begin(FirstLoad& load, PageKind kind) const
{
    // WebKit asks the display.
    if (display_is_gone())
        return false;
    if (!load.hold_until)
        load.hold_until = platform_.loop().now() + LongestHold;
    if (on_hold && on_hold() && platform_.loop().now() < *load.hold_until)
        return false;
    if (!std::exchange(load.is_tried, true)) {
        // The outcome of this trial is awaited by the load itself.
        try_launch(WebProcess::Page, LaunchCounts);
        const Family& family = kind == PageKind::Creative ? creatives_ : browsed_;
        if (!family.context)
            load.network = try_launch(WebProcess::Network, LaunchCounts);
    }
    return loads_webkit_beside() && (!load.network || load.network->is_over());
}

std::unique_ptr<WebKitEngine> WebKitEngineFactory::make_engine(WebListener& listener, PageKind kind)
{
    Family& family = kind == PageKind::Creative ? creatives_ : browsed_;
    if (!family.context)
        found(family, kind);
    auto engine = std::make_unique<WebKitEngine>(platform_, listener, kind, family.context.get(), family.session.get(),
                                                 family.reach, watch_);
    if (inspects_ && kind == PageKind::Creative)
        engine->inspect();
    return engine;
}

bool WebKitEngineFactory::warm_up()
{
    if (creatives_.context)
        return true;
    try_launch(WebProcess::Page, LaunchCounts);
    if (!loads_webkit_beside() || !try_launch(WebProcess::Network, LaunchCounts).is_over())
        return false;
    struct Deaf final : WebListener {
        void did_start_load() override {}
        void did_finish_load() override {}
        bool should_start_load(const NSURL&, int) override { return false; }
        ScriptAnswer message(const ScriptMessage&) override { return {}; }
        void died(const std::string&) override {}
    } deaf;
    try {
        make_engine(deaf, PageKind::Creative);
    } catch (const std::runtime_error&) {
        // The first ad's page reports it.
    }
    return true;
}

void WebKitEngineFactory::found(Family& family, PageKind kind)
{
    if (!sandbox_has_room())
        throw std::runtime_error("pages can't be locked away: the folder " + std::string(g_get_user_runtime_dir()) +
                                 " is full");
    // The session below starts the network process.
    if (const std::string reason = try_launch(WebProcess::Network, LaunchCounts).outcome(); !reason.empty())
        throw std::runtime_error("pages can't be shown here: " + reason);
    if (!guard_) {
        guard_ = std::make_unique<GuardFolder>();
        sockets_ = std::make_shared<SocketFilter>(guard_->path() + "/filters");
    }
    if (!family.session) {
        family.session = adopt(webkit_network_session_new_ephemeral());
        webkit_network_session_set_persistent_credential_storage_enabled(family.session.get(), FALSE);
        WebKitEngine::refuse_downloads(family.session.get());
    }
    family.reach = guard_network(kind, family.session.get());
    // Second line of defence: WebKit only checks when the page's script gives it time.
    const Owned<WebKitMemoryPressureSettings, webkit_memory_pressure_settings_free> pressure(
        webkit_memory_pressure_settings_new());
    webkit_memory_pressure_settings_set_memory_limit(
        pressure.get(), static_cast<guint>(std::clamp(limits_.memory, 1.0, static_cast<double>(G_MAXINT / 1024))));
    webkit_memory_pressure_settings_set_poll_interval(pressure.get(), 2);
    family.context = adopt(static_cast<WebKitWebContext*>(
        g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "memory-pressure-settings", pressure.get(), nullptr)));
    webkit_web_context_set_web_process_extensions_directory(family.context.get(), guard_->path().c_str());
    webkit_web_context_set_web_process_extensions_initialization_user_data(
        family.context.get(),
        g_variant_new(guard_settings, kind == PageKind::Creative, static_cast<gint32>(open_zone())));
    if (kind == PageKind::Creative) {
        webkit_web_context_register_uri_scheme(family.context.get(), "kit", serve_library, nullptr, nullptr);
        WebKitSecurityManager* security = webkit_web_context_get_security_manager(family.context.get());
        webkit_security_manager_register_uri_scheme_as_secure(security, "kit");
        webkit_security_manager_register_uri_scheme_as_cors_enabled(security, "kit");
    }
}

/// Pages reach the network through our own proxy. Not if the system has a proxy: that would resolve the names, and ours
/// could not check the addresses.
std::shared_ptr<PageReach> WebKitEngineFactory::guard_network(PageKind kind, WebKitNetworkSession* session)
{
    std::unique_ptr<PageProxy> proxy;
    if (!PageProxy::system_has_proxy()) {
        proxy = std::make_unique<PageProxy>([this](const std::string& where) { report_refusal(where); });
        if (proxy->address().empty())
            throw std::runtime_error("pages can't be kept out of private networks: no port of 127.0.0.1 is free");
        const Owned<WebKitNetworkProxySettings, webkit_network_proxy_settings_free> settings(
            webkit_network_proxy_settings_new(proxy->address().c_str(), nullptr));
        webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_CUSTOM, settings.get());
    }
    return std::make_shared<PageReach>(kind, sockets_, std::move(proxy));
}

void WebKitEngineFactory::report_refusal(const std::string& where)
{
    platform_.loop().post(liveness_.guard([where](WebKitEngineFactory& self) {
        self.platform_.dispatch([&] { self.refusals_.report(self.platform_, "request", "http://" + where + "/"); });
    }));
}

} // namespace qoro
