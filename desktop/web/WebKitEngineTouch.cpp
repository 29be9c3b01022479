#include "desktop/glib/AsyncResult.h"
#include "desktop/web/WebKitEngine.h"

#include "desktop/web/WebKitFunctions.h"

#include <charconv>
#include <string_view>

// Touches of a page by steps. GTK 4 has no means to give a widget input: events are made by GDK alone, and an X
// server's XTEST would move the viewer's own pointer, over whatever window is in front. WebKit's automation sessions
// need a WebDriver client. So a touch is made of the events that a click in the window causes, dispatched inside the
// page. The script runs in a world of its own, whose built-ins the page cannot replace, and with a user's activation,
// as for input. Only isTrusted differs.

namespace qoro
{

namespace
{

constexpr const char* world = "kit-touch";

constexpr const char* find_in_page = R"(
    let found = null;
    try {
        found = document.querySelector(selector);
    } catch {
        return null; // no selector
    }
    if (!found)
        return null;
    found.scrollIntoView({ behavior: 'instant', block: 'nearest', inline: 'nearest' });
    const { x, y, width, height } = found.getBoundingClientRect();
    return `${x + width / 2} ${y + height / 2}`;
)";

/// Looks into open shadow trees, and into frames that the page itself has filled.
constexpr const char* aim_in_page = R"(
    let element = document.elementFromPoint(x, y);
    for (let inner = element; inner;) {
        element = inner;
        inner = null;
        if (element.shadowRoot) {
            inner = element.shadowRoot.elementFromPoint(x, y);
        } else if (element.contentDocument) {
            const frame = element.getBoundingClientRect();
            x -= frame.x + element.clientLeft;
            y -= frame.y + element.clientTop;
            inner = element.contentDocument.elementFromPoint(x, y);
        }
        if (inner === element)
            inner = null;
    }
    globalThis.aimed = { element, x, y };
    if (!element)
        return null;
    const [name] = element.classList;
    return element.id ? `#${CSS.escape(element.id)}` : element.localName + (name ? `.${CSS.escape(name)}` : '');
)";

/// The order is that of a click in Pointer Events. Focus follows a press that the page does not cancel. The default
/// action of a click belongs to the event itself (DOM, activation behavior).
constexpr const char* touch_in_page = R"(
    const { element, x, y } = globalThis.aimed ?? {};
    if (!element?.isConnected)
        return null;
    const view = element.ownerDocument.defaultView;
    const common = {
        bubbles: true, cancelable: true, composed: true, view, detail: 1,
        clientX: x, clientY: y, screenX: view.screenX + x, screenY: view.screenY + y,
    };
    const pointer = { pointerId: 1, pointerType: 'mouse', isPrimary: true };
    const down = { buttons: 1 };
    const alone = { bubbles: false, cancelable: false, composed: false };
    const fire = (Type, name, ...more) => element.dispatchEvent(new Type(name, Object.assign({}, common, ...more)));

    fire(PointerEvent, 'pointerover', pointer);
    fire(PointerEvent, 'pointerenter', pointer, alone);
    fire(MouseEvent, 'mouseover');
    fire(PointerEvent, 'pointermove', pointer);
    fire(MouseEvent, 'mousemove');
    // A cancelled pointerdown suppresses the mouse events, but not the click.
    const hasMouse = fire(PointerEvent, 'pointerdown', pointer, down, { pressure: 0.5 });
    if (hasMouse ? fire(MouseEvent, 'mousedown', down) : true) {
        const focusable =
            element.closest('a[href], area[href], button, input, select, textarea, summary, [tabindex], [contenteditable]');
        if (focusable)
            focusable.focus({ preventScroll: true });
        else
            element.ownerDocument.activeElement?.blur();
    }
    fire(PointerEvent, 'pointerup', pointer);
    if (hasMouse)
        fire(MouseEvent, 'mouseup');
    if (element.isConnected)
        fire(PointerEvent, 'click', pointer);
    return null;
)";

/// Two numbers with a blank between them; absent for anything else.
std::optional<CGPoint> point_in(std::string_view text)
{
    CGPoint point;
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, point.x);
    if (first.ec != std::errc() || first.ptr == end)
        return std::nullopt;
    const auto second = std::from_chars(first.ptr + 1, end, point.y);
    if (second.ec != std::errc())
        return std::nullopt;
    return point;
}

GVariant* no_arguments()
{
    return g_variant_new("a{sv}", nullptr);
}

} // namespace

void WebKitEngine::run_in_page(const char* body, GVariant* arguments, std::function<void(const char*)> done)
{
    if (!has_process_) {
        g_variant_unref(g_variant_ref_sink(arguments));
        return done(nullptr);
    }
    const auto finish = liveness_.guard([done = std::move(done)](WebKitEngine& self, GObject*, GAsyncResult* result) {
        const auto value =
            adopt(webkit_web_view_call_async_javascript_function_finish(self.view_.get(), result, nullptr));
        const std::string text =
            value && jsc_value_is_string(value.get()) ? take_text(jsc_value_to_string(value.get())) : "";
        self.platform_.dispatch([&] { done(text.empty() ? nullptr : text.c_str()); });
    });
    webkit_web_view_call_async_javascript_function(view_.get(), body, -1, arguments, world, nullptr, nullptr,
                                                   async_done, async_data(finish));
}

void WebKitEngine::find_element(const std::string& selector, std::function<void(std::optional<PageTouch>)> found)
{
    GVariantDict arguments;
    g_variant_dict_init(&arguments, nullptr);
    g_variant_dict_insert(&arguments, "selector", "s", selector.c_str());
    run_in_page(find_in_page, g_variant_dict_end(&arguments), [this, found](const char* text) {
        const std::optional<CGPoint> point = text ? point_in(text) : std::nullopt;
        if (!point)
            return found(std::nullopt);
        const double scale = page_scale();
        found(PageTouch{{point->x * scale, point->y * scale}});
    });
}

void WebKitEngine::aim_touch(CGPoint point, std::function<void(PageTouch)> found)
{
    const double scale = page_scale();
    GVariantDict arguments;
    g_variant_dict_init(&arguments, nullptr);
    g_variant_dict_insert(&arguments, "x", "d", point.x / scale);
    g_variant_dict_insert(&arguments, "y", "d", point.y / scale);
    run_in_page(aim_in_page, g_variant_dict_end(&arguments), [point, found](const char* element) {
        found({point, element ? element : ""});
    });
}

void WebKitEngine::touch_page()
{
    run_in_page(touch_in_page, no_arguments(), [](const char*) {});
}

} // namespace qoro
