#include "desktop/web/guard/PageReports.h"

#include "desktop/glib/Owned.h"
#include "desktop/web/GuardMessages.h"
#include "platform/ShortText.h"

#include <string>
#include <string_view>

namespace qoro
{

namespace
{

constexpr const char* reports_key = "qoro-reports";
/// Address of the script below, which it recognises in its own stack.
constexpr const char* script_address = "kit://console.js";
/// Maximum bytes of a text or an address.
constexpr std::size_t LongestText = 1000;

double now()
{
    return static_cast<double>(g_get_monotonic_time()) * 1e-6;
}

/// The beginning of a text, converted to valid UTF-8.
std::string beginning_of(const char* text)
{
    const std::string_view whole = text ? text : "";
    return take_text(g_utf8_make_valid(whole.data(), static_cast<gssize>(whole_characters(whole, LongestText))));
}

/// Numbers are those of PageReport::Kind. The console's functions are replaced by functions that report and then call
/// the original ones. Values are described without calling getters, and only briefly: a console would open them on
/// demand.
constexpr std::string_view observer = R"((admit, send, self) => {
    const { apply, ownKeys, getOwnPropertyDescriptor } = Reflect;
    const { isArray } = Array;
    const text = String;
    const ErrorType = Error;
    const most = 20, deepest = 2, longest = 1000;

    const describeEntries = (value, keys, depth, show) => {
        let shown = '';
        for (let i = 0; i < keys.length && i < most; ++i) {
            const property = getOwnPropertyDescriptor(value, keys[i]);
            if (!property || !property.enumerable)
                continue;
            shown += (shown && ', ') + show(keys[i]) + ('value' in property ? describe(property.value, depth + 1) : '…');
            if (shown.length > longest)
                break;
        }
        return keys.length > most ? `${shown}, …` : shown;
    };
    const describe = (value, depth) => {
        if (typeof value === 'string')
            return depth > 0 ? `"${value.slice(0, longest)}"` : value.slice(0, longest);
        if (typeof value === 'function')
            return 'function';
        if (typeof value !== 'object' || value === null)
            return text(value);
        if (value instanceof ErrorType)
            return `${value.name}: ${value.message}`;
        if (value instanceof Element)
            return `<${value.localName}${value.id && ` id="${value.id}"`}>`;
        if (depth >= deepest)
            return isArray(value) ? '[…]' : '{…}';
        return isArray(value) ? `[${describeEntries(value, ownKeys(value), depth, () => '')}]`
            : `{${describeEntries(value, ownKeys(value), depth, key => `${text(key)}: `)}}`;
    };
    // Replaces %s and the like (Console Standard, Formatter).
    const describeAll = values => {
        let next = 1;
        const pattern = typeof values[0] === 'string' && values.length > 1 ? values[0] : null;
        let shown = pattern === null ? describe(values[0], 0) : pattern.slice(0, longest).replace(/%[sdifoOc%]/g, sign => {
            if (sign === '%%' || next >= values.length)
                return sign === '%%' ? '%' : sign;
            const value = values[next++];
            return sign === '%c' ? '' : describe(value, 0);
        });
        for (; next < values.length && shown.length < longest; ++next)
            shown += ` ${describe(values[next], 0)}`;
        return shown;
    };

    // The topmost place in a stack that is not this script: [file, line].
    const placeIn = stack => {
        for (const frame of text(stack).split('\n')) {
            const place = /^(?:.*@)?(.+?):(\d+):\d+$/.exec(frame);
            if (place && place[1] !== self)
                return [place[1], +place[2]];
        }
        return ['', 0];
    };
    const report = (kind, message, [file, line]) => send(kind, text(message), text(file), +line || 0);
    const safely = action => {
        try {
            action();
        } catch {
            // A value that cannot be described, such as a proxy that throws.
        }
    };

    const console = window.console;
    const replace = (name, kind, of = values => values) => {
        const original = console[name];
        console[name] = function (...values) {
            safely(() => {
                const shown = of(values);
                if (shown && admit())
                    report(kind, shown.length > 0 ? describeAll(shown) : '', placeIn(new ErrorType().stack));
            });
            return apply(original, console, values);
        };
    };
    replace('debug', 0);
    replace('log', 1);
    replace('info', 2);
    replace('warn', 3);
    replace('error', 4);
    replace('assert', 4, values => values[0] ? null : ['Assertion failed', ...values.slice(1)]);

    addEventListener('error', event => safely(() => {
        if (event instanceof ErrorEvent && admit())
            report(5, event.message, [event.filename, event.lineno]);
    }));
    addEventListener('unhandledrejection', event => safely(() => {
        const { reason } = event;
        if (admit())
            report(6, describe(reason, 0), placeIn(reason instanceof ErrorType ? reason.stack : ''));
    }));
})";

} // namespace

PageReports& PageReports::of(WebKitWebPage* page)
{
    auto* reports = static_cast<PageReports*>(g_object_get_data(G_OBJECT(page), reports_key));
    if (reports)
        return *reports;
    reports = new PageReports(page);
    g_object_set_data_full(G_OBJECT(page), reports_key, reports,
                           [](void* gone) { delete static_cast<PageReports*>(gone); });
    return *reports;
}

void PageReports::observe(JSCContext* context)
{
    // The functions hold a reference to the page, which owns this object.
    const auto admits = adopt(jsc_value_new_function(
        context, "admit", G_CALLBACK(+[](WebKitWebPage* page) -> gboolean { return admit(&of(page)); }),
        g_object_ref(page_), g_object_unref, G_TYPE_BOOLEAN, 0));
    const auto sends = adopt(jsc_value_new_function(
        context, "send",
        G_CALLBACK(+[](int kind, const char* message, const char* file, double line, WebKitWebPage* page) {
            send(kind, message, file, line, &of(page));
        }),
        g_object_ref(page_), g_object_unref, G_TYPE_NONE, 4, G_TYPE_INT, G_TYPE_STRING, G_TYPE_STRING, G_TYPE_DOUBLE));
    const auto observe = adopt(jsc_context_evaluate_with_source_uri(
        context, observer.data(), static_cast<gssize>(observer.size()), script_address, 1));
    const auto nothing = adopt(jsc_value_function_call(observe.get(), JSC_TYPE_VALUE, admits.get(), JSC_TYPE_VALUE,
                                                       sends.get(), G_TYPE_STRING, script_address, G_TYPE_NONE));
}

gboolean PageReports::admit(PageReports* reports)
{
    const auto times = reports->lines_.count(now());
    if (times)
        reports->covered_ = *times;
    return times ? TRUE : FALSE;
}

void PageReports::send(int kind, const char* message, const char* file, double line, PageReports* reports)
{
    webkit_web_page_send_message_to_view(
        reports->page_,
        webkit_user_message_new(guard_report,
                                g_variant_new(guard_report_format, static_cast<guchar>(kind),
                                              beginning_of(message).c_str(), beginning_of(file).c_str(),
                                              static_cast<gint64>(line), static_cast<gint64>(reports->covered_))),
        nullptr, nullptr, nullptr);
}

} // namespace qoro
