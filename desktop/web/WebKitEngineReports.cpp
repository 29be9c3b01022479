#include "desktop/web/GuardMessages.h"
#include "desktop/web/WebKitEngine.h"

#include "desktop/web/WebKitFunctions.h"

// What a creative reports to its author, and the author's view into it.

namespace qoro
{

namespace
{

constexpr guint FirstError = 400;
/// Key under which a resource stores that it has failed.
constexpr const char* failed_key = "qoro-failed";

} // namespace

/// Content is untrusted: a compromised page process can send anything.
void WebKitEngine::take_report(GVariant* content)
{
    if (!g_variant_is_of_type(content, G_VARIANT_TYPE(guard_report_format)))
        return;
    guchar kind = 0;
    const char* message = nullptr;
    const char* file = nullptr;
    gint64 line = 0;
    gint64 times = 0;
    g_variant_get(content, "(y&s&sxx)", &kind, &message, &file, &line, &times);
    if (kind > static_cast<guchar>(PageReport::Kind::Rejection) || times < 1 || times > G_MAXINT32)
        return;
    PageReport report{.kind = static_cast<PageReport::Kind>(kind), .message = message, .file = file, .times = times};
    if (line > 0)
        report.line = line;
    const auto still = liveness_.pointer();
    platform_.dispatch([&] { listener_.reported(report); });
    if (still.get())
        weigh_messages();
}

/// Resources are reported by this process, which knows their status.
struct WebKitEngine::Resources {
    /// The handlers end with the view, which may outlive the engine.
    static void begun(WebKitWebView* view, WebKitWebResource* resource, WebKitURIRequest*, WebKitEngine*)
    {
        g_signal_connect_object(resource, "failed", G_CALLBACK(failed), view, static_cast<GConnectFlags>(0));
        g_signal_connect_object(resource, "finished", G_CALLBACK(finished), view, static_cast<GConnectFlags>(0));
    }

    static void failed(WebKitWebResource* resource, GError* error, WebKitWebView* view)
    {
        g_object_set_data(G_OBJECT(resource), failed_key, view);
        // WebKit itself gives up a script and a style sheet whose server answers with an error. Other loads that are
        // given up are the page's wish, or refused by the guard, which reports them.
        if (!g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED))
            report(resource, error->message, {}, view);
        else
            report_status(resource, view);
    }

    static void finished(WebKitWebResource* resource, WebKitWebView* view)
    {
        if (!g_object_get_data(G_OBJECT(resource), failed_key))
            report_status(resource, view);
    }

    static void report_status(WebKitWebResource* resource, WebKitWebView* view)
    {
        WebKitURIResponse* response = webkit_web_resource_get_response(resource);
        const guint status = response ? webkit_uri_response_get_status_code(response) : 0;
        if (status >= FirstError)
            report(resource, "the server answers " + std::to_string(status), status, view);
    }

    static void report(WebKitWebResource* resource, const std::string& why, std::optional<std::int64_t> status,
                       WebKitWebView* view)
    {
        WebKitEngine* engine = of(view);
        if (!engine)
            return;
        const PageReport report{.kind = PageReport::Kind::Resource,
                                .message = why,
                                .file = webkit_web_resource_get_uri(resource),
                                .status = status};
        engine->platform_.dispatch([&] { engine->listener_.reported(report); });
    }
};

void WebKitEngine::inspect()
{
    webkit_settings_set_enable_developer_extras(webkit_web_view_get_settings(view_.get()), TRUE);
    inspects_ = true;
    // Attached to the view, it would leave the page less room than the ad gives it.
    const auto stay_apart = +[](WebKitWebInspector*, WebKitEngine*) -> gboolean { return TRUE; };
    connections_.add(webkit_web_view_get_inspector(view_.get()), "attach", stay_apart, this);
}

void WebKitEngine::watch_resources()
{
    connections_.add(view_.get(), "resource-load-started", Resources::begun, this);
}

} // namespace qoro
