#include "desktop/glib/Owned.h"
#include "desktop/web/GuardMessages.h"
#include "desktop/web/guard/PageChannel.h"
#include "desktop/web/guard/PageReports.h"
#include "kit/NetworkZone.h"
#include "platform/AddressParts.h"

#include <webkit/webkit-web-process-extension.h>

#include <sys/stat.h>
#include <unistd.h>

// Runs in the page's process, where every request of a page can be checked before it is sent, including redirects that
// the host program does not see. Refused requests are reported to the page's web view.

namespace
{

using qoro::adopt;

/// Whether the guarded pages are creatives.
bool has_bridge = false;
/// The innermost zone that every page may reach.
qoro::NetworkZone open = qoro::NetworkZone::Public;

void report_refusal(WebKitWebPage* page, const char* address)
{
    qoro::PageChannel::of(page).refuse("request", address);
}

bool is_out_of_reach(const char* address, const char* page)
{
    return address && qoro::leads_inward(page ? page : "", address, open);
}

gboolean send_request(WebKitWebPage* page, WebKitURIRequest* request, WebKitURIResponse*, void*)
{
    const char* address = webkit_uri_request_get_uri(request);
    const bool library = address && qoro::AddressParts(address).has_scheme("kit");
    if (library && qoro::PageChannel::of(page).may_load_library())
        return FALSE;
    if (address && !library && !is_out_of_reach(address, webkit_web_page_get_uri(page)))
        return FALSE;
    report_refusal(page, address ? address : "");
    return TRUE;
}

void file_failed(const char* address, WebKitWebPage* page)
{
    report_refusal(page, address);
}

/// WebKit itself refuses local files before there is a request. The element concerned emits an error event; frames do
/// not, so they are checked when they are added or changed.
constexpr const char* watch_files = R"(
    const reportFile = address => {
        if (typeof address === 'string' && address.startsWith('file:'))
            report(address);
    };
    addEventListener('error', ({ target }) => [target.src, target.href, target.data].forEach(reportFile), true);
    const frames = 'iframe, frame, embed';
    new MutationObserver(changes => {
        for (const { target, addedNodes } of changes)
            for (const element of [target, ...addedNodes].filter(node => node instanceof Element)) {
                const inside = element === target ? [] : element.querySelectorAll(frames);
                for (const frame of [element, ...inside])
                    if (frame.matches(frames))
                        reportFile(frame.src);
            }
    }).observe(document, { subtree: true, childList: true, attributes: true, attributeFilter: ['src'] });
)";

/// Runs in a separate script world, which shares nothing with the page but its elements.
void window_cleared(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, void*)
{
    const auto context = adopt(webkit_frame_get_js_context_for_script_world(frame, world));
    const auto report =
        adopt(jsc_value_new_function(context.get(), "report", G_CALLBACK(file_failed), g_object_ref(page),
                                     g_object_unref, G_TYPE_NONE, 1, G_TYPE_STRING));
    jsc_context_set_value(context.get(), "report", report.get());
    const auto nothing = adopt(jsc_context_evaluate(context.get(), watch_files, -1));
}

void wanted_by_script(const char* address, WebKitWebPage* page)
{
    if (!address)
        return;
    if (qoro::AddressParts(address).has_scheme("file") || is_out_of_reach(address, webkit_web_page_get_uri(page)))
        report_refusal(page, address);
}

/// Local files and WebSockets requested by scripts are refused by WebKit and its content filter without a report, so
/// this script reports them. (Requests of workers, and navigations to a file, are refused without a report.)
constexpr const char* watch_scripts = R"(report => {
    const { apply, construct } = Reflect;
    const isFile = address => address.slice(0, 5).toLowerCase() === 'file:';
    window.WebSocket = new Proxy(WebSocket, {
        construct(type, args, made) {
            report(`${args[0]}`);
            return construct(type, args, made);
        },
    });
    window.fetch = new Proxy(fetch, {
        apply(call, self, args) {
            const address = args[0] instanceof Request ? args[0].url : `${args[0]}`;
            if (isFile(address))
                report(address);
            return apply(call, self, args);
        },
    });
    XMLHttpRequest.prototype.open = new Proxy(XMLHttpRequest.prototype.open, {
        apply(call, self, args) {
            if (isFile(`${args[1]}`))
                report(`${args[1]}`);
            return apply(call, self, args);
        },
    });
})";

/// Runs in the page's own script world.
void page_window_cleared(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, void*)
{
    const auto context = adopt(webkit_frame_get_js_context_for_script_world(frame, world));
    if (has_bridge) {
        qoro::PageChannel::of(page).give_to(context.get());
        qoro::PageReports::of(page).observe(context.get());
    }
    const auto report =
        adopt(jsc_value_new_function(context.get(), "report", G_CALLBACK(wanted_by_script), g_object_ref(page),
                                     g_object_unref, G_TYPE_NONE, 1, G_TYPE_STRING));
    const auto watch = adopt(jsc_context_evaluate(context.get(), watch_scripts, -1));
    const auto nothing = adopt(jsc_value_function_call(watch.get(), JSC_TYPE_VALUE, report.get(), G_TYPE_NONE));
}

/// The reply proves that the thread of the page's script is responsive.
gboolean asked(WebKitWebPage*, WebKitUserMessage* message, void*)
{
    webkit_user_message_send_reply(message, webkit_user_message_new(qoro::guard_question, nullptr));
    return TRUE;
}

void say_who_this_is(WebKitWebPage* page)
{
    struct stat space {
    };
    if (stat("/proc/self/ns/pid", &space) == 0)
        webkit_web_page_send_message_to_view(
            page,
            webkit_user_message_new(qoro::guard_process, g_variant_new("(tu)", static_cast<guint64>(space.st_ino),
                                                                       static_cast<guint32>(getpid()))),
            nullptr, nullptr, nullptr);
}

void page_created(WebKitWebProcessExtension*, WebKitWebPage* page, void*)
{
    say_who_this_is(page);
    g_signal_connect(page, "user-message-received", G_CALLBACK(asked), nullptr);
    g_signal_connect(page, "send-request", G_CALLBACK(send_request), nullptr);
}

} // namespace

extern "C" G_MODULE_EXPORT void
webkit_web_process_extension_initialize_with_user_data(WebKitWebProcessExtension* extension, const GVariant* settings)
{
    gboolean bridged = FALSE;
    gint32 zone = 0;
    g_variant_get(const_cast<GVariant*>(settings), qoro::guard_settings, &bridged, &zone);
    has_bridge = bridged;
    open = static_cast<qoro::NetworkZone>(zone);
    g_signal_connect(extension, "page-created", G_CALLBACK(page_created), nullptr);
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(page_window_cleared),
                     nullptr);
    g_signal_connect(webkit_script_world_new_with_name("kit-guard"), "window-object-cleared",
                     G_CALLBACK(window_cleared), nullptr);
}
